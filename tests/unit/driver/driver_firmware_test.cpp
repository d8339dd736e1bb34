#include "driver/driver_device.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"
#include "support/trace_text.h"

#include <QTest>

#include <iostream>

using Lines = std::vector<std::string>;
using Version = std::array<std::uint8_t, 10>;

class DriverFirmwareTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void version();
    void versionOfClosedDevice();
    void versionRefused();
    void shortAnswerLeavesZeros();
    void partOfTheVersion_data();
    void partOfTheVersion();
    void upgrade();
    void upgradeOfClosedDevice();
    void upgradeRefused();

private:
    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
};

void DriverFirmwareTest::init()
{
    simulated.control().reset();
    simulated.control().plug(1, 0);
    simulated.control().setFirmware({'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 0xFF});
}

void DriverFirmwareTest::version()
{
    DriverDevice device;
    QVERIFY(device.open());
    Version version{};
    StreamCapture<char> errors(std::cerr);
    QVERIFY(device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(version, (Version{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 0xFF}));
    QCOMPARE(errors.takeLines(), Lines());
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::firmwareRequest(1)});
}

void DriverFirmwareTest::versionOfClosedDevice()
{
    DriverDevice device;
    Version version{};
    StreamCapture<char> errors(std::cerr);
    QVERIFY(!device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(errors.takeLines(), Lines{"Failed to read firmware version from device."});
}

void DriverFirmwareTest::versionRefused()
{
    DriverDevice device;
    QVERIFY(device.open());
    simulated.control().fail(0xFFDC20A0, 1, 31);
    Version version{};
    StreamCapture<char> errors(std::cerr);
    QVERIFY(!device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(errors.takeLines(), Lines{"Failed to read firmware version from device."});
    QCOMPARE(version, Version{});
}

void DriverFirmwareTest::shortAnswerLeavesZeros()
{
    DriverDevice device;
    QVERIFY(device.open());
    simulated.control().answerShort(0xFFDC20A0, 1, 4);
    Version version;
    version.fill(0x55);
    QVERIFY(device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(version, (Version{'a', 'b', 'c', 'd'}));
}

void DriverFirmwareTest::partOfTheVersion_data()
{
    QTest::addColumn<std::uint32_t>("length");
    QTest::addColumn<QByteArray>("result");
    QTest::newRow("none") << 0U << QByteArray("UUUUUUUUUUUU");
    QTest::newRow("three") << 3U << QByteArray("abcUUUUUUUUU");
    QTest::newRow("all") << 10U << QByteArray("abcdefghi\xFFUU");
    QTest::newRow("more than there is") << 12U << QByteArray("abcdefghi\xFFUU");
}

void DriverFirmwareTest::partOfTheVersion()
{
    QFETCH(std::uint32_t, length);
    QFETCH(QByteArray, result);
    DriverDevice device;
    QVERIFY(device.open());
    QByteArray buffer(12, 'U');
    QVERIFY(device.getFirmwareVersion(reinterpret_cast<std::uint8_t*>(buffer.data()), length));
    QCOMPARE(buffer, result);
}

void DriverFirmwareTest::upgrade()
{
    DriverDevice device;
    QVERIFY(device.open());
    QVERIFY(device.upgradeFirmware());
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::command(1, QStringLiteral("01 60"))});
}

void DriverFirmwareTest::upgradeOfClosedDevice()
{
    DriverDevice device;
    StreamCapture<char> errors(std::cerr);
    QVERIFY(!device.upgradeFirmware());
    QCOMPARE(errors.takeLines(), Lines());
}

void DriverFirmwareTest::upgradeRefused()
{
    DriverDevice device;
    QVERIFY(device.open());
    simulated.control().fail(0xFFDC209C, 1, 31);
    QVERIFY(device.upgradeFirmware());
}

QUORVEL_TEST_MAIN(DriverFirmwareTest)
#include "driver_firmware_test.moc"
