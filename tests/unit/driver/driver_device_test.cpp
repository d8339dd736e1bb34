#include "driver/driver_device.h"
#include "support/debug_log.h"
#include "support/recorded_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QTest>

#include <functional>
#include <iostream>
#include <memory>

using Lines = std::vector<std::string>;
using Command = bool(DriverDevice&);
/// Gives the operation's result and what it has written, in words.
using Operation = std::function<QString(DriverDevice&)>;
using RecordedPlatform::Answer;
using Exception = Answer::Exception;
Q_DECLARE_METATYPE(Command*)
Q_DECLARE_METATYPE(Operation)

namespace {

constexpr std::uint32_t generalFailure = 31;

QString opening(int bus)
{
    return QString(R"(CreateFileW \\.\QuorvelAudioBus%1 C0000000 3 null 3 0 null)").arg(bus);
}

QString refusal(int bus, int error)
{
    return QString(R"(Open device \\.\QuorvelAudioBus%1 failed, error: %2)").arg(bus).arg(error);
}

QByteArray bytes(const char* hex)
{
    return QByteArray::fromHex(hex);
}

/// A version record of the interface, longer than what is asked of it.
QByteArray versionReply()
{
    return QByteArray("abcdefghi\xFF").leftJustified(32, 'z');
}

QString inWords(bool result)
{
    return result ? QStringLiteral("true") : QStringLiteral("false");
}

Operation action(bool (DriverDevice::*operation)())
{
    return [=](DriverDevice& device) { return inWords((device.*operation)()); };
}

template <typename Value>
Operation setter(bool (DriverDevice::*operation)(Value), std::type_identity_t<Value> value)
{
    return [=](DriverDevice& device) { return inWords((device.*operation)(value)); };
}

/// Reads into a variable that holds 77.
template <typename Value> Operation reader(bool (DriverDevice::*operation)(Value&))
{
    return [=](DriverDevice& device) {
        Value value = 77;
        const bool result = (device.*operation)(value);
        return inWords(result) + ' ' + QString::number(value);
    };
}

Operation query(std::uint32_t (DriverDevice::*operation)())
{
    return [=](DriverDevice& device) { return QString::number((device.*operation)()); };
}

Operation flagReader(bool before)
{
    return [=](DriverDevice& device) {
        bool flag = before;
        const bool result = device.getFlag8(flag);
        return inWords(result) + ' ' + inWords(flag);
    };
}

QString writeTable(DriverDevice& device)
{
    const auto table = std::make_unique<MixerTable>();
    table->front() = 0.5;
    table->back() = 1.0;
    return inWords(device.writeMixerTable(*table));
}

QByteArray writtenTable()
{
    return bytes("000000000000E03F") + QByteArray(66288, '\0') + bytes("000000000000F03F");
}

QString readMeters(DriverDevice& device)
{
    MeterBlock block;
    block.fill(77);
    const bool result = device.readMeterData(block);
    return QStringLiteral("%1 %2 %3 %4")
        .arg(inWords(result))
        .arg(block[0])
        .arg(block[1])
        .arg(block[191]);
}

QString readStatus(DriverDevice& device)
{
    UsbStatus status{.statusWord = 97, .statusByte = 98, .usbErrorCount = 99};
    const bool result = device.readUsbStatus(status);
    return QStringLiteral("%1 %2 %3 %4")
        .arg(inWords(result))
        .arg(status.statusWord)
        .arg(status.statusByte)
        .arg(std::uint32_t{status.usbErrorCount});
}

Operation transfer(const QByteArray& before)
{
    return [=](DriverDevice& device) {
        QByteArray reply = before;
        const bool result = device.transfer("ab", reply);
        return inWords(result) + ' ' + reply.toHex();
    };
}

/// Into twelve bytes that all read "U".
Operation firmwareVersion(std::uint32_t length)
{
    return [=](DriverDevice& device) {
        QByteArray version(12, 'U');
        const bool result =
            device.getFirmwareVersion(reinterpret_cast<std::uint8_t*>(version.data()), length);
        return inWords(result) + ' ' + QString::fromLatin1(version);
    };
}

} // namespace

