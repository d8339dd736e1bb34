#include "driver/control_codes.h"
#include "driver/driver_device.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QTest>

#include <iostream>

using Lines = std::vector<std::string>;

class DriverChannelTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void controlCodes_data();
    void controlCodes();
    void pathTable();
    void openWithoutDriverTriesAllPaths();
    void openFindsLaterBus();
    void openStopsAtTheFirstAnswer();
    void openDoesNotCloseAHeldHandle();
    void closeTwiceIsHarmless();
    void destructorClosesTheHandle();
    void destructorAfterCloseDoesNothing();
    void severalHandlesAtOnce();

private:
    SimulatedInterface simulated;
};

namespace {

std::string failedLine(int bus)
{
    return R"(Open device \\.\QuorvelAudioBus)" + std::to_string(bus) + " failed, error: 2";
}

std::string successLine(int bus)
{
    return R"(Open device \\.\QuorvelAudioBus)" + std::to_string(bus) + " success!";
}

} // namespace

void DriverChannelTest::init()
{
    simulated.control().reset();
}

void DriverChannelTest::controlCodes_data()
{
    QTest::addColumn<std::uint32_t>("code");
    QTest::addColumn<std::uint32_t>("listed");
    const auto row = [](const char* name, std::uint32_t code, std::uint32_t listed) {
        QTest::newRow(name) << code << listed;
    };
    row("read sample rate", ControlCode::readSampleRate, 0xFFDC2020);
    row("set sample rate", ControlCode::setSampleRate, 0xFFDC2038);
    row("write mixer gain table", ControlCode::writeMixerTable, 0xFFDC2040);
    row("set buffer size", ControlCode::setBufferSize, 0xFFDC2044);
    row("read buffer size", ControlCode::readBufferSize, 0xFFDC2048);
    row("read USB latency size", ControlCode::readUsbLatency, 0xFFDC204C);
    row("set USB latency size", ControlCode::setUsbLatency, 0xFFDC2050);
    row("read level meters", ControlCode::readMeters, 0xFFDC2074);
    row("stop audio", ControlCode::stopAudio, 0xFFDC2078);
    row("initialise audio", ControlCode::initAudio, 0xFFDC207C);
    row("start audio", ControlCode::startAudio, 0xFFDC2080);
    row("read device product ID", ControlCode::readProductId, 0xFFDC2084);
    row("set WDM channel count", ControlCode::setWdmChannelCount, 0xFFDC2088);
    row("enable USB slow mode", ControlCode::enableUsbSlowMode, 0xFFDC2090);
    row("disable USB slow mode", ControlCode::disableUsbSlowMode, 0xFFDC2094);
    row("ControlPacket command", ControlCode::controlPacket, 0xFFDC209C);
    row("request with reply", ControlCode::requestWithReply, 0xFFDC20A0);
    row("read 32-bit value", ControlCode::readValue829, 0xFFDC20A4);
    row("write 16-bit value", ControlCode::writeValue16, 0xFFDC20AC);
    row("read 16-bit value", ControlCode::readValue16, 0xFFDC20B0);
    row("write 8-bit value", ControlCode::writeValue8, 0xFFDC20B4);
    row("read 8-bit flag", ControlCode::readFlag8, 0xFFDC20B8);
    row("read USB status", ControlCode::readUsbStatus, 0xFFDC20C0);
}

void DriverChannelTest::controlCodes()
{
    QFETCH(std::uint32_t, code);
    QFETCH(std::uint32_t, listed);
    QCOMPARE(code, listed);
}

void DriverChannelTest::pathTable()
{
    const auto paths = DriverDevice::devicePaths();
    QCOMPARE(paths.size(), std::size_t{16});
    QCOMPARE(paths[0], std::wstring(L"\\\\.\\QuorvelAudioBus0"));
    QCOMPARE(paths[9], std::wstring(L"\\\\.\\QuorvelAudioBus9"));
    QCOMPARE(paths[10], std::wstring(L"\\\\.\\QuorvelAudioBus10"));
    QCOMPARE(paths[15], std::wstring(L"\\\\.\\QuorvelAudioBus15"));
}

void DriverChannelTest::openWithoutDriverTriesAllPaths()
{
    StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(!device.open());
    Lines expected;
    for (int bus = 0; bus < 16; ++bus)
        expected.push_back(failedLine(bus));
    QCOMPARE(output.takeLines(), expected);
    QVERIFY(!device.stopAudio());
}

void DriverChannelTest::openFindsLaterBus()
{
    simulated.control().plug(1, 3);
    StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(device.open());
    QCOMPARE(output.takeLines(),
             (Lines{failedLine(0), failedLine(1), failedLine(2), successLine(3)}));
    QVERIFY(device.stopAudio());
}

void DriverChannelTest::openStopsAtTheFirstAnswer()
{
    simulated.control().plug(1, 0);
    StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(device.open());
    QCOMPARE(output.takeLines(), Lines{successLine(0)});
    QCOMPARE(simulated.openHandles(), 1);
}

void DriverChannelTest::openDoesNotCloseAHeldHandle()
{
    simulated.control().plug(1, 0);
    const StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    QVERIFY(device.open());
    QVERIFY(device.open());
    QCOMPARE(simulated.openHandles(), 2);
}

void DriverChannelTest::closeTwiceIsHarmless()
{
    simulated.control().plug(1, 0);
    const StreamCapture<wchar_t> output(std::wcout);
    DriverDevice device;
    device.close();
    QVERIFY(device.open());
    device.close();
    QCOMPARE(simulated.settledHandles(0), 0);
    device.close();
    QVERIFY(!device.stopAudio());
    QVERIFY(device.open());
    QVERIFY(device.stopAudio());
}

void DriverChannelTest::destructorClosesTheHandle()
{
    simulated.control().plug(1, 0);
    const StreamCapture<wchar_t> output(std::wcout);
    {
        DriverDevice device;
        QVERIFY(device.open());
        QCOMPARE(simulated.openHandles(), 1);
    }
    QCOMPARE(simulated.settledHandles(0), 0);
}

void DriverChannelTest::destructorAfterCloseDoesNothing()
{
    simulated.control().plug(1, 0);
    const StreamCapture<wchar_t> output(std::wcout);
    DriverDevice neighbour;
    {
        DriverDevice device;
        QVERIFY(device.open());
        device.close();
        QVERIFY(neighbour.open());
    }
    QVERIFY(neighbour.stopAudio());
}

void DriverChannelTest::severalHandlesAtOnce()
{
    simulated.control().plug(2, 15);
    const StreamCapture<wchar_t> output(std::wcout);
    std::array<DriverDevice, 4> devices;
    for (DriverDevice& device : devices)
        QVERIFY(device.open());
    for (DriverDevice& device : devices) {
        std::uint32_t pid = 0;
        QVERIFY(device.getDevicePid(pid));
        QCOMPARE(pid, 2U);
    }
}

QUORVEL_TEST_MAIN(DriverChannelTest)
#include "driver_channel_test.moc"
