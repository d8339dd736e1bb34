#include "driver/driver_device.h"
#include "support/debug_log.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"
#include "support/trace_text.h"

#include <QTest>

#include <functional>
#include <iostream>

/// Reads a value: its success and the value, which starts as 77.
using Read = std::function<std::pair<bool, std::uint32_t>(DriverDevice&)>;
Q_DECLARE_METATYPE(Read)

class DriverReadsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void outParameters_data();
    void outParameters();
    void querySampleRate();
    void queryValue829();
    void flag8_data();
    void flag8();
    void flag8Refused();
    void bufferSizeIsLoggedOnSuccessOnly();
    void meterBlock();
    void shortAnswersLeaveZeros();
    void usbStatus();
    void usbStatusOnClosedDevice();
    void usbStatusAfterFailureKeepsTheLastReading();
    void transferResizesTheReply();

private:
    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
};

void DriverReadsTest::init()
{
    simulated.control().reset();
    simulated.control().plug(15, 0);
    simulated.control().setEngine(48000, 256, 16);
}

void DriverReadsTest::outParameters_data()
{
    QTest::addColumn<Read>("read");
    QTest::addColumn<std::uint32_t>("code");
    QTest::addColumn<int>("size");
    QTest::addColumn<std::uint32_t>("value");
    const auto row32 = [](const char* name, bool (DriverDevice::*operation)(std::uint32_t&),
                          std::uint32_t code, std::uint32_t value) {
        const Read read = [operation](DriverDevice& device) {
            std::uint32_t result = 77;
            const bool succeeded = (device.*operation)(result);
            return std::pair(succeeded, result);
        };
        QTest::newRow(name) << read << code << 4 << value;
    };
    row32("getDevicePid", &DriverDevice::getDevicePid, 0xFFDC2084, 15);
    row32("getSampleRate", &DriverDevice::getSampleRate, 0xFFDC2020, 48000);
    row32("getBufferSize", &DriverDevice::getBufferSize, 0xFFDC2048, 256);
    row32("getUsbLatency", &DriverDevice::getUsbLatency, 0xFFDC204C, 16);
    const Read value16 = [](DriverDevice& device) {
        std::uint16_t result = 77;
        device.setValue16(4711);
        const bool succeeded = device.getValue16(result);
        return std::pair(succeeded, std::uint32_t{result});
    };
    QTest::newRow("getValue16") << value16 << 0xFFDC20B0U << 2 << 4711U;
}

void DriverReadsTest::outParameters()
{
    QFETCH(Read, read);
    QFETCH(std::uint32_t, code);
    QFETCH(int, size);
    QFETCH(std::uint32_t, value);
    const DebugLog log;

    DriverDevice device;
    QCOMPARE(read(device), std::pair(false, 77U));
    QVERIFY(device.open());
    QCOMPARE(read(device), std::pair(true, value));
    QCOMPARE(simulated.takeTrace().constLast(), TraceText::request(1, code, size));
    simulated.control().fail(code, 1, 31);
    QCOMPARE(read(device), std::pair(false, 77U));
    simulated.control().unplug();
    QCOMPARE(read(device), std::pair(false, 77U));
}

void DriverReadsTest::querySampleRate()
{
    DriverDevice device;
    QCOMPARE(device.querySampleRate(), 0U);
    QVERIFY(device.open());
    QCOMPARE(device.querySampleRate(), 48000U);
    simulated.control().fail(0xFFDC2020, 1, 31);
    QCOMPARE(device.querySampleRate(), 0U);
}

void DriverReadsTest::queryValue829()
{
    DriverDevice device;
    QCOMPARE(device.queryValue829(), 0U);
    QVERIFY(device.open());
    simulated.control().setDriverValue(0xFEDCBA98);
    QCOMPARE(device.queryValue829(), 0xFEDCBA98U);
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::request(1, 0xFFDC20A4, 4)});
    simulated.control().fail(0xFFDC20A4, 1, 31);
    QCOMPARE(device.queryValue829(), 0U);
    simulated.control().answerShort(0xFFDC20A4, 1, 1);
    QCOMPARE(device.queryValue829(), 0x98U);
}

void DriverReadsTest::flag8_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<bool>("flag");
    QTest::newRow("zero") << 0 << false;
    QTest::newRow("one") << 1 << true;
    QTest::newRow("two") << 2 << true;
    QTest::newRow("all bits") << 255 << true;
}

void DriverReadsTest::flag8()
{
    QFETCH(int, byte);
    QFETCH(bool, flag);
    DriverDevice device;
    QVERIFY(device.open());
    QVERIFY(device.setValue8(static_cast<std::uint8_t>(byte)));
    bool result = !flag;
    QVERIFY(device.getFlag8(result));
    QCOMPARE(result, flag);
    QCOMPARE(simulated.takeTrace().constLast(), TraceText::request(1, 0xFFDC20B8, 1));
}

void DriverReadsTest::flag8Refused()
{
    DriverDevice device;
    for (const bool before : {false, true}) {
        bool result = before;
        device.close();
        QVERIFY(!device.getFlag8(result));
        QCOMPARE(result, before);
        QVERIFY(device.open());
        QVERIFY(device.setValue8(before ? 0 : 1));
        simulated.control().fail(0xFFDC20B8, 1, 31);
        QVERIFY(!device.getFlag8(result));
        QCOMPARE(result, before);
    }
}

