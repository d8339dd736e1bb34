#include "simulator/model/device_codes.h"
#include "simulator/model/device_model.h"
#include "support/test_main.h"

#include <QTest>

#include <bit>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes number32(std::uint32_t value)
{
    Bytes bytes(4);
    std::memcpy(bytes.data(), &value, 4);
    return bytes;
}

std::uint32_t toNumber(const Bytes& bytes)
{
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data(), std::min<std::size_t>(bytes.size(), 4));
    return value;
}

template <class Record> Bytes toBytes(const Record& record)
{
    Bytes bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

/// A table of zeros but for these cells.
Bytes mixerTable(std::initializer_list<std::pair<std::size_t, double>> cells)
{
    Bytes table(SIM_MIXER_BYTES);
    for (const auto& [index, value] : cells)
        std::memcpy(&table[8 * index], &value, sizeof value);
    return table;
}

} // namespace

class SimulatorModelTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void everyCodeKnowsItsSizes_data();
    void everyCodeKnowsItsSizes();
    void unknownCodesAreRefused();
    void settersAreReadBack();
    void engineFollowsItsCommands();
    void slowModeAndPhoneChipSwitch();
    void commandsAreKeptPerOpcodeAndChannel();
    void packetsNeedTheirMarker();
    void firmwareVersionIsAnswered();
    void usbStatusIsPacked();
    void sharedBufferIsReadBeforeItIsWritten();
    void levelsStandOrMove();
    void faultsCountDown();
    void faultSkipsFirst();
    void endlessFaultIsTakenBack();
    void faultForAnyCode();
    void delaysAndShortAnswers();
    void badFaultsAreRefused();
    void handlesAreNumberedAndCounted();
    void oldHandlesStayDead();
    void plugChecksItsBus();
    void plugPowersUpButKeepsPresets();
    void traceRecordsRequests();
    void traceRingKeepsTheNewest();
    void traceIsCleared();
    void tableDifferencesAreTraced();
    void refusedTableIsNotAccepted();
    void cellRingReportsItsOldest();
    void controlChecksSizes();

private:
    SimAnswer ask(std::uint32_t code, const Bytes& input, std::uint32_t room = 0);
    std::uint32_t error(std::uint32_t code, const Bytes& input = {}, std::uint32_t room = 0);
    std::uint32_t read(std::uint32_t code, std::uint32_t room = 4);
    SimAnswer control(std::uint32_t code, const Bytes& input = {}, std::uint32_t room = 0);
    void addFault(std::uint32_t kind, std::uint32_t code, std::uint32_t count, std::uint32_t value,
                  std::uint32_t skip = 0);
    std::vector<SimRequest> trace(std::uint64_t from = 0);

    std::unique_ptr<SimModel> model;
    SimHandle handle = 0;
    std::uint32_t now = 0;
    Bytes output;
};

void SimulatorModelTest::init()
{
    model = std::make_unique<SimModel>();
    simInitialise(model.get());
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{2, 0})).error, 0u);
    handle = simOpen(model.get());
    now = 1000;
}

/// One request; what it answers is in `output`.
SimAnswer SimulatorModelTest::ask(std::uint32_t code, const Bytes& input, std::uint32_t room)
{
    output.assign(room, 0xEE);
    const SimCall call = {
        now, code, input.data(), static_cast<std::uint32_t>(input.size()), output.data(), room};
    const SimAnswer answer = simRequest(model.get(), handle, &call);
    output.resize(answer.returned);
    return answer;
}

std::uint32_t SimulatorModelTest::error(std::uint32_t code, const Bytes& input, std::uint32_t room)
{
    return ask(code, input, room).error;
}

std::uint32_t SimulatorModelTest::read(std::uint32_t code, std::uint32_t room)
{
    ask(code, {}, room);
    return toNumber(output);
}