/// Every call that leaves this room, with all of its arguments, and what comes of each answer.
class DriverDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void open();
    void openRefused();
    void openRefusedOnAnOpenObject();
    void openLeavesAHeldHandleOpen();
    void closing();
    void commands_data();
    void commands();
    void requests_data();
    void requests();
    void bufferSizeIsLoggedOnSuccessOnly();
    void usbStatusBeforeTheFirstReading();
    void firmwareVersionFailures();

private:
    QStringList takeOutput()
    {
        QStringList lines;
        for (const std::string& line : output.takeLines())
            lines.append(QString::fromStdString(line));
        return lines;
    }

    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
};

void DriverDeviceTest::init()
{
    RecordedPlatform::reset();
    output.takeLines();
    errors.takeLines();
}

void DriverDeviceTest::open()
{
    RecordedPlatform::reset({.openErrors = {2, 5, 1117}});
    DriverDevice device;
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
    QVERIFY(device.open());
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{opening(0), opening(1), opening(2), opening(3)}));
    QCOMPARE(takeOutput(), (QStringList{refusal(0, 2), refusal(1, 5), refusal(2, 1117),
                                        R"(Open device \\.\QuorvelAudioBus3 success!)"}));
}

void DriverDeviceTest::openRefused()
{
    RecordedPlatform::reset({.openErrors = QList<std::uint32_t>(16, 2)});
    {
        DriverDevice device;
        QVERIFY(!device.open());
    }
    QStringList calls;
    QStringList lines;
    for (int bus = 0; bus < 16; ++bus) {
        calls.append(opening(bus));
        lines.append(refusal(bus, 2));
    }
    QCOMPARE(RecordedPlatform::takeCalls(), calls);
    QCOMPARE(takeOutput(), lines);
}

void DriverDeviceTest::openRefusedOnAnOpenObject()
{
    QList<std::uint32_t> errorsOfOpening(17, 31);
    errorsOfOpening[0] = 0;
    RecordedPlatform::reset({.openErrors = errorsOfOpening});
    DriverDevice device;
    QVERIFY(device.open());
    QVERIFY(!device.open());
    RecordedPlatform::takeCalls();
    QVERIFY(device.stopAudio()); // With the handle it had.
    QCOMPARE(RecordedPlatform::takeCalls(),
             QStringList{"DeviceIoControl 4 FFDC2078 null 0 null 0 set null"});
}

void DriverDeviceTest::openLeavesAHeldHandleOpen()
{
    {
        DriverDevice device;
        QVERIFY(device.open());
        QVERIFY(device.open());
        QCOMPARE(RecordedPlatform::takeCalls(), (QStringList{opening(0), opening(0)}));
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{"CloseHandle 8"});
}

void DriverDeviceTest::closing()
{
    {
        DriverDevice device;
        device.close();
        QVERIFY(device.open());
        RecordedPlatform::takeCalls();
        device.close();
        QCOMPARE(RecordedPlatform::takeCalls(), QStringList{"CloseHandle 4"});
        device.close();
        QVERIFY(!device.stopAudio());
        QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
        QVERIFY(device.open());
        RecordedPlatform::takeCalls();
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{"CloseHandle 8"});
}

