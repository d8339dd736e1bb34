#include "simulator/client/simulator_control.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::uint32_t mixerCode = 0xFFDC2040;
constexpr std::size_t answerBytes = 131072;
/// For an answer that is shorter than what it should hold.
constexpr std::uint32_t notEnough = SIM_ERROR_INSUFFICIENT_BUFFER;

SimulatedRequest fromRecord(const SimRequest& record)
{
    SimulatedRequest request;
    request.sequence = record.sequence;
    request.timeMs = record.timeMs;
    request.handle = record.handle;
    request.code = record.code;
    request.inputLength = record.inputLength;
    request.outputLength = record.outputLength;
    request.returned = record.returned;
    request.error = record.error;
    request.input.assign(record.input,
                         record.input + std::min(record.inputLength, SIM_TRACED_INPUT));
    request.mixerTable = record.code == mixerCode && record.inputLength == SIM_MIXER_BYTES;
    return request;
}

/// Takes the record's cells out of `cells`, whose first has the number `first`.
void addCells(SimulatedRequest& request, const SimRequest& record,
              const std::vector<SimCell>& cells, std::uint64_t first)
{
    for (std::uint64_t number = record.firstCell; number < record.firstCell + record.changedCells;
         ++number) {
        if (number < first || number - first >= cells.size()) {
            request.cellsLost = true;
            continue;
        }
        const SimCell& cell = cells[static_cast<std::size_t>(number - first)];
        const std::uint64_t bits = std::uint64_t{cell.high} << 32 | cell.low;
        request.cells.push_back({cell.index, std::bit_cast<double>(bits)});
    }
}

} // namespace

SimulatorReadError::SimulatorReadError(std::uint32_t windowsError)
    : std::runtime_error("the simulator gave no answer (error " + std::to_string(windowsError) +
                         ")")
{
}

SimulatorControl::SimulatorControl() = default;

SimulatorControl::~SimulatorControl()
{
    close();
}

