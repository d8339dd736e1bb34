#include "platform/win32.h"
#include "support/simulated_interface.h"
#include "support/test_main.h"
#include "support/waiting_thread.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <memory>
#include <thread>

namespace {

constexpr DWORD readSampleRate = 0xFFDC2020;
constexpr DWORD setSampleRate = 0xFFDC2038;
constexpr DWORD writeMixer = 0xFFDC2040;
constexpr DWORD readLevels = 0xFFDC2074;
constexpr DWORD stopAudio = 0xFFDC2078;
constexpr DWORD startAudio = 0xFFDC2080;
constexpr DWORD readProductId = 0xFFDC2084;
constexpr DWORD readFirmware = 0xFFDC20A0;
constexpr DWORD readUsbStatus = 0xFFDC20C0;

constexpr DWORD noFunction = 1;
constexpr DWORD notFound = 2;
constexpr DWORD invalidHandle = 6;
constexpr DWORD invalidParameter = 87;
constexpr DWORD bufferTooSmall = 122;
constexpr DWORD aborted = 995;
constexpr DWORD notConnected = 1167;

HANDLE openPath(const wchar_t* path)
{
    return CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       nullptr, OPEN_EXISTING, 0, nullptr);
}

HANDLE openBus0()
{
    return openPath(LR"(\\.\QuorvelAudioBus0)");
}

/// The error number of one request, 0 when it succeeded.
DWORD request(HANDLE device, DWORD code, const void* input, DWORD inputLength, void* output,
              DWORD outputLength, DWORD* returned = nullptr)
{
    DWORD count = 0;
    SetLastError(ERROR_SUCCESS);
    const BOOL succeeded = DeviceIoControl(device, code, const_cast<void*>(input), inputLength,
                                           output, outputLength, &count, nullptr);
    if (returned != nullptr)
        *returned = count;
    return succeeded == FALSE ? GetLastError() : 0;
}

DWORD read32(HANDLE device, DWORD code, std::uint32_t& value)
{
    return request(device, code, nullptr, 0, &value, sizeof value);
}

} // namespace

class DeviceContractTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void missingPathsAreNotFound_data();
    void missingPathsAreNotFound();
    void pathExistsOnlyOnItsBus();
    void unpluggedPathIsNotFound();
    void severalHandlesAreOpenAtOnce();
    void closedHandleIsInvalid();
    void requestsOnInvalidHandlesAreRefused_data();
    void requestsOnInvalidHandlesAreRefused();
    void lastErrorBelongsToItsThread();
    void answerCountsItsBytes();
    void shortAnswerLeavesTheRestUntouched();
    void unknownCodeIsAnInvalidFunction();
    void tooSmallOutputIsRefused_data();
    void tooSmallOutputIsRefused();
    void wrongInputSizeIsRefused_data();
    void wrongInputSizeIsRefused();
    void refusedReadLeavesTheBufferUntouched();
    void requestWithoutBuffersIsFine();
    void inputAndOutputTravelInOneRequest();
    void wholeMixerTableIsTaken();
    void faultsHitWhatTheyAreFor();
    void stateOutlastsAReplugging();
    void traceTellsEachRequest();
    void commandsAreCounted();
    void levelsMoveByThemselves();
    void injectedErrorsArriveAsGiven_data();
    void injectedErrorsArriveAsGiven();
    void delayTakesItsTime();
    void delayHoldsOnlyItsOwnCaller();
    void waitingRequestIsCancelled_data();
    void waitingRequestIsCancelled();
    void unpluggedHandleIsNotConnected();
    void handleStaysDeadAfterReplugging();
    void closingEndsTheHandleAtOnce();

private:
    std::unique_ptr<SimulatedInterface> simulated;
    HANDLE device = INVALID_HANDLE_VALUE;
};

void DeviceContractTest::init()
{
    simulated = std::make_unique<SimulatedInterface>();
    QVERIFY(simulated->control().plug(SimulatorControl::ka2));
    device = openBus0();
    QVERIFY(device != INVALID_HANDLE_VALUE);
}