SimAnswer SimulatorModelTest::control(std::uint32_t code, const Bytes& input, std::uint32_t room)
{
    output.assign(room, 0xEE);
    const SimCall call = {
        now, code, input.data(), static_cast<std::uint32_t>(input.size()), output.data(), room};
    const SimAnswer answer = simControl(model.get(), &call);
    output.resize(answer.returned);
    return answer;
}

void SimulatorModelTest::addFault(std::uint32_t kind, std::uint32_t code, std::uint32_t count,
                                  std::uint32_t value, std::uint32_t skip)
{
    QCOMPARE(control(SIM_ADD_FAULT, toBytes(SimFault{kind, code, count, skip, value})).error, 0u);
}

std::vector<SimRequest> SimulatorModelTest::trace(std::uint64_t from)
{
    control(SIM_READ_TRACE, toBytes(from), 1024 * 1024);
    SimTrace head = {};
    std::memcpy(&head, output.data(), sizeof head);
    std::vector<SimRequest> records(head.count);
    if (head.count > 0)
        std::memcpy(records.data(), output.data() + sizeof head, head.count * sizeof(SimRequest));
    return records;
}

void SimulatorModelTest::everyCodeKnowsItsSizes_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<quint32>("input");
    QTest::addColumn<quint32>("room");
    const auto row = [](const char* name, quint32 code, quint32 input, quint32 room) {
        QTest::newRow(name) << code << input << room;
    };
    row("read sample rate", 0xFFDC2020, 0, 4);
    row("set sample rate", 0xFFDC2038, 4, 0);
    row("write mixer", 0xFFDC2040, 66304, 0);
    row("set buffer size", 0xFFDC2044, 4, 0);
    row("read buffer size", 0xFFDC2048, 0, 4);
    row("read latency", 0xFFDC204C, 0, 4);
    row("set latency", 0xFFDC2050, 4, 0);
    row("read levels", 0xFFDC2074, 0, 768);
    row("stop", 0xFFDC2078, 0, 0);
    row("initialise", 0xFFDC207C, 0, 0);
    row("start", 0xFFDC2080, 0, 0);
    row("read product", 0xFFDC2084, 0, 4);
    row("set WDM channels", 0xFFDC2088, 4, 0);
    row("slow mode on", 0xFFDC2090, 0, 0);
    row("slow mode off", 0xFFDC2094, 0, 0);
    row("command", 0xFFDC209C, 37, 0);
    row("transfer", 0xFFDC20A0, 37, 32);
    row("read 32 bits", 0xFFDC20A4, 0, 4);
    row("write 16 bits", 0xFFDC20AC, 2, 0);
    row("read 16 bits", 0xFFDC20B0, 0, 2);
    row("write 8 bits", 0xFFDC20B4, 1, 0);
    row("read 8 bits", 0xFFDC20B8, 0, 1);
    row("read status", 0xFFDC20C0, 0, 7);
}

void SimulatorModelTest::everyCodeKnowsItsSizes()
{
    QFETCH(quint32, code);
    QFETCH(quint32, input);
    QFETCH(quint32, room);
    Bytes right(input, 1);
    const SimAnswer answer = ask(code, right, room);
    QCOMPARE(answer.error, 0u);
    QCOMPARE(answer.returned, room);
    // Room to spare is fine and changes nothing.
    QCOMPARE(ask(code, right, room + 5).returned, room);

    Bytes longer(input + 1, 1);
    QCOMPARE(error(code, longer, room), SIM_ERROR_INVALID_PARAMETER);
    if (input > 0)
        QCOMPARE(error(code, {}, room), SIM_ERROR_INVALID_PARAMETER);
    if (room > 0)
        QCOMPARE(error(code, right, room - 1), SIM_ERROR_INSUFFICIENT_BUFFER);
}