void DriverDeviceTest::commands_data()
{
    QTest::addColumn<Command*>("command");
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("known");
    QTest::addColumn<QByteArray>("unknown");
    const auto row = [](const char* name, Command* command, const char* record,
                        const QByteArray& failure, const QByteArray& failureWhenUnknown) {
        QTest::newRow(name) << command << bytes(record).leftJustified(37, '\0')
                            << failure + ": no paper" << failureWhenUnknown + ": Unknown error";
    };
    const auto alike = [&](const char* name, Command* command, const char* record,
                           const char* failure) { row(name, command, record, failure, failure); };
    using D = DriverDevice;
    alike(
        "setMicVolume", [](D& d) { return d.setMicVolume(1, 300); }, "01070002012C01",
        "Failed to set mic volume");
    alike(
        "setOutVolume", [](D& d) { return d.setOutVolume(255, 65535); }, "01030002FFFFFF",
        "Failed to set out volume");
    alike(
        "switchMicInstrument", [](D& d) { return d.switchMicInstrument(2, 1); }, "0164000102",
        "Failed to switch mic instruction");
    alike(
        "setMic20dB", [](D& d) { return d.setMic20dB(2, 1); }, "015A000102",
        "Failed to set mic 20dB");
    alike(
        "setMic48V", [](D& d) { return d.setMic48V(2, 0); }, "015B000002", "Failed to set mic 48V");
    alike("setOtgOn", [](D& d) { return d.setOtgOn(); }, "015F", "Failed to set OTG On");
    alike("setOtgOff", [](D& d) { return d.setOtgOff(); }, "015E", "Failed to set OTG Off");
    row(
        "setCloseFeedback", [](D& d) { return d.setCloseFeedback(); }, "0168",
        "Failed to set close feedback", "Failed to set close Feedback");
    alike(
        "upgradeFirmware", [](D& d) { return d.upgradeFirmware(); }, "0160",
        "Failed to upgrade firmware");
}

/// Only an exception makes a command fail, but for upgradeFirmware, which needs an open device.
void DriverDeviceTest::commands()
{
    QFETCH(Command* const, command);
    QFETCH(const QByteArray, record);
    QFETCH(const QByteArray, known);
    QFETCH(const QByteArray, unknown);
    const QStringList request{"DeviceIoControl 4 FFDC209C set 37 null 0 set null"};
    DriverDevice device;
    QCOMPARE(command(device),
             QLatin1String(QTest::currentDataTag()) != QLatin1String("upgradeFirmware"));
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());

    QVERIFY(device.open());
    RecordedPlatform::takeCalls();
    QVERIFY(command(device));
    QCOMPARE(RecordedPlatform::takeCalls(), request);
    QCOMPARE(RecordedPlatform::lastInput(), record);

    RecordedPlatform::answerRequests({.error = generalFailure});
    QVERIFY(command(device));
    QCOMPARE(RecordedPlatform::takeCalls(), request);
    QCOMPARE(errors.takeLines(), Lines());

    RecordedPlatform::answerRequests({.exception = Exception::standard});
    QVERIFY(!command(device));
    QCOMPARE(errors.takeLines(), Lines{known.toStdString()});
    RecordedPlatform::answerRequests({.exception = Exception::unknown});
    QVERIFY(!command(device));
    QCOMPARE(errors.takeLines(), Lines{unknown.toStdString()});
}