void DeviceContractTest::cleanup()
{
    CloseHandle(device);
    simulated.reset();
}

void DeviceContractTest::missingPathsAreNotFound_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("free bus") << R"(\\.\QuorvelAudioBus1)";
    QTest::newRow("last bus") << R"(\\.\QuorvelAudioBus15)";
    QTest::newRow("no such bus") << R"(\\.\QuorvelAudioBus16)";
    QTest::newRow("no number") << R"(\\.\QuorvelAudioBus)";
    QTest::newRow("unknown name") << R"(\\.\QuorvelNothing)";
}

void DeviceContractTest::missingPathsAreNotFound()
{
    QFETCH(QString, path);
    SetLastError(ERROR_SUCCESS);
    QCOMPARE(openPath(path.toStdWString().c_str()), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
}

void DeviceContractTest::pathExistsOnlyOnItsBus()
{
    QVERIFY(simulated->control().plug(SimulatorControl::ks, 11));
    QCOMPARE(openBus0(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
    const HANDLE moved = openPath(LR"(\\.\QuorvelAudioBus11)");
    QVERIFY(moved != INVALID_HANDLE_VALUE);
    std::uint32_t product = 0;
    QCOMPARE(read32(moved, readProductId, product), 0u);
    QCOMPARE(product, 15u);
    QVERIFY(CloseHandle(moved));
}

void DeviceContractTest::unpluggedPathIsNotFound()
{
    QVERIFY(simulated->control().unplug());
    QCOMPARE(openBus0(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
}

void DeviceContractTest::severalHandlesAreOpenAtOnce()
{
    std::array<HANDLE, 5> handles;
    for (HANDLE& handle : handles) {
        handle = openBus0();
        QVERIFY(handle != INVALID_HANDLE_VALUE);
    }
    QCOMPARE(simulated->openHandles(), 6);
    for (const HANDLE handle : handles) {
        std::uint32_t product = 0;
        QCOMPARE(read32(handle, readProductId, product), 0u);
        QCOMPARE(product, 2u);
    }
    for (const HANDLE handle : handles)
        QVERIFY(CloseHandle(handle));
    QCOMPARE(simulated->settledHandles(1), 1);
}

void DeviceContractTest::closedHandleIsInvalid()
{
    const HANDLE handle = openBus0();
    QVERIFY(CloseHandle(handle));
    SetLastError(ERROR_SUCCESS);
    QVERIFY(!CloseHandle(handle));
    QCOMPARE(GetLastError(), invalidHandle);
    std::uint32_t value = 7;
    QCOMPARE(read32(handle, readProductId, value), invalidHandle);
    QCOMPARE(value, 7u);
}

void DeviceContractTest::requestsOnInvalidHandlesAreRefused_data()
{
    QTest::addColumn<quintptr>("number");
    QTest::newRow("null") << quintptr{0};
    QTest::newRow("all bits") << ~quintptr{0};
    QTest::newRow("garbage") << quintptr{0x7ABCDE0};
}

void DeviceContractTest::requestsOnInvalidHandlesAreRefused()
{
    QFETCH(quintptr, number);
    std::uint32_t value = 7;
    QCOMPARE(read32(std::bit_cast<HANDLE>(number), readProductId, value), invalidHandle);
    QCOMPARE(value, 7u);
}

void DeviceContractTest::lastErrorBelongsToItsThread()
{
    std::atomic<bool> go = false;
    std::atomic<DWORD> seen = 0;
    std::thread other([&] {
        while (!go)
            std::this_thread::yield();
        openPath(LR"(\\.\QuorvelNothing)");
        seen = GetLastError();
    });
    SetLastError(1234);
    go = true;
    while (seen == 0)
        std::this_thread::yield();
    // Asked before the thread is joined: the thread library may set the number itself.
    const DWORD own = GetLastError();
    other.join();
    QCOMPARE(own, DWORD{1234});
    QCOMPARE(seen.load(), notFound);
}

void DeviceContractTest::answerCountsItsBytes()
{
    std::array<std::uint8_t, 16> buffer;
    buffer.fill(0xEE);
    DWORD returned = 99;
    QCOMPARE(request(device, readSampleRate, nullptr, 0, buffer.data(), 16, &returned), 0u);
    QCOMPARE(returned, DWORD{4});
    QCOMPARE(buffer[0], std::uint8_t{0x44});
    QCOMPARE(buffer[1], std::uint8_t{0xAC});
    QCOMPARE(buffer[3], std::uint8_t{0});
    for (std::size_t i = 4; i < buffer.size(); ++i)
        QCOMPARE(buffer[i], std::uint8_t{0xEE});

    std::array<std::int32_t, 192> levels = {};
    QVERIFY(simulated->control().setLevel(191, -5));
    QCOMPARE(request(device, readLevels, nullptr, 0, levels.data(), 768, &returned), 0u);
    QCOMPARE(returned, DWORD{768});
    QCOMPARE(levels[191], -5);

    QCOMPARE(request(device, startAudio, nullptr, 0, nullptr, 0, &returned), 0u);
    QCOMPARE(returned, DWORD{0});
}

void DeviceContractTest::shortAnswerLeavesTheRestUntouched()
{
    QVERIFY(simulated->control().answerShort(readUsbStatus, 1, 3));
    QVERIFY(simulated->control().setUsbStatus(0x0201, 3, 0x07060504));
    std::array<std::uint8_t, 7> status;
    status.fill(0xEE);
    DWORD returned = 99;
    QCOMPARE(request(device, readUsbStatus, nullptr, 0, status.data(), 7, &returned), 0u);
    QCOMPARE(returned, DWORD{3});
    const std::array<std::uint8_t, 7> shortened = {1, 2, 3, 0xEE, 0xEE, 0xEE, 0xEE};
    QVERIFY(status == shortened);
    QCOMPARE(request(device, readUsbStatus, nullptr, 0, status.data(), 7, &returned), 0u);
    QCOMPARE(returned, DWORD{7});
    const std::array<std::uint8_t, 7> whole = {1, 2, 3, 4, 5, 6, 7};
    QVERIFY(status == whole);
}

void DeviceContractTest::unknownCodeIsAnInvalidFunction()
{
    QCOMPARE(request(device, 0xFFDC2FF0, nullptr, 0, nullptr, 0), noFunction);
    QCOMPARE(request(device, 0, nullptr, 0, nullptr, 0), noFunction);
}

void DeviceContractTest::tooSmallOutputIsRefused_data()
{
    QTest::addColumn<DWORD>("code");
    QTest::addColumn<DWORD>("length");
    QTest::newRow("number") << readSampleRate << DWORD{3};
    QTest::newRow("no room") << readProductId << DWORD{0};
    QTest::newRow("levels") << readLevels << DWORD{767};
    QTest::newRow("status") << readUsbStatus << DWORD{6};
}

void DeviceContractTest::tooSmallOutputIsRefused()
{
    QFETCH(DWORD, code);
    QFETCH(DWORD, length);
    std::array<std::uint8_t, 1024> buffer;
    QCOMPARE(request(device, code, nullptr, 0, buffer.data(), length), bufferTooSmall);
}

void DeviceContractTest::wrongInputSizeIsRefused_data()
{
    QTest::addColumn<DWORD>("code");
    QTest::addColumn<DWORD>("length");
    QTest::newRow("number too short") << setSampleRate << DWORD{3};
    QTest::newRow("number too long") << setSampleRate << DWORD{5};
    QTest::newRow("no number") << setSampleRate << DWORD{0};
    QTest::newRow("table too short") << writeMixer << DWORD{66303};
    QTest::newRow("table too long") << writeMixer << DWORD{66305};
    QTest::newRow("input not expected") << startAudio << DWORD{1};
}

void DeviceContractTest::wrongInputSizeIsRefused()
{
    QFETCH(DWORD, code);
    QFETCH(DWORD, length);
    const std::vector<std::uint8_t> input(66305);
    QCOMPARE(request(device, code, input.data(), length, nullptr, 0), invalidParameter);
    QCOMPARE(simulated->control().state().engine.sampleRate, 44100u);
}

void DeviceContractTest::refusedReadLeavesTheBufferUntouched()
{
    QVERIFY(simulated->control().fail(readSampleRate, 1, ERROR_GEN_FAILURE));
    std::uint32_t rate = 7;
    QCOMPARE(read32(device, readSampleRate, rate), DWORD{ERROR_GEN_FAILURE});
    QCOMPARE(rate, 7u);
}

void DeviceContractTest::requestWithoutBuffersIsFine()
{
    QCOMPARE(request(device, stopAudio, nullptr, 0, nullptr, 0), 0u);
    QCOMPARE(simulated->control().state().engineState, SIM_ENGINE_STOPPED);
    QCOMPARE(request(device, startAudio, nullptr, 0, nullptr, 0), 0u);
    QCOMPARE(simulated->control().state().engineState, SIM_ENGINE_RUNNING);
}

void DeviceContractTest::inputAndOutputTravelInOneRequest()
{
    std::array<std::uint8_t, 37> packet = {1, 0x65};
    std::array<std::uint8_t, 32> reply;
    reply.fill(0xEE);
    DWORD returned = 0;
    QCOMPARE(request(device, readFirmware, packet.data(), 37, reply.data(), 32, &returned), 0u);
    QCOMPARE(returned, DWORD{32});
    QCOMPARE(QByteArray(reinterpret_cast<char*>(reply.data()), 6), QByteArray("1.0.7\0", 6));
    QCOMPARE(reply[31], std::uint8_t{0});
}

void DeviceContractTest::wholeMixerTableIsTaken()
{
    std::vector<double> table(8288);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<double>(i) / 8288;
    const DWORD bytes = static_cast<DWORD>(table.size() * sizeof table[0]);
    QCOMPARE(bytes, DWORD{66304});
    QCOMPARE(request(device, writeMixer, table.data(), bytes, nullptr, 0), 0u);
    QVERIFY(simulated->control().mixerTable() == table);
}

void DeviceContractTest::faultsHitWhatTheyAreFor()
{
    const auto ask = [this](DWORD code) { return request(device, code, nullptr, 0, nullptr, 0); };
    QVERIFY(simulated->control().fail(startAudio, 1, 5, 2));
    QList<DWORD> errors;
    for (const DWORD code : {startAudio, stopAudio, startAudio, startAudio, startAudio})
        errors.append(ask(code));
    QCOMPARE(errors, (QList<DWORD>{0, 0, 0, 5, 0}));
    QVERIFY(simulated->control().fail(SimulatorControl::anyCode, SimulatorControl::always, 21));
    for (const DWORD code : {startAudio, stopAudio, startAudio})
        QCOMPARE(ask(code), DWORD{21});
    QVERIFY(simulated->control().fail(SimulatorControl::anyCode, 0, 0));
    QCOMPARE(ask(startAudio), DWORD{0});
    QVERIFY(simulated->control().fail(stopAudio, SimulatorControl::always, 31));
    QVERIFY(simulated->control().clearFaults());
    QCOMPARE(ask(stopAudio), DWORD{0});
}

void DeviceContractTest::stateOutlastsAReplugging()
{
    const std::uint32_t values[] = {48000, 256, 12};
    const DWORD setters[] = {setSampleRate, 0xFFDC2044, 0xFFDC2050};
    for (std::size_t i = 0; i < std::size(values); ++i)
        QCOMPARE(request(device, setters[i], &values[i], 4, nullptr, 0), 0u);
    QVERIFY(simulated->control().setFirmware({'2', '.', '1'}));
    QVERIFY(simulated->control().unplug());
    QVERIFY(simulated->control().plug(SimulatorControl::ka1));
    const SimulatedState plugged = simulated->control().state();
    QCOMPARE(plugged.engine.sampleRate, values[0]);
    QCOMPARE(plugged.engine.bufferSize, values[1]);
    QCOMPARE(plugged.engine.usbLatency, values[2]);
    QCOMPARE(plugged.engineState, SIM_ENGINE_RUNNING);
    QCOMPARE(plugged.firmware[2], std::uint8_t{'1'});
    QVERIFY(simulated->control().reset());
    QCOMPARE(simulated->control().state().engine.sampleRate, 44100u);
    QVERIFY(!simulated->control().state().plugged);
}

void DeviceContractTest::traceTellsEachRequest()
{
    const std::uint32_t rate = 44100;
    request(device, setSampleRate, &rate, 4, nullptr, 0);
    std::uint32_t product = 0;
    read32(device, readProductId, product);
    request(device, 0xFFDC2999, nullptr, 0, nullptr, 0);
    std::vector<double> table(8288);
    table[128] = 1;
    table[161] = 1;
    table[8192] = 0.50118723362727224;
    request(device, writeMixer, table.data(), 66304, nullptr, 0);
    table[161] = 0;
    QVERIFY(simulated->control().fail(writeMixer, 1, 31));
    request(device, writeMixer, table.data(), 66304, nullptr, 0);
    const std::vector<std::uint8_t> large(41, 0x0A);
    request(device, setSampleRate, large.data(), 41, nullptr, 0);
    const QStringList expected = {
        "h1 FFDC2038 in=44 AC 00 00 out=0",
        "h1 FFDC2084 in= out=4",
        "h1 FFDC2999 in= out=0 error=1",
        "h1 FFDC2040 table 128=1 161=1 8192=0.501187",
        "h1 FFDC2040 table 161=0 error=31",
        "h1 FFDC2038 in=" + QString("0A ").repeated(40) + ".. (41 bytes) out=0 error=87",
    };
    QCOMPARE(simulated->traceLines(), expected);
    QCOMPARE(simulated->takeTrace(), expected);
    request(device, startAudio, nullptr, 0, nullptr, 0);
    QCOMPARE(simulated->takeTrace(), QStringList("h1 FFDC2080 in= out=0"));
    QCOMPARE(simulated->takeTrace(), QStringList());
}

void DeviceContractTest::commandsAreCounted()
{
    std::array<std::uint8_t, 37> packet = {1, 7, 0, 2, 0, 0x2C, 1};
    for (const std::uint8_t channel : std::initializer_list<std::uint8_t>{1, 2, 1}) {
        packet[4] = channel;
        QCOMPARE(request(device, 0xFFDC209C, packet.data(), 37, nullptr, 0), 0u);
    }
    const std::vector<SimulatedCommand> commands = simulated->control().commands();
    QCOMPARE(commands.size(), std::size_t{2});
    QCOMPARE(commands[0].count, 2u);
    QCOMPARE(commands[0].packet[4], std::uint8_t{1});
    QCOMPARE(commands[1].count, 1u);
    QCOMPARE(commands[1].packet[4], std::uint8_t{2});
}

void DeviceContractTest::levelsMoveByThemselves()
{
    QVERIFY(simulated->control().moveLevels(true));
    std::array<std::int32_t, 192> first = {};
    QCOMPARE(request(device, readLevels, nullptr, 0, first.data(), 768), 0u);
    std::array<std::int32_t, 192> later = first;
    while (later == first)
        QCOMPARE(request(device, readLevels, nullptr, 0, later.data(), 768), 0u);
    QVERIFY(std::all_of(later.begin(), later.end(), [](std::int32_t level) { return level >= 0; }));
}

void DeviceContractTest::injectedErrorsArriveAsGiven_data()
{
    QTest::addColumn<DWORD>("error");
    for (const DWORD error : {1u, 2u, 5u, 21u, 31u, 87u, 121u, 122u, 1117u, 1167u})
        QTest::addRow("error %u", static_cast<unsigned>(error)) << error;
}

void DeviceContractTest::injectedErrorsArriveAsGiven()
{
    QFETCH(DWORD, error);
    QVERIFY(simulated->control().fail(readProductId, 2, error));
    std::uint32_t product = 0;
    QCOMPARE(read32(device, readProductId, product), error);
    QCOMPARE(read32(device, readProductId, product), error);
    QCOMPARE(read32(device, readProductId, product), 0u);
    QCOMPARE(product, 2u);
}

void DeviceContractTest::delayTakesItsTime()
{
    constexpr int delay = 60;
    QVERIFY(simulated->control().delay(readProductId, 1, delay));
    QElapsedTimer clock;
    clock.start();
    std::uint32_t product = 0;
    QCOMPARE(read32(device, readProductId, product), 0u);
    QCOMPARE(product, 2u);
    QVERIFY2(clock.elapsed() >= delay - 10, qPrintable(QString::number(clock.elapsed())));
}

void DeviceContractTest::delayHoldsOnlyItsOwnCaller()
{
    QVERIFY(simulated->control().delay(readProductId, 1, 600000));
    WaitingThread slow([&] {
        std::uint32_t product = 0;
        return read32(device, readProductId, product);
    });
    while (simulated->control().state().requests == 0)
        Sleep(1);
    std::uint32_t rate = 0;
    const HANDLE other = openBus0();
    QCOMPARE(read32(other, readSampleRate, rate), 0u);
    CloseHandle(other);
    QCOMPARE(rate, 44100u);
    QVERIFY(!slow.hasReturned());
    slow.cancel();
    QCOMPARE(slow.join(), aborted);
}

void DeviceContractTest::waitingRequestIsCancelled_data()
{
    QTest::addColumn<bool>("byHandle");
    QTest::newRow("by its thread") << false;
    QTest::newRow("by its handle") << true;
}

void DeviceContractTest::waitingRequestIsCancelled()
{
    QFETCH(bool, byHandle);
    QVERIFY(simulated->control().delay(readLevels, 1, 600000));
    std::array<std::int32_t, 192> levels;
    levels.fill(7);
    DWORD returned = 99;
    WaitingThread thread([&] {
        return request(device, readLevels, nullptr, 0, levels.data(), sizeof levels, &returned);
    });
    if (byHandle)
        thread.cancelOn(device);
    else
        thread.cancel();
    QCOMPARE(thread.join(), aborted);
    QCOMPARE(returned, DWORD{0});
    QVERIFY(
        std::all_of(levels.begin(), levels.end(), [](std::int32_t level) { return level == 7; }));

    // The handle is as good as before, and its next answer is that of the next request.
    std::uint32_t rate = 0;
    QCOMPARE(read32(device, readSampleRate, rate), 0u);
    QCOMPARE(rate, 44100u);
    QCOMPARE(request(device, readLevels, nullptr, 0, levels.data(), sizeof levels, &returned), 0u);
    QCOMPARE(returned, DWORD{sizeof levels});
}

void DeviceContractTest::unpluggedHandleIsNotConnected()
{
    QVERIFY(simulated->control().unplug());
    std::uint32_t value = 7;
    QCOMPARE(read32(device, readProductId, value), notConnected);
    QCOMPARE(value, 7u);
    QCOMPARE(request(device, startAudio, nullptr, 0, nullptr, 0), notConnected);
    QCOMPARE(simulated->openHandles(), 1);
    QVERIFY(CloseHandle(device));
    QCOMPARE(simulated->settledHandles(0), 0);
    device = INVALID_HANDLE_VALUE;
}

void DeviceContractTest::handleStaysDeadAfterReplugging()
{
    QVERIFY(simulated->control().unplug());
    QVERIFY(simulated->control().plug(SimulatorControl::ka1));
    std::uint32_t product = 0;
    QCOMPARE(read32(device, readProductId, product), notConnected);
    const HANDLE fresh = openBus0();
    QCOMPARE(read32(fresh, readProductId, product), 0u);
    QCOMPARE(product, 1u);
    QCOMPARE(read32(device, readProductId, product), notConnected);
    QVERIFY(CloseHandle(fresh));
}

void DeviceContractTest::closingEndsTheHandleAtOnce()
{
    for (int i = 0; i < 50; ++i) {
        const HANDLE handle = openBus0();
        QCOMPARE(simulated->openHandles(), 2);
        QVERIFY(CloseHandle(handle));
        QCOMPARE(simulated->settledHandles(1), 1);
    }
}

QUORVEL_TEST_MAIN(DeviceContractTest)
#include "device_contract_test.moc"