void SimulatorModelTest::unknownCodesAreRefused()
{
    for (const std::uint32_t code : {0u, 0xFFDC2024u, 0xFFDC2098u, 0xFFDC20A8u, 0xFFDC20C4u,
                                     0xFFDC2021u, 0x1FDC2020u, SIM_RESET})
        QCOMPARE(error(code), SIM_ERROR_INVALID_FUNCTION);
    QVERIFY(model->state.plugged);
}

void SimulatorModelTest::settersAreReadBack()
{
    QCOMPARE(error(SIM_CODE_SET_SAMPLE_RATE, number32(48000)), 0u);
    QCOMPARE(error(SIM_CODE_SET_BUFFER_SIZE, number32(512)), 0u);
    QCOMPARE(error(SIM_CODE_SET_USB_LATENCY, number32(0xFFFFFFFE)), 0u);
    QCOMPARE(error(SIM_CODE_SET_WDM_CHANNELS, number32(8)), 0u);
    QCOMPARE(error(SIM_CODE_WRITE_VALUE16, {0x34, 0x12}), 0u);
    QCOMPARE(error(SIM_CODE_WRITE_VALUE8, {0xAB}), 0u);
    QCOMPARE(read(SIM_CODE_READ_SAMPLE_RATE), 48000u);
    QCOMPARE(read(SIM_CODE_READ_BUFFER_SIZE), 512u);
    QCOMPARE(read(SIM_CODE_READ_USB_LATENCY), 0xFFFFFFFEu);
    QCOMPARE(model->state.wdmChannels, 8u);
    QCOMPARE(read(SIM_CODE_READ_VALUE16, 2), 0x1234u);
    QCOMPARE(read(SIM_CODE_READ_FLAG8, 1), 0xABu);
    QCOMPARE(control(SIM_SET_VALUE, number32(0xCAFE0001)).error, 0u);
    QCOMPARE(read(SIM_CODE_READ_VALUE32), 0xCAFE0001u);
    QCOMPARE(read(SIM_CODE_READ_PRODUCT_ID), 2u);
}

void SimulatorModelTest::engineFollowsItsCommands()
{
    QCOMPARE(model->state.engineState, SIM_ENGINE_RUNNING);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
    QCOMPARE(model->state.engineState, SIM_ENGINE_STOPPED);
    QCOMPARE(error(SIM_CODE_INIT_AUDIO), 0u);
    QCOMPARE(model->state.engineState, SIM_ENGINE_INITIALISED);
    QCOMPARE(error(SIM_CODE_START_AUDIO), 0u);
    QCOMPARE(model->state.engineState, SIM_ENGINE_RUNNING);
}

void SimulatorModelTest::slowModeAndPhoneChipSwitch()
{
    QCOMPARE(error(SIM_CODE_SLOW_MODE_ON), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 0x5F}), 0u);
    QCOMPARE(model->state.slowMode, 1u);
    QCOMPARE(model->state.phoneChip, 1u);
    QCOMPARE(error(SIM_CODE_SLOW_MODE_OFF), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 0x5E}), 0u);
    QCOMPARE(model->state.slowMode, 0u);
    QCOMPARE(model->state.phoneChip, 0u);
}

void SimulatorModelTest::commandsAreKeptPerOpcodeAndChannel()
{
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 7, 0, 2, 1, 10, 0}), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 7, 0, 2, 2, 20, 0}), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 3, 0, 2, 1, 30, 0}), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 7, 0, 2, 1, 11, 1}), 0u);
    QCOMPARE(control(SIM_READ_COMMANDS, {}, 4096).error, 0u);
    QCOMPARE(output.size(), 3 * sizeof(SimCommand));
    SimCommand commands[3];
    std::memcpy(commands, output.data(), output.size());
    QCOMPARE(commands[0].count, 2u);
    QCOMPARE(commands[0].packet[5], std::uint8_t{11});
    QCOMPARE(commands[0].packet[6], std::uint8_t{1});
    QCOMPARE(commands[1].count, 1u);
    QCOMPARE(commands[1].packet[4], std::uint8_t{2});
    QCOMPARE(commands[2].packet[1], std::uint8_t{3});
    QCOMPARE(model->state.commands, 4u);

    // More of them than there is room for harm nobody.
    for (unsigned i = 0; i < 600; ++i)
        QCOMPARE(error(SIM_CODE_COMMAND, {1, static_cast<std::uint8_t>(i / 200), 0, 0,
                                          static_cast<std::uint8_t>(i % 200)}),
                 0u);
    QCOMPARE(model->commandCount, SIM_COMMANDS);
}

