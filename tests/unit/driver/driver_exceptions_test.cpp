#include "driver/driver_device.h"
#include "support/scripted_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QTest>

#include <functional>
#include <iostream>

using Lines = std::vector<std::string>;
using Operation = std::function<bool(DriverDevice&)>;
using ScriptedPlatform::Reaction;
Q_DECLARE_METATYPE(Operation)

/// An exception that escapes from a command is told on the standard error stream and gives false.
class DriverExceptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { ScriptedPlatform::reset(); }
    void commands_data();
    void commands();
    void firmwareVersion();

private:
    StreamCapture<wchar_t> output{std::wcout};
};

void DriverExceptionsTest::commands_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<int>("opcode");
    QTest::addColumn<QByteArray>("known");
    QTest::addColumn<QByteArray>("unknown");
    const auto row = [](const char* name, int opcode, const Operation& operation,
                        const QByteArray& known, const QByteArray& unknown) {
        QTest::newRow(name) << operation << opcode << known << unknown;
    };
    row(
        "setMicVolume", 0x07, [](DriverDevice& d) { return d.setMicVolume(1, 2); },
        "Failed to set mic volume: no paper", "Failed to set mic volume: Unknown error");
    row(
        "setOutVolume", 0x03, [](DriverDevice& d) { return d.setOutVolume(1, 2); },
        "Failed to set out volume: no paper", "Failed to set out volume: Unknown error");
    row(
        "switchMicInstrument", 0x64, [](DriverDevice& d) { return d.switchMicInstrument(1, 1); },
        "Failed to switch mic instruction: no paper",
        "Failed to switch mic instruction: Unknown error");
    row(
        "setMic20dB", 0x5A, [](DriverDevice& d) { return d.setMic20dB(1, 1); },
        "Failed to set mic 20dB: no paper", "Failed to set mic 20dB: Unknown error");
    row(
        "setMic48V", 0x5B, [](DriverDevice& d) { return d.setMic48V(1, 1); },
        "Failed to set mic 48V: no paper", "Failed to set mic 48V: Unknown error");
    row(
        "setOtgOn", 0x5F, [](DriverDevice& d) { return d.setOtgOn(); },
        "Failed to set OTG On: no paper", "Failed to set OTG On: Unknown error");
    row(
        "setOtgOff", 0x5E, [](DriverDevice& d) { return d.setOtgOff(); },
        "Failed to set OTG Off: no paper", "Failed to set OTG Off: Unknown error");
    row(
        "setCloseFeedback", 0x68, [](DriverDevice& d) { return d.setCloseFeedback(); },
        "Failed to set close feedback: no paper", "Failed to set close Feedback: Unknown error");
    row(
        "upgradeFirmware", 0x60, [](DriverDevice& d) { return d.upgradeFirmware(); },
        "Failed to upgrade firmware: no paper", "Failed to upgrade firmware: Unknown error");
}

void DriverExceptionsTest::commands()
{
    QFETCH(Operation, operation);
    QFETCH(int, opcode);
    QFETCH(QByteArray, known);
    QFETCH(QByteArray, unknown);
    const auto code = static_cast<std::uint8_t>(opcode);
    DriverDevice device;
    QVERIFY(device.open());
    StreamCapture<char> errors(std::cerr);
    QVERIFY(operation(device));
    QCOMPARE(errors.takeLines(), Lines());
    ScriptedPlatform::onOpcode(code, Reaction::throwStandard);
    QVERIFY(!operation(device));
    QCOMPARE(errors.takeLines(), Lines{known.toStdString()});
    ScriptedPlatform::onOpcode(code, Reaction::throwUnknown);
    QVERIFY(!operation(device));
    QCOMPARE(errors.takeLines(), Lines{unknown.toStdString()});
}

void DriverExceptionsTest::firmwareVersion()
{
    DriverDevice device;
    QVERIFY(device.open());
    std::array<std::uint8_t, 10> version{};
    StreamCapture<char> errors(std::cerr);
    ScriptedPlatform::onCode(0xFFDC20A0, Reaction::throwStandard);
    QVERIFY(!device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(errors.takeLines(), Lines{"Failed to get firmware version: no paper"});
    ScriptedPlatform::onCode(0xFFDC20A0, Reaction::throwUnknown);
    QVERIFY(!device.getFirmwareVersion(version.data(), 10));
    QCOMPARE(errors.takeLines(), Lines{"Failed to get firmware version: Unknown error"});
}

QUORVEL_TEST_MAIN(DriverExceptionsTest)
#include "driver_exceptions_test.moc"
