#include "driver/control_codes.h"
#include "driver/driver_device.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"
#include "support/trace_text.h"

#include <QTest>

#include <functional>
#include <iostream>

using Operation = std::function<bool(DriverDevice&)>;
Q_DECLARE_METATYPE(Operation)

/// Commands and setters: what reaches the driver, byte for byte, and what they return when it does
/// not.
class DriverCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void commands_data();
    void commands();
    void setters_data();
    void setters();
    void mixerTable();
    void sendControlSendsBytesAsTheyAre();

private:
    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
};

void DriverCommandsTest::init()
{
    simulated.control().reset();
    simulated.control().plug(1, 0);
}

void DriverCommandsTest::commands_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("bytes");
    const auto row = [](const char* name, const Operation& operation, const char* bytes) {
        QTest::newRow(name) << operation << QString::fromLatin1(bytes);
    };
    row(
        "setMicVolume", [](DriverDevice& d) { return d.setMicVolume(1, 300); },
        "01 07 00 02 01 2C 01");
    row(
        "setMicVolume at the top", [](DriverDevice& d) { return d.setMicVolume(255, 65535); },
        "01 07 00 02 FF FF FF");
    row(
        "setOutVolume", [](DriverDevice& d) { return d.setOutVolume(6, 100); },
        "01 03 00 02 06 64 00");
    row(
        "switchMicInstrument", [](DriverDevice& d) { return d.switchMicInstrument(2, 1); },
        "01 64 00 01 02");
    row(
        "setMic20dB", [](DriverDevice& d) { return d.setMic20dB(2, 1); }, "01 5A 00 01 02");
    row(
        "setMic20dB off", [](DriverDevice& d) { return d.setMic20dB(2, 0); }, "01 5A 00 00 02");
    row(
        "setMic48V", [](DriverDevice& d) { return d.setMic48V(1, 1); }, "01 5B 00 01 01");
    row(
        "setOtgOn", [](DriverDevice& d) { return d.setOtgOn(); }, "01 5F");
    row(
        "setOtgOff", [](DriverDevice& d) { return d.setOtgOff(); }, "01 5E");
    row(
        "setCloseFeedback", [](DriverDevice& d) { return d.setCloseFeedback(); }, "01 68");
}

void DriverCommandsTest::commands()
{
    QFETCH(Operation, operation);
    QFETCH(QString, bytes);
    const QString line = TraceText::command(1, bytes);

    DriverDevice device;
    QVERIFY2(operation(device), "a closed device reports success");
    QCOMPARE(simulated.takeTrace(), QStringList());

    QVERIFY(device.open());
    QVERIFY(operation(device));
    QCOMPARE(simulated.takeTrace(), QStringList{line});

    simulated.control().fail(ControlCode::controlPacket, 1, 31);
    QVERIFY2(operation(device), "a refusal reports success");
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::refused(line, 31)});

    simulated.control().unplug();
    QVERIFY2(operation(device), "a pulled cable reports success");
}

void DriverCommandsTest::setters_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<std::uint32_t>("code");
    QTest::addColumn<QString>("bytes");
    const auto row = [](const char* name, const Operation& operation, std::uint32_t code,
                        const char* bytes = "") {
        QTest::newRow(name) << operation << code << QString::fromLatin1(bytes);
    };
    row(
        "setSampleRate", [](DriverDevice& d) { return d.setSampleRate(48000); }, 0xFFDC2038,
        "80 BB 00 00");
    row(
        "setBufferSize", [](DriverDevice& d) { return d.setBufferSize(1024); }, 0xFFDC2044,
        "00 04 00 00");
    row(
        "setUsbLatency", [](DriverDevice& d) { return d.setUsbLatency(32); }, 0xFFDC2050,
        "20 00 00 00");
    row(
        "setWdmChannelCount", [](DriverDevice& d) { return d.setWdmChannelCount(4); }, 0xFFDC2088,
        "04 00 00 00");
    row(
        "enableUsbSlowMode", [](DriverDevice& d) { return d.enableUsbSlowMode(); }, 0xFFDC2090);
    row(
        "disableUsbSlowMode", [](DriverDevice& d) { return d.disableUsbSlowMode(); }, 0xFFDC2094);
    row(
        "stopAudio", [](DriverDevice& d) { return d.stopAudio(); }, 0xFFDC2078);
    row(
        "startAudio", [](DriverDevice& d) { return d.startAudio(); }, 0xFFDC2080);
    row(
        "initAudio", [](DriverDevice& d) { return d.initAudio(); }, 0xFFDC207C);
    row(
        "setValue16", [](DriverDevice& d) { return d.setValue16(0xABCD); }, 0xFFDC20AC, "CD AB");
    row(
        "setValue8", [](DriverDevice& d) { return d.setValue8(0xEF); }, 0xFFDC20B4, "EF");
}

void DriverCommandsTest::setters()
{
    QFETCH(Operation, operation);
    QFETCH(std::uint32_t, code);
    QFETCH(QString, bytes);
    const QString line = TraceText::input(1, code, bytes);

    DriverDevice device;
    QVERIFY2(!operation(device), "a closed device reports failure");
    QCOMPARE(simulated.takeTrace(), QStringList());

    QVERIFY(device.open());
    QVERIFY(operation(device));
    QCOMPARE(simulated.takeTrace(), QStringList{line});

    simulated.control().fail(code, 1, 31);
    QVERIFY2(!operation(device), "a refusal reports failure");
    QCOMPARE(simulated.takeTrace(), QStringList{TraceText::refused(line, 31)});

    simulated.control().unplug();
    QVERIFY2(!operation(device), "a pulled cable reports failure");
}

void DriverCommandsTest::mixerTable()
{
    const auto table = std::make_unique<MixerTable>();
    DriverDevice device;
    QVERIFY(!device.writeMixerTable(*table));
    QVERIFY(device.open());
    (*table)[0] = 0.5;
    (*table)[8287] = 1.0;
    QVERIFY(device.writeMixerTable(*table));
    QVERIFY(device.writeMixerTable(*table));
    (*table)[0] = 0.0;
    simulated.control().fail(0xFFDC2040, 1, 31);
    QVERIFY(!device.writeMixerTable(*table));
    QVERIFY(device.writeMixerTable(*table));
    const QStringList trace = simulated.takeTrace();
    QCOMPARE(trace.size(), 4);
    QCOMPARE(trace[0], TraceText::table(1, QStringLiteral("0=0.5 8287=1")));
    QCOMPARE(trace[1], TraceText::table(1, QString()));
    QVERIFY2(trace[2].endsWith(QLatin1String(" error=31")), qPrintable(trace[2]));
    QCOMPARE(trace[3], TraceText::table(1, QStringLiteral("0=0")));
}

void DriverCommandsTest::sendControlSendsBytesAsTheyAre()
{
    QByteArray bytes(37, '\x11');
    bytes[0] = 1;
    DriverDevice device;
    QVERIFY(!device.sendControl(bytes.constData(), 37));
    QVERIFY(device.open());
    QVERIFY(device.sendControl(bytes.constData(), 37));
    QCOMPARE(simulated.takeTrace(),
             QStringList{TraceText::input(1, 0xFFDC209C, QString::fromLatin1(bytes.toHex(' ')))});
    simulated.control().fail(0xFFDC209C, 1, 31);
    QVERIFY(!device.sendControl(bytes.constData(), 37));
}

QUORVEL_TEST_MAIN(DriverCommandsTest)
#include "driver_commands_test.moc"