void SimulatorModelTest::packetsNeedTheirMarker()
{
    QCOMPARE(error(SIM_CODE_COMMAND, {2, 7}), SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(error(SIM_CODE_COMMAND, {1}), SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(error(SIM_CODE_TRANSFER, {0, 0x65}, 32), SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(model->state.commands, 0u);
}

void SimulatorModelTest::firmwareVersionIsAnswered()
{
    QCOMPARE(ask(SIM_CODE_TRANSFER, {1, 0x65}, 32).returned, 32u);
    QCOMPARE(Bytes(output.begin(), output.begin() + 10),
             Bytes({'1', '.', '0', '.', '7', 0, 0, 0, 0, 0}));
    const Bytes version = {'2', '0', '2', '6', 1, 2, 3, 4, 5, 255};
    QCOMPARE(control(SIM_SET_FIRMWARE, version).error, 0u);
    ask(SIM_CODE_TRANSFER, {1, 0x65}, 32);
    QCOMPARE(Bytes(output.begin(), output.begin() + 10), version);
    QCOMPARE(Bytes(output.begin() + 10, output.end()), Bytes(22));
    // Other requests get an empty reply.
    ask(SIM_CODE_TRANSFER, {1, 0x66}, 32);
    QCOMPARE(output, Bytes(32));
}

void SimulatorModelTest::usbStatusIsPacked()
{
    const SimUsbStatus status = {0x07060504, 0x0201, 0x03, 0};
    QCOMPARE(control(SIM_SET_USB_STATUS, toBytes(status)).error, 0u);
    QCOMPARE(ask(SIM_CODE_READ_USB_STATUS, {}, 7).error, 0u);
    QCOMPARE(output, Bytes({1, 2, 3, 4, 5, 6, 7}));
}

void SimulatorModelTest::sharedBufferIsReadBeforeItIsWritten()
{
    Bytes shared(37);
    shared[0] = 1;
    shared[1] = 0x65;
    const SimCall call = {now, SIM_CODE_TRANSFER, shared.data(), 37, shared.data(), 37};
    QCOMPARE(simRequest(model.get(), handle, &call).returned, 32u);
    QCOMPARE(shared[0], std::uint8_t{'1'});
    QCOMPARE(trace().back().input[1], std::uint8_t{0x65});
}

void SimulatorModelTest::levelsStandOrMove()
{
    SimLevels levels = {190, 2, {-7, 2147483647}};
    QCOMPARE(control(SIM_SET_LEVELS, toBytes(levels)).error, 0u);
    ask(SIM_CODE_READ_LEVELS, {}, 768);
    std::int32_t values[192];
    std::memcpy(values, output.data(), sizeof values);
    QCOMPARE(values[189], 0);
    QCOMPARE(values[190], -7);
    QCOMPARE(values[191], 2147483647);

    QCOMPARE(control(SIM_MOVE_LEVELS, number32(1)).error, 0u);
    ask(SIM_CODE_READ_LEVELS, {}, 768);
    const Bytes first = output;
    ask(SIM_CODE_READ_LEVELS, {}, 768);
    QCOMPARE(output, first);
    std::int32_t loudest = 0;
    std::int32_t quietest = INT32_MAX;
    for (now = 0; now < 5000; now += 10) {
        ask(SIM_CODE_READ_LEVELS, {}, 768);
        std::int32_t level = 0;
        std::memcpy(&level, output.data() + 4 * 191, 4);
        QVERIFY(level >= 0);
        loudest = std::max(loudest, level);
        quietest = std::min(quietest, level);
    }
    QVERIFY(loudest > 0x78000000);
    QVERIFY(quietest < 0x00200000);

    levels = {191, 2, {}};
    QCOMPARE(control(SIM_SET_LEVELS, toBytes(levels)).error, SIM_ERROR_INVALID_PARAMETER);
    levels = {0xFFFFFFFF, 2, {}};
    QCOMPARE(control(SIM_SET_LEVELS, toBytes(levels)).error, SIM_ERROR_INVALID_PARAMETER);
}

void SimulatorModelTest::faultsCountDown()
{
    addFault(SIM_FAULT_FAIL, SIM_CODE_SET_SAMPLE_RATE, 2, 31);
    addFault(SIM_FAULT_FAIL, SIM_CODE_SET_SAMPLE_RATE, 1, 121);
    QCOMPARE(error(SIM_CODE_SET_BUFFER_SIZE, number32(64)), 0u);
    QCOMPARE(error(SIM_CODE_SET_SAMPLE_RATE, number32(48000)), 31u);
    QCOMPARE(error(SIM_CODE_SET_SAMPLE_RATE, number32(48000)), 31u);
    QCOMPARE(error(SIM_CODE_SET_SAMPLE_RATE, number32(48000)), 121u);
    QCOMPARE(model->state.engine.sampleRate, 44100u);
    QCOMPARE(error(SIM_CODE_SET_SAMPLE_RATE, number32(48000)), 0u);
    QCOMPARE(model->state.engine.sampleRate, 48000u);
    QCOMPARE(model->state.refusals, 3u);
    QCOMPARE(model->state.requests, 5u);
}

void SimulatorModelTest::faultSkipsFirst()
{
    addFault(SIM_FAULT_FAIL, SIM_CODE_STOP_AUDIO, 1, 5, 2);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
    QCOMPARE(error(SIM_CODE_START_AUDIO), 0u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 5u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
}

void SimulatorModelTest::endlessFaultIsTakenBack()
{
    addFault(SIM_FAULT_FAIL, SIM_CODE_STOP_AUDIO, SIM_FOREVER, 5);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(error(SIM_CODE_STOP_AUDIO), 5u);
    addFault(SIM_FAULT_FAIL, SIM_CODE_START_AUDIO, 0, 0);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 5u);
    addFault(SIM_FAULT_FAIL, SIM_CODE_STOP_AUDIO, 0, 0);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
}

void SimulatorModelTest::faultForAnyCode()
{
    addFault(SIM_FAULT_FAIL, 0, 2, 21);
    QCOMPARE(error(SIM_CODE_READ_PRODUCT_ID, {}, 4), 21u);
    QCOMPARE(error(0x12345678), 21u);
    QCOMPARE(error(0x12345678), SIM_ERROR_INVALID_FUNCTION);
}

void SimulatorModelTest::delaysAndShortAnswers()
{
    addFault(SIM_FAULT_DELAY, SIM_CODE_READ_PRODUCT_ID, 1, 250);
    addFault(SIM_FAULT_SHORT, SIM_CODE_READ_PRODUCT_ID, 2, 1);
    SimAnswer answer = ask(SIM_CODE_READ_PRODUCT_ID, {}, 4);
    QCOMPARE(answer.delayMs, 250u);
    QCOMPARE(answer.returned, 1u);
    answer = ask(SIM_CODE_READ_PRODUCT_ID, {}, 4);
    QCOMPARE(answer.delayMs, 0u);
    QCOMPARE(answer.returned, 1u);
    QCOMPARE(ask(SIM_CODE_READ_PRODUCT_ID, {}, 4).returned, 4u);
}

void SimulatorModelTest::badFaultsAreRefused()
{
    const auto result = [this](std::uint32_t kind, std::uint32_t value) {
        return control(SIM_ADD_FAULT, toBytes(SimFault{kind, 1, 1, 0, value})).error;
    };
    QCOMPARE(result(0, 5), SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(result(4, 5), SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(result(SIM_FAULT_FAIL, 0), SIM_ERROR_INVALID_PARAMETER);
    for (unsigned i = 0; i < SIM_FAULTS; ++i)
        QCOMPARE(result(SIM_FAULT_FAIL, 5), 0u);
    QCOMPARE(result(SIM_FAULT_FAIL, 5), SIM_ERROR_NO_SYSTEM_RESOURCES);
    QCOMPARE(control(SIM_CLEAR_FAULTS).error, 0u);
    QCOMPARE(result(SIM_FAULT_FAIL, 5), 0u);
}

void SimulatorModelTest::handlesAreNumberedAndCounted()
{
    const SimHandle second = simOpen(model.get());
    const SimHandle third = simOpen(model.get());
    simClose(model.get(), second);
    QCOMPARE(model->state.openHandles, 2u);
    QCOMPARE(model->state.openedHandles, 3u);
    handle = third;
    read(SIM_CODE_READ_PRODUCT_ID);
    QCOMPARE(trace().back().handle, 3u);

    QCOMPARE(control(SIM_RESET).error, 0u);
    QCOMPARE(model->state.openHandles, 0u);
    QCOMPARE(error(SIM_CODE_READ_PRODUCT_ID, {}, 4), SIM_ERROR_DEVICE_NOT_CONNECTED);
    QCOMPARE(trace().back().handle, 0u);
    // A handle from before the reset is not counted when it closes at last.
    simClose(model.get(), third);
    QCOMPARE(model->state.openHandles, 0u);
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{1, 0})).error, 0u);
    handle = simOpen(model.get());
    read(SIM_CODE_READ_PRODUCT_ID);
    QCOMPARE(trace().back().handle, 1u);
}

void SimulatorModelTest::oldHandlesStayDead()
{
    QCOMPARE(control(SIM_UNPLUG).error, 0u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), SIM_ERROR_DEVICE_NOT_CONNECTED);
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{2, 0})).error, 0u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), SIM_ERROR_DEVICE_NOT_CONNECTED);
    QCOMPARE(model->state.engineState, SIM_ENGINE_RUNNING);
    const SimHandle old = handle;
    handle = simOpen(model.get());
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
    QCOMPARE(model->state.openHandles, 2u);
    simClose(model.get(), old);
    QCOMPARE(model->state.openHandles, 1u);
}