bool SimulatorControl::open()
{
    close();
    door = CreateFileW(LR"(\\.\QuorvelSimulator)", GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (!isOpen())
        error = GetLastError();
    return isOpen();
}

void SimulatorControl::close()
{
    if (isOpen())
        CloseHandle(door);
    door = INVALID_HANDLE_VALUE;
}

bool SimulatorControl::isOpen() const
{
    return door != INVALID_HANDLE_VALUE;
}

bool SimulatorControl::reset()
{
    return send(SIM_RESET);
}

bool SimulatorControl::plug(std::uint32_t productId, std::uint32_t bus)
{
    const SimPlug request = {productId, bus};
    return send(SIM_PLUG, &request, sizeof request);
}

bool SimulatorControl::unplug()
{
    return send(SIM_UNPLUG);
}

bool SimulatorControl::fail(std::uint32_t code, std::uint32_t count, std::uint32_t errorNumber,
                            std::uint32_t skip)
{
    return addFault({SIM_FAULT_FAIL, code, count, skip, errorNumber});
}

bool SimulatorControl::delay(std::uint32_t code, std::uint32_t count, std::uint32_t milliseconds)
{
    return addFault({SIM_FAULT_DELAY, code, count, 0, milliseconds});
}

bool SimulatorControl::answerShort(std::uint32_t code, std::uint32_t count, std::uint32_t bytes)
{
    return addFault({SIM_FAULT_SHORT, code, count, 0, bytes});
}

bool SimulatorControl::addFault(const SimFault& fault)
{
    return send(SIM_ADD_FAULT, &fault, sizeof fault);
}

bool SimulatorControl::clearFaults()
{
    return send(SIM_CLEAR_FAULTS);
}

bool SimulatorControl::setLevel(std::uint32_t slot, std::int32_t value)
{
    SimLevels request = {slot, 1, {value}};
    return send(SIM_SET_LEVELS, &request, sizeof request);
}

bool SimulatorControl::setLevels(const std::vector<std::int32_t>& values)
{
    SimLevels request = {0, static_cast<std::uint32_t>(values.size()), {}};
    std::copy_n(values.begin(), std::min<std::size_t>(values.size(), SIM_LEVELS), request.levels);
    return send(SIM_SET_LEVELS, &request, sizeof request);
}

bool SimulatorControl::moveLevels(bool moving)
{
    const std::uint32_t request = moving ? 1 : 0;
    return send(SIM_MOVE_LEVELS, &request, sizeof request);
}

bool SimulatorControl::setErrorCount(std::uint32_t count)
{
    return setUsbStatus(0, 0, count);
}

bool SimulatorControl::setUsbStatus(std::uint16_t statusWord, std::uint8_t statusByte,
                                    std::uint32_t errorCount)
{
    const SimUsbStatus request = {errorCount, statusWord, statusByte, 0};
    return send(SIM_SET_USB_STATUS, &request, sizeof request);
}

bool SimulatorControl::setFirmware(const std::array<std::uint8_t, SIM_FIRMWARE_BYTES>& version)
{
    return send(SIM_SET_FIRMWARE, version.data(), version.size());
}

bool SimulatorControl::setEngine(std::uint32_t sampleRate, std::uint32_t bufferSize,
                                 std::uint32_t usbLatency)
{
    const SimEngine request = {sampleRate, bufferSize, usbLatency};
    return send(SIM_SET_ENGINE, &request, sizeof request);
}

std::vector<SimulatedRequest> SimulatorControl::trace()
{
    const std::vector<SimRequest> records = readRecords();
    if (records.empty())
        return {};
    std::uint64_t first = records.front().firstCell;
    const std::uint64_t end = records.back().firstCell + records.back().changedCells;
    const std::vector<SimCell> cells = readCells(first, end);
    std::vector<SimulatedRequest> result;
    result.reserve(records.size());
    for (const SimRequest& record : records) {
        result.push_back(fromRecord(record));
        addCells(result.back(), record, cells, first);
    }
    return result;
}

bool SimulatorControl::clearTrace()
{
    const std::uint64_t everything = UINT64_MAX;
    return send(SIM_CLEAR_TRACE, &everything, sizeof everything);
}

std::vector<SimulatedRequest> SimulatorControl::takeTrace()
{
    std::vector<SimulatedRequest> result = trace();
    if (!result.empty() &&
        !send(SIM_CLEAR_TRACE, &result.back().sequence, sizeof result.back().sequence))
        throw SimulatorReadError(error);
    return result;
}

SimulatedState SimulatorControl::state()
{
    SimulatedState result = {};
    std::memcpy(&result, read(SIM_READ_STATE, sizeof result).data(), sizeof result);
    return result;
}

std::vector<double> SimulatorControl::mixerTable()
{
    std::vector<double> result(SIM_MIXER_CELLS);
    std::memcpy(result.data(), read(SIM_READ_MIXER, SIM_MIXER_BYTES).data(), SIM_MIXER_BYTES);
    return result;
}

std::vector<SimulatedCommand> SimulatorControl::commands()
{
    const std::vector<std::uint8_t> answer = read(SIM_READ_COMMANDS, 0);
    std::vector<SimulatedCommand> result(answer.size() / sizeof(SimulatedCommand));
    if (!result.empty())
        std::memcpy(result.data(), answer.data(), result.size() * sizeof result.front());
    return result;
}

std::uint32_t SimulatorControl::lastError() const
{
    return error;
}

std::vector<SimRequest> SimulatorControl::readRecords()
{
    std::vector<SimRequest> records;
    SimTrace head = {};
    do {
        const std::uint64_t from = records.empty() ? 0 : records.back().sequence + 1;
        head = readNumbered<SimTrace>(SIM_READ_TRACE, from, records);
    } while (head.count > 0);
    return records;
}

std::vector<SimCell> SimulatorControl::readCells(std::uint64_t& first, std::uint64_t end)
{
    std::vector<SimCell> cells;
    std::uint64_t next = first;
    while (next < end) {
        std::vector<SimCell> more;
        const SimCells head = readNumbered<SimCells>(SIM_READ_CELLS, next, more);
        if (head.count == 0)
            return cells;
        // A gap means that the older cells are gone: start over behind it.
        if (cells.empty() || head.first != next) {
            cells.clear();
            first = head.first;
        }
        cells.insert(cells.end(), more.begin(), more.end());
        next = head.first + head.count;
    }
    return cells;
}

std::vector<std::uint8_t> SimulatorControl::read(std::uint32_t code, std::size_t least,
                                                 const std::uint64_t* from)
{
    std::vector<std::uint8_t> answer(answerBytes);
    std::size_t length = 0;
    if (!receive(code, from, from == nullptr ? 0 : sizeof *from, answer.data(), answer.size(),
                 length))
        throw SimulatorReadError(error);
    if (length < least) {
        error = notEnough;
        throw SimulatorReadError(error);
    }
    answer.resize(length);
    return answer;
}

template <class Head, class Record>
Head SimulatorControl::readNumbered(std::uint32_t code, std::uint64_t from,
                                    std::vector<Record>& records)
{
    Head head = {};
    const std::vector<std::uint8_t> answer = read(code, sizeof head, &from);
    std::memcpy(&head, answer.data(), sizeof head);
    if ((answer.size() - sizeof head) / sizeof(Record) < head.count) {
        error = notEnough;
        throw SimulatorReadError(error);
    }
    const std::size_t old = records.size();
    records.resize(old + head.count);
    if (head.count > 0)
        std::memcpy(&records[old], answer.data() + sizeof head, head.count * sizeof(Record));
    return head;
}

bool SimulatorControl::send(std::uint32_t code, const void* input, std::size_t length)
{
    std::size_t returned = 0;
    return receive(code, input, length, nullptr, 0, returned);
}

bool SimulatorControl::receive(std::uint32_t code, const void* input, std::size_t inputLength,
                               void* output, std::size_t capacity, std::size_t& length)
{
    DWORD returned = 0;
    // The call takes its input as a pointer to changeable memory but only reads it.
    const BOOL succeeded =
        DeviceIoControl(door, code, const_cast<void*>(input), static_cast<DWORD>(inputLength),
                        output, static_cast<DWORD>(capacity), &returned, nullptr);
    if (succeeded == FALSE) {
        error = GetLastError();
        length = 0;
        return false;
    }
    length = returned;
    return true;
}
