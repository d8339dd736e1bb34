#include "driver/driver_device.h"
#include "support/recorded_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QTest>

#include <functional>
#include <iostream>

using Lines = std::vector<std::string>;
using Operation = std::function<void(DriverDevice&)>;
using RecordedPlatform::Script;
Q_DECLARE_METATYPE(Operation)

namespace {

QString opening(int bus)
{
    return QString(R"(CreateFileW \\.\QuorvelAudioBus%1 C0000000 3 null 3 0 null)").arg(bus);
}

std::string refusal(int bus, int error)
{
    return QString(R"(Open device \\.\QuorvelAudioBus%1 failed, error: %2)")
        .arg(bus)
        .arg(error)
        .toStdString();
}

} // namespace

/// Every call that leaves this room, with all of its arguments.
class DriverCallsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { RecordedPlatform::reset(); }

    void constructionOpensNothing();
    void open();
    void openRefused();
    void openRefusedOnAnOpenObject();
    void closing();
    void destruction();
    void requests_data();
    void requests();
};

void DriverCallsTest::constructionOpensNothing()
{
    {
        const DriverDevice device;
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
}

void DriverCallsTest::open()
{
    Script script;
    script.openErrors = {2, 5, 1117};
    RecordedPlatform::reset(script);
    StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(device.open());
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{opening(0), opening(1), opening(2), opening(3)}));
    QCOMPARE(output.takeLines(), (Lines{refusal(0, 2), refusal(1, 5), refusal(2, 1117),
                                        R"(Open device \\.\QuorvelAudioBus3 success!)"}));
}

void DriverCallsTest::openRefused()
{
    Script script;
    script.openErrors = QList<std::uint32_t>(16, 5);
    RecordedPlatform::reset(script);
    StreamCapture<wchar_t> output(std::wcout);
    {
        DriverDevice device;
        QVERIFY(!device.open());
        QVERIFY(!device.stopAudio());
    }
    QStringList calls;
    Lines lines;
    for (int bus = 0; bus < 16; ++bus) {
        calls.append(opening(bus));
        lines.push_back(refusal(bus, 5));
    }
    QCOMPARE(RecordedPlatform::takeCalls(), calls);
    QCOMPARE(output.takeLines(), lines);
}

void DriverCallsTest::openRefusedOnAnOpenObject()
{
    Script script;
    script.openErrors = QList<std::uint32_t>(17, 31);
    script.openErrors[0] = 0;
    RecordedPlatform::reset(script);
    const StreamCapture<wchar_t> output(std::wcout);
    {
        DriverDevice device;
        QVERIFY(device.open());
        QVERIFY(!device.open());
        RecordedPlatform::takeCalls();
        QVERIFY(device.stopAudio()); // With the handle it had.
    }
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"DeviceIoControl 4 FFDC2078 null 0 null 0 set null", "CloseHandle 4"}));
}

void DriverCallsTest::closing()
{
    const StreamCapture<wchar_t> output(std::wcout);
    {
        DriverDevice device;
        device.close();
        QVERIFY(device.open());
        RecordedPlatform::takeCalls();
        device.close();
        QCOMPARE(RecordedPlatform::takeCalls(), QStringList{"CloseHandle 4"});
        device.close();
        QVERIFY(!device.stopAudio());
        QVERIFY(device.setOtgOn());
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
}

void DriverCallsTest::destruction()
{
    const StreamCapture<wchar_t> output(std::wcout);
    {
        DriverDevice device;
        QVERIFY(device.open());
        RecordedPlatform::takeCalls();
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{"CloseHandle 4"});
}

void DriverCallsTest::requests_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("call");
    const auto row = [](const char* name, const char* call, const Operation& operation) {
        QTest::newRow(name) << operation << QString("DeviceIoControl 4 %1 set null").arg(call);
    };
    row("action", "FFDC2080 null 0 null 0", [](DriverDevice& d) { d.startAudio(); });
    row("setter", "FFDC2038 set 4 null 0", [](DriverDevice& d) { d.setSampleRate(48000); });
    row("16-bit setter", "FFDC20AC set 2 null 0", [](DriverDevice& d) { d.setValue16(1); });
    row("8-bit setter", "FFDC20B4 set 1 null 0", [](DriverDevice& d) { d.setValue8(1); });
    row("raw bytes", "FFDC209C set 3 null 0", [](DriverDevice& d) { d.sendControl("abc", 3); });
    row("command", "FFDC209C set 37 null 0", [](DriverDevice& d) { d.setMic48V(1, 1); });
    row("upgrade", "FFDC209C set 37 null 0", [](DriverDevice& d) { d.upgradeFirmware(); });
    row("mixer table", "FFDC2040 set 66304 null 0", [](DriverDevice& d) {
        const auto table = std::make_unique<MixerTable>();
        d.writeMixerTable(*table);
    });
    row("read", "FFDC2084 null 0 set 4", [](DriverDevice& d) {
        std::uint32_t value = 0;
        d.getDevicePid(value);
    });
    row("16-bit read", "FFDC20B0 null 0 set 2", [](DriverDevice& d) {
        std::uint16_t value = 0;
        d.getValue16(value);
    });
    row("flag", "FFDC20B8 null 0 set 1", [](DriverDevice& d) {
        bool flag = false;
        d.getFlag8(flag);
    });
    row("meters", "FFDC2074 null 0 set 768", [](DriverDevice& d) {
        MeterBlock block{};
        d.readMeterData(block);
    });
    row("USB status", "FFDC20C0 null 0 set 7", [](DriverDevice& d) {
        UsbStatus status;
        d.readUsbStatus(status);
    });
    row("firmware", "FFDC20A0 set 37 set 32", [](DriverDevice& d) {
        std::uint8_t version = 0;
        d.getFirmwareVersion(&version, 1);
    });
    row("transfer", "FFDC20A0 set 2 set 32", [](DriverDevice& d) {
        QByteArray reply;
        d.transfer("ab", reply);
    });
}

void DriverCallsTest::requests()
{
    QFETCH(Operation, operation);
    QFETCH(QString, call);
    const StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(device.open());
    RecordedPlatform::takeCalls();
    operation(device);
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{call});
}

QUORVEL_TEST_MAIN(DriverCallsTest)
#include "driver_calls_test.moc"