void SimulatorModelTest::plugChecksItsBus()
{
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{1, 16})).error, SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(read(SIM_CODE_READ_PRODUCT_ID), 2u);
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{0, 15})).error, 0u);
    QCOMPARE(model->state.bus, 15u);
    handle = simOpen(model.get());
    QCOMPARE(ask(SIM_CODE_READ_PRODUCT_ID, {}, 4).error, 0u);
    QCOMPARE(toNumber(output), 0u);
}

void SimulatorModelTest::plugPowersUpButKeepsPresets()
{
    QCOMPARE(control(SIM_SET_ENGINE, toBytes(SimEngine{48000, 64, 8})).error, 0u);
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{5, 1.0}})), 0u);
    QCOMPARE(error(SIM_CODE_STOP_AUDIO), 0u);
    QCOMPARE(error(SIM_CODE_COMMAND, {1, 0x5F}), 0u);
    QCOMPARE(control(SIM_PLUG, toBytes(SimPlug{2, 0})).error, 0u);
    QCOMPARE(model->mixer[5], std::uint64_t{0});
    QCOMPARE(model->commandCount, 0u);
    QCOMPARE(model->state.phoneChip, 0u);
    QCOMPARE(model->state.engineState, SIM_ENGINE_RUNNING);
    QCOMPARE(model->state.engine.sampleRate, 48000u);
    QCOMPARE(model->state.engine.bufferSize, 64u);
    QCOMPARE(model->state.engine.usbLatency, 8u);
    QCOMPARE(control(SIM_RESET).error, 0u);
    QCOMPARE(model->state.engine.sampleRate, 44100u);
    QVERIFY(!model->state.plugged);
}