void DriverDeviceTest::requests_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("taken");
    QTest::addColumn<QString>("closed");
    QTest::addColumn<QString>("refused");
    const auto row = [](const char* name, const Operation& operation, const char* call,
                        const QByteArray& input, const QByteArray& reply, const QString& taken,
                        const QString& closed, const QString& refused) {
        QTest::newRow(name) << operation << QString("DeviceIoControl 4 %1 set null").arg(call)
                            << input << reply << taken << closed << refused;
    };
    const auto setterRow = [&](const char* name, const Operation& operation, const char* call,
                               const QByteArray& input) {
        row(name, operation, call, input, {}, "true", "false", "false");
    };
    using D = DriverDevice;
    setterRow("setSampleRate", setter(&D::setSampleRate, 48000), "FFDC2038 set 4 null 0",
              bytes("80BB0000"));
    setterRow("setBufferSize", setter(&D::setBufferSize, 1024), "FFDC2044 set 4 null 0",
              bytes("00040000"));
    setterRow("setUsbLatency", setter(&D::setUsbLatency, 32), "FFDC2050 set 4 null 0",
              bytes("20000000"));
    setterRow("setWdmChannelCount", setter(&D::setWdmChannelCount, 4), "FFDC2088 set 4 null 0",
              bytes("04000000"));
    setterRow("setValue16", setter(&D::setValue16, 0xABCD), "FFDC20AC set 2 null 0", bytes("CDAB"));
    setterRow("setValue8", setter(&D::setValue8, 0xEF), "FFDC20B4 set 1 null 0", bytes("EF"));
    setterRow("enableUsbSlowMode", action(&D::enableUsbSlowMode), "FFDC2090 null 0 null 0", {});
    setterRow("disableUsbSlowMode", action(&D::disableUsbSlowMode), "FFDC2094 null 0 null 0", {});
    setterRow("stopAudio", action(&D::stopAudio), "FFDC2078 null 0 null 0", {});
    setterRow("startAudio", action(&D::startAudio), "FFDC2080 null 0 null 0", {});
    setterRow("initAudio", action(&D::initAudio), "FFDC207C null 0 null 0", {});
    setterRow("writeMixerTable", writeTable, "FFDC2040 set 66304 null 0", writtenTable());
    setterRow(
        "sendControl", [](D& d) { return inWords(d.sendControl("abc", 3)); },
        "FFDC209C set 3 null 0", "abc");

    const auto readRow = [&](const char* name, const Operation& operation, const char* call,
                             const char* reply, const QString& taken, const QString& failed) {
        row(name, operation, call, {}, bytes(reply), taken, failed, failed);
    };
    readRow("getDevicePid", reader(&D::getDevicePid), "FFDC2084 null 0 set 4", "0F000000",
            "true 15", "false 77");
    readRow("getDevicePid, no byte", reader(&D::getDevicePid), "FFDC2084 null 0 set 4", "",
            "true 0", "false 77");
    readRow("getSampleRate", reader(&D::getSampleRate), "FFDC2020 null 0 set 4", "80BB0000",
            "true 48000", "false 77");
    readRow("getSampleRate, one byte", reader(&D::getSampleRate), "FFDC2020 null 0 set 4", "80",
            "true 128", "false 77");
    readRow("getBufferSize", reader(&D::getBufferSize), "FFDC2048 null 0 set 4", "00010000",
            "true 256", "false 77");
    readRow("getUsbLatency", reader(&D::getUsbLatency), "FFDC204C null 0 set 4", "10000000",
            "true 16", "false 77");
    readRow("getValue16", reader(&D::getValue16), "FFDC20B0 null 0 set 2", "6712", "true 4711",
            "false 77");
    readRow("querySampleRate", query(&D::querySampleRate), "FFDC2020 null 0 set 4", "44AC0000",
            "44100", "0");
    readRow("queryValue829", query(&D::queryValue829), "FFDC20A4 null 0 set 4", "98BADCFE",
            "4275878552", "0");
    readRow("queryValue829, one byte", query(&D::queryValue829), "FFDC20A4 null 0 set 4", "98",
            "152", "0");
    readRow("getFlag8, 0", flagReader(true), "FFDC20B8 null 0 set 1", "00", "true false",
            "false true");
    for (const char* set : {"01", "02", "FF"})
        readRow(QByteArray("getFlag8, ") + set, flagReader(false), "FFDC20B8 null 0 set 1", set,
                "true true", "false false");
    row("readMeterData", readMeters, "FFDC2074 null 0 set 768", {},
        bytes("FBFFFFFF").leftJustified(764, '\0') + bytes("FFFFFF7F"), "true -5 0 2147483647",
        "false 77 77 77", "false 77 77 77");
    row("readUsbStatus", readStatus, "FFDC20C0 null 0 set 7", {}, bytes("CDABEF04030201"),
        "true 43981 239 16909060", "false 97 98 99", "false 43981 239 16909060");

    const QString zeros = QString(64, '0');
    row("transfer", transfer("abc"), "FFDC20A0 set 2 set 32", "ab", bytes("0102"),
        "true 010263" + zeros.mid(6), "false 616263" + zeros.mid(6), "false 616263" + zeros.mid(6));
    const QString longReply = QByteArray(32, 'x').toHex();
    row("transfer into more than 32 bytes", transfer(QByteArray(40, 'x')), "FFDC20A0 set 2 set 32",
        "ab", {}, "true " + longReply, "false " + longReply, "false " + longReply);

    const QByteArray request = bytes("0165").leftJustified(37, '\0');
    const QString untouched = "false UUUUUUUUUUUU";
    const auto versionRow = [&](const char* name, std::uint32_t length, const QByteArray& reply,
                                const QByteArray& version) {
        row(name, firmwareVersion(length), "FFDC20A0 set 37 set 32", request, reply,
            "true " + QString::fromLatin1(version), untouched, untouched);
    };
    versionRow("getFirmwareVersion, no byte", 0, versionReply(), "UUUUUUUUUUUU");
    versionRow("getFirmwareVersion, three bytes", 3, versionReply(), "abcUUUUUUUUU");
    versionRow("getFirmwareVersion", 10, versionReply(), "abcdefghi\xFFUU");
    versionRow("getFirmwareVersion, more than there is", 12, versionReply(), "abcdefghi\xFFUU");
    versionRow("getFirmwareVersion, short answer", 10, "abcd",
               QByteArray("abcd") + QByteArray(6, '\0') + "UU");
}