void DriverReadsTest::bufferSizeIsLoggedOnSuccessOnly()
{
    DebugLog log;
    DriverDevice device;
    std::uint32_t samples = 0;
    QVERIFY(!device.getBufferSize(samples));
    QVERIFY(device.open());
    simulated.control().fail(0xFFDC2048, 1, 31);
    QVERIFY(!device.getBufferSize(samples));
    QCOMPARE(log.take(), QStringList());
    QVERIFY(device.getBufferSize(samples));
    QCOMPARE(log.take(), QStringList{QStringLiteral("Buffer size: 256")});
}

void DriverReadsTest::meterBlock()
{
    simulated.control().setLevel(0, -5);
    simulated.control().setLevel(191, 2147483647);
    MeterBlock block{};
    DriverDevice device;
    QVERIFY(!device.readMeterData(block));
    QVERIFY(device.open());
    QVERIFY(device.readMeterData(block));
    QCOMPARE(block[0], -5);
    QCOMPARE(block[1], 0);
    QCOMPARE(block[191], 2147483647);
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::request(1, 0xFFDC2074, 768)});
    simulated.control().fail(0xFFDC2074, 1, 31);
    QVERIFY(!device.readMeterData(block));
}

void DriverReadsTest::shortAnswersLeaveZeros()
{
    DriverDevice device;
    QVERIFY(device.open());
    simulated.control().answerShort(0xFFDC2020, 1, 1);
    std::uint32_t rate = 77;
    QVERIFY(device.getSampleRate(rate));
    QCOMPARE(rate, 48000U & 0xFFU);
    simulated.control().answerShort(0xFFDC2084, 1, 0);
    std::uint32_t pid = 77;
    QVERIFY(device.getDevicePid(pid));
    QCOMPARE(pid, 0U);
}

void DriverReadsTest::usbStatus()
{
    simulated.control().setUsbStatus(0xABCD, 0xEF, 0x01020304);
    DriverDevice device;
    QVERIFY(device.open());
    UsbStatus status;
    QVERIFY(device.readUsbStatus(status));
    QCOMPARE(std::uint32_t{status.statusWord}, 0xABCDU);
    QCOMPARE(std::uint32_t{status.statusByte}, 0xEFU);
    QCOMPARE(std::uint32_t{status.usbErrorCount}, 0x01020304U);
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::request(1, 0xFFDC20C0, 7)});
}

void DriverReadsTest::usbStatusOnClosedDevice()
{
    DriverDevice device;
    UsbStatus status{.statusWord = 97, .statusByte = 98, .usbErrorCount = 99};
    QVERIFY(!device.readUsbStatus(status));
    QCOMPARE(std::uint32_t{status.statusWord}, 97U);
    QCOMPARE(std::uint32_t{status.statusByte}, 98U);
    QCOMPARE(std::uint32_t{status.usbErrorCount}, 99U);
}

void DriverReadsTest::usbStatusAfterFailureKeepsTheLastReading()
{
    simulated.control().setUsbStatus(1, 2, 3);
    DriverDevice device;
    QVERIFY(device.open());
    simulated.control().fail(0xFFDC20C0, 1, 31);
    UsbStatus status{.statusWord = 97, .statusByte = 98, .usbErrorCount = 99};
    QVERIFY(!device.readUsbStatus(status));
    QCOMPARE(std::uint32_t{status.statusWord}, 0U);
    QCOMPARE(std::uint32_t{status.statusByte}, 0U);
    QCOMPARE(std::uint32_t{status.usbErrorCount}, 0U);

    QVERIFY(device.readUsbStatus(status));
    simulated.control().setUsbStatus(4, 5, 6);
    simulated.control().fail(0xFFDC20C0, 1, 31);
    status = {};
    QVERIFY(!device.readUsbStatus(status));
    QCOMPARE(std::uint32_t{status.statusWord}, 1U);
    QCOMPARE(std::uint32_t{status.statusByte}, 2U);
    QCOMPARE(std::uint32_t{status.usbErrorCount}, 3U);
}

void DriverReadsTest::transferResizesTheReply()
{
    QByteArray request(37, '\0');
    request[0] = 1;
    request[1] = 0x65;
    DriverDevice device;
    QByteArray reply("abc");
    QVERIFY(!device.transfer(request, reply));
    QCOMPARE(reply, QByteArray("abc") + QByteArray(29, '\0'));
    QVERIFY(device.open());
    reply = QByteArray(40, 'x');
    simulated.control().setFirmware({'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'});
    QVERIFY(device.transfer(request, reply));
    QCOMPARE(reply.size(), 32);
    QCOMPARE(reply.left(10), QByteArray("0123456789"));
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::firmwareRequest(1)});
    simulated.control().fail(0xFFDC20A0, 1, 31);
    QVERIFY(!device.transfer(request, reply));
}

QUORVEL_TEST_MAIN(DriverReadsTest)
#include "driver_reads_test.moc"