void SimulatorModelTest::traceRecordsRequests()
{
    now = 4321;
    error(SIM_CODE_SET_SAMPLE_RATE, {1, 2, 3}, 9);
    Bytes large(50, 0x11);
    error(SIM_CODE_COMMAND, large);
    read(SIM_CODE_READ_SAMPLE_RATE, 16);
    const std::vector<SimRequest> records = trace();
    QCOMPARE(records.size(), std::size_t{3});
    QCOMPARE(records[0].sequence, std::uint64_t{1});
    QCOMPARE(records[0].timeMs, 4321u);
    QCOMPARE(records[0].handle, 1u);
    QCOMPARE(records[0].code, SIM_CODE_SET_SAMPLE_RATE);
    QCOMPARE(records[0].inputLength, 3u);
    QCOMPARE(records[0].outputLength, 9u);
    QCOMPARE(records[0].error, SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(records[0].input[2], std::uint8_t{3});
    QCOMPARE(records[0].input[3], std::uint8_t{0});
    QCOMPARE(records[1].inputLength, 50u);
    QCOMPARE(records[1].input[39], std::uint8_t{0x11});
    QCOMPARE(records[2].returned, 4u);
    QCOMPARE(trace(3).size(), std::size_t{1});
    QCOMPARE(trace(4).size(), std::size_t{0});
}

void SimulatorModelTest::traceRingKeepsTheNewest()
{
    for (unsigned i = 0; i < SIM_TRACE_REQUESTS + 10; ++i)
        error(SIM_CODE_SET_SAMPLE_RATE, number32(i));
    const std::vector<SimRequest> records = trace();
    QCOMPARE(records.size(), std::size_t{SIM_TRACE_REQUESTS});
    QCOMPARE(records.front().sequence, std::uint64_t{11});
    QCOMPARE(records.front().input[0], std::uint8_t{10});
    QCOMPARE(records.back().sequence, std::uint64_t{SIM_TRACE_REQUESTS + 10});
    QCOMPARE(model->state.requests, SIM_TRACE_REQUESTS + 10);
}

void SimulatorModelTest::traceIsCleared()
{
    for (int i = 0; i < 3; ++i)
        error(SIM_CODE_STOP_AUDIO);
    QCOMPARE(control(SIM_CLEAR_TRACE, toBytes(std::uint64_t{2})).error, 0u);
    QCOMPARE(trace().size(), std::size_t{1});
    QCOMPARE(trace().front().sequence, std::uint64_t{3});
    QCOMPARE(control(SIM_CLEAR_TRACE, toBytes(UINT64_MAX)).error, 0u);
    QCOMPARE(trace().size(), std::size_t{0});
    error(SIM_CODE_STOP_AUDIO);
    QCOMPARE(trace().front().sequence, std::uint64_t{4});
}

void SimulatorModelTest::tableDifferencesAreTraced()
{
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{128, 1.0}, {8287, 0.5}})), 0u);
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{128, 1.0}, {8287, -0.0}})), 0u);
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{128, 1.0}, {8287, -0.0}})), 0u);
    const std::vector<SimRequest> records = trace();
    QCOMPARE(records[0].changedCells, 2u);
    QCOMPARE(records[1].firstCell, std::uint64_t{2});
    QCOMPARE(records[1].changedCells, 1u);
    QCOMPARE(records[2].changedCells, 0u);
    QCOMPARE(model->state.mixerWrites, 3u);
    QCOMPARE(control(SIM_READ_CELLS, toBytes(std::uint64_t{1}), 4096).error, 0u);
    SimCells head = {};
    SimCell cells[2];
    QCOMPARE(output.size(), sizeof head + sizeof cells);
    std::memcpy(&head, output.data(), sizeof head);
    std::memcpy(cells, output.data() + sizeof head, sizeof cells);
    QCOMPARE(head.first, std::uint64_t{1});
    QCOMPARE(head.count, 2u);
    QCOMPARE(cells[0].index, 8287u);
    QCOMPARE(std::uint64_t{cells[0].high} << 32 | cells[0].low, std::bit_cast<std::uint64_t>(0.5));
    QCOMPARE(cells[1].high, 0x80000000u);
}