void DriverDeviceTest::requests()
{
    QFETCH(const Operation, operation);
    QFETCH(const QString, call);
    QFETCH(const QByteArray, input);
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, taken);
    QFETCH(const QString, closed);
    QFETCH(const QString, refused);
    const DebugLog log;
    DriverDevice device;
    QCOMPARE(operation(device), closed);
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());

    QVERIFY(device.open());
    RecordedPlatform::takeCalls();
    RecordedPlatform::answerRequests({.reply = reply});
    QCOMPARE(operation(device), taken);
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{call});
    QVERIFY(RecordedPlatform::lastInput() == input);

    RecordedPlatform::answerRequests({.error = generalFailure});
    QCOMPARE(operation(device), refused);
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList{call});
}

void DriverDeviceTest::bufferSizeIsLoggedOnSuccessOnly()
{
    DebugLog log;
    DriverDevice device;
    std::uint32_t samples = 0;
    QVERIFY(!device.getBufferSize(samples));
    QVERIFY(device.open());
    RecordedPlatform::answerRequests({.error = generalFailure});
    QVERIFY(!device.getBufferSize(samples));
    QCOMPARE(log.take(), QStringList());
    RecordedPlatform::answerRequests({.reply = bytes("00010000")});
    QVERIFY(device.getBufferSize(samples));
    QCOMPARE(log.take(), QStringList{"Buffer size: 256"});
}

void DriverDeviceTest::usbStatusBeforeTheFirstReading()
{
    DriverDevice device;
    QVERIFY(device.open());
    RecordedPlatform::answerRequests({.error = generalFailure});
    QCOMPARE(readStatus(device), QString("false 0 0 0"));
}

void DriverDeviceTest::firmwareVersionFailures()
{
    const Operation read = firmwareVersion(10);
    const Lines unread{"Failed to read firmware version from device."};
    DriverDevice device;
    read(device);
    QCOMPARE(errors.takeLines(), unread);
    QVERIFY(device.open());
    read(device);
    QCOMPARE(errors.takeLines(), Lines());
    RecordedPlatform::answerRequests({.error = generalFailure});
    read(device);
    QCOMPARE(errors.takeLines(), unread);
    RecordedPlatform::answerRequests({.exception = Exception::standard});
    QCOMPARE(read(device), QString("false UUUUUUUUUUUU"));
    QCOMPARE(errors.takeLines(), Lines{"Failed to get firmware version: no paper"});
    RecordedPlatform::answerRequests({.exception = Exception::unknown});
    QCOMPARE(read(device), QString("false UUUUUUUUUUUU"));
    QCOMPARE(errors.takeLines(), Lines{"Failed to get firmware version: Unknown error"});
}

QUORVEL_TEST_MAIN(DriverDeviceTest)
#include "driver_device_test.moc"
