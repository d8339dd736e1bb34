#pragma once

#include "platform/win32.h"
#include "simulator/client/simulated_request.h"
#include "simulator/model/simulator_protocol.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

/// What the simulated interface is and has received; fields as in simulator_protocol.h.
using SimulatedState = SimState;

/// The last command per opcode and channel.
using SimulatedCommand = SimCommand;

/// A read that got no answer, or not the whole of it.
class SimulatorReadError : public std::runtime_error
{
public:
    explicit SimulatorReadError(std::uint32_t windowsError);
};

/// Steers the simulated interface through its control door. It works with the native host and the
/// kernel-mode host alike. Control requests never show in the trace.
///
/// What steers returns whether it succeeded; what reads throws SimulatorReadError when it failed,
/// lest zeros pass for an answer. lastError() then tells the Windows error number of a failure.
/// Not thread-safe.
class SimulatorControl
{
public:
    /// For the count of a fault: until taken back.
    static constexpr std::uint32_t always = SIM_FOREVER;
    /// For the code of a fault: any request.
    static constexpr std::uint32_t anyCode = 0;

    static constexpr std::uint32_t ka1 = 1;
    static constexpr std::uint32_t ka2 = 2;
    static constexpr std::uint32_t ks = 15;

    SimulatorControl();
    SimulatorControl(const SimulatorControl&) = delete;
    SimulatorControl& operator=(const SimulatorControl&) = delete;
    ~SimulatorControl();

    /// Opens the control door; false when no simulator runs.
    bool open();
    void close();
    bool isOpen() const;

    /// Unplugs, restores all defaults (firmware "1.0.7" and five zero bytes, 44100 Hz, 192
    /// samples, 24 frames, levels and counts 0) and forgets trace and faults. Handles are numbered
    /// from 1 again.
    bool reset();

    /// Plugs an interface with any product id in at bus 0 to 15. Handles from before stay dead.
    /// Its mixer table is all zero, its engine runs, slow mode and phone chip are off; firmware,
    /// engine values, levels and USB status are as last set.
    bool plug(std::uint32_t productId, std::uint32_t bus = 0);
    bool unplug();

    /// Refuses `count` requests with this code with a Windows error number, after letting `skip`
    /// of them pass. A count of 0 takes such faults back (also for delay and answerShort).
    bool fail(std::uint32_t code, std::uint32_t count, std::uint32_t error, std::uint32_t skip = 0);

    /// Holds the answers to `count` requests back; other handles are served meanwhile.
    bool delay(std::uint32_t code, std::uint32_t count, std::uint32_t milliseconds);

    /// Answers `count` requests with at most `bytes` bytes.
    bool answerShort(std::uint32_t code, std::uint32_t count, std::uint32_t bytes);
    bool clearFaults();

    /// Sets the level of slots 0 to 191 on the 32-bit sample scale.
    bool setLevel(std::uint32_t slot, std::int32_t value);
    bool setLevels(const std::vector<std::int32_t>& values);

    /// Lets all levels rise and fall by themselves, or stand as set.
    bool moveLevels(bool moving);

    bool setErrorCount(std::uint32_t count);
    bool setUsbStatus(std::uint16_t statusWord, std::uint8_t statusByte, std::uint32_t errorCount);
    bool setFirmware(const std::array<std::uint8_t, SIM_FIRMWARE_BYTES>& version);

    /// Hz, samples, frames.
    bool setEngine(std::uint32_t sampleRate, std::uint32_t bufferSize, std::uint32_t usbLatency);

    /// The requests since the last clearTrace(), oldest first; of more than 8192 the newest.
    std::vector<SimulatedRequest> trace();
    bool clearTrace();

    /// trace(), and exactly these requests are forgotten.
    std::vector<SimulatedRequest> takeTrace();

    SimulatedState state();

    /// The 8288 linear gains as last accepted.
    std::vector<double> mixerTable();
    std::vector<SimulatedCommand> commands();

    /// The Windows error number of the last failed function.
    std::uint32_t lastError() const;

private:
    bool send(std::uint32_t code, const void* input = nullptr, std::size_t length = 0);
    bool receive(std::uint32_t code, const void* input, std::size_t inputLength, void* output,
                 std::size_t capacity, std::size_t& length);
    bool addFault(const SimFault& fault);
    /// The answer to a read that may name the first record wanted; at least `least` bytes.
    std::vector<std::uint8_t> read(std::uint32_t code, std::size_t least,
                                   const std::uint64_t* from = nullptr);
    /// The same for an answer of a head that counts and of records, which are added to `records`.
    template <class Head, class Record>
    Head readNumbered(std::uint32_t code, std::uint64_t from, std::vector<Record>& records);
    std::vector<SimRequest> readRecords();
    std::vector<SimCell> readCells(std::uint64_t& first, std::uint64_t end);

    HANDLE door = INVALID_HANDLE_VALUE;
    std::uint32_t error = 0;
};