void SimulatorModelTest::refusedTableIsNotAccepted()
{
    addFault(SIM_FAULT_FAIL, SIM_CODE_WRITE_MIXER, 1, 31);
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{1, 1.0}})), 31u);
    QCOMPARE(model->mixer[1], std::uint64_t{0});
    QCOMPARE(model->state.mixerWrites, 0u);
    QCOMPARE(error(SIM_CODE_WRITE_MIXER, mixerTable({{1, 1.0}})), 0u);
    QCOMPARE(trace()[0].changedCells, 1u);
    QCOMPARE(trace()[1].changedCells, 1u);
    QCOMPARE(model->mixer[1], std::bit_cast<std::uint64_t>(1.0));
}

void SimulatorModelTest::cellRingReportsItsOldest()
{
    // Two tables that differ everywhere, in turn, until the ring has gone round.
    Bytes tables[2] = {Bytes(SIM_MIXER_BYTES, 1), Bytes(SIM_MIXER_BYTES, 2)};
    const unsigned writes = SIM_TRACE_CELLS / SIM_MIXER_CELLS + 2;
    for (unsigned i = 0; i < writes; ++i)
        QCOMPARE(error(SIM_CODE_WRITE_MIXER, tables[i % 2]), 0u);
    const std::uint64_t total = std::uint64_t{writes} * SIM_MIXER_CELLS;
    QCOMPARE(model->cellTotal, total);
    QCOMPARE(control(SIM_READ_CELLS, toBytes(std::uint64_t{0}), 4096).error, 0u);
    SimCells head = {};
    std::memcpy(&head, output.data(), sizeof head);
    QCOMPARE(head.first, total - SIM_TRACE_CELLS);
    SimCell cell = {};
    std::memcpy(&cell, output.data() + sizeof head, sizeof cell);
    QCOMPARE(cell.index, static_cast<std::uint32_t>(head.first % SIM_MIXER_CELLS));
}

void SimulatorModelTest::controlChecksSizes()
{
    QCOMPARE(control(SIM_CONTROL(17u)).error, SIM_ERROR_INVALID_FUNCTION);
    QCOMPARE(control(SIM_CODE_STOP_AUDIO).error, SIM_ERROR_INVALID_FUNCTION);
    QCOMPARE(control(SIM_PLUG, Bytes(7)).error, SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(control(SIM_RESET, Bytes(1)).error, SIM_ERROR_INVALID_PARAMETER);
    QCOMPARE(control(SIM_READ_STATE, {}, sizeof(SimState) - 1).error,
             SIM_ERROR_INSUFFICIENT_BUFFER);
    QCOMPARE(control(SIM_READ_MIXER, {}, SIM_MIXER_BYTES - 1).error, SIM_ERROR_INSUFFICIENT_BUFFER);
    QCOMPARE(control(SIM_READ_TRACE, Bytes(8), 8).error, SIM_ERROR_INSUFFICIENT_BUFFER);
    QCOMPARE(control(SIM_READ_CELLS, Bytes(8), 8).error, SIM_ERROR_INSUFFICIENT_BUFFER);
    // Control requests leave no trace.
    QCOMPARE(trace().size(), std::size_t{0});
    QCOMPARE(model->state.requests, 0u);
}

QUORVEL_TEST_MAIN(SimulatorModelTest)
#include "simulator_model_test.moc"
