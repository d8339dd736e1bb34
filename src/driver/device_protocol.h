#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// What crosses the door to the kernel driver: control codes and records, all little-endian.

/// The control codes, as DeviceIoControl takes them.
namespace ControlCode {

/// The Windows CTL_CODE rule for our device type, any access and buffered transfer.
constexpr std::uint32_t fromFunction(std::uint32_t function)
{
    constexpr std::uint32_t deviceType = 0xFFDC;
    constexpr std::uint32_t anyAccess = 0;
    constexpr std::uint32_t methodBuffered = 0;
    return (deviceType << 16U) | (anyAccess << 14U) | (function << 2U) | methodBuffered;
}

inline constexpr std::uint32_t readSampleRate = fromFunction(0x808);
inline constexpr std::uint32_t setSampleRate = fromFunction(0x80E);
inline constexpr std::uint32_t writeMixerTable = fromFunction(0x810);
inline constexpr std::uint32_t setBufferSize = fromFunction(0x811);
inline constexpr std::uint32_t readBufferSize = fromFunction(0x812);
inline constexpr std::uint32_t readUsbLatency = fromFunction(0x813);
inline constexpr std::uint32_t setUsbLatency = fromFunction(0x814);
inline constexpr std::uint32_t readMeters = fromFunction(0x81D);
inline constexpr std::uint32_t stopAudio = fromFunction(0x81E);
inline constexpr std::uint32_t initAudio = fromFunction(0x81F);
inline constexpr std::uint32_t startAudio = fromFunction(0x820);
inline constexpr std::uint32_t readProductId = fromFunction(0x821);
inline constexpr std::uint32_t setWdmChannelCount = fromFunction(0x822);
inline constexpr std::uint32_t enableUsbSlowMode = fromFunction(0x824);
inline constexpr std::uint32_t disableUsbSlowMode = fromFunction(0x825);
inline constexpr std::uint32_t controlPacket = fromFunction(0x827);
inline constexpr std::uint32_t requestWithReply = fromFunction(0x828);
inline constexpr std::uint32_t readValue829 = fromFunction(0x829);
inline constexpr std::uint32_t writeValue16 = fromFunction(0x82B);
inline constexpr std::uint32_t readValue16 = fromFunction(0x82C);
inline constexpr std::uint32_t writeValue8 = fromFunction(0x82D);
inline constexpr std::uint32_t readFlag8 = fromFunction(0x82E);
inline constexpr std::uint32_t readUsbStatus = fromFunction(0x830);

} // namespace ControlCode

/// What a ControlPacket asks of the device (its byte 1).
enum class Opcode : std::uint8_t {
    setOutVolume = 0x03,
    setMicVolume = 0x07,
    setMic20dB = 0x5A,
    setMic48V = 0x5B,
    setOtgOff = 0x5E,
    setOtgOn = 0x5F,
    upgradeFirmware = 0x60,
    switchMicInstrument = 0x64,
    readFirmwareVersion = 0x65,
    setCloseFeedback = 0x68,
};

#pragma pack(push, 1)

/// The 37-byte command record of the device. All reserved bytes stay zero.
struct ControlPacket
{
    std::uint8_t marker = 0x01;
    Opcode opcode;
    std::uint8_t reserved = 0;
    std::uint8_t modeOrState = 0; ///< 0x02 for volumes; 0 or 1 for switches
    std::uint8_t channel = 0;
    std::uint16_t value = 0; ///< volumes only
    std::array<std::uint8_t, 30> reservedTail{};
};

/// The driver's 7-byte USB status block.
struct UsbStatus
{
    std::uint16_t statusWord = 0;
    std::uint8_t statusByte = 0;
    std::uint32_t usbErrorCount = 0; ///< USB errors since the driver was loaded
};

#pragma pack(pop)

/// The driver's level meters: one signed sample value for each channel slot, full scale
/// 2147483647.
using MeterBlock = std::array<std::int32_t, 192>;

/// The mixer's linear gains (0.0 = silent, 1.0 = unity) as the driver takes them: 256 routing
/// rows of 32 source columns, then one gain for each of 96 outputs.
using MixerTable = std::array<double, 8288>;

static_assert(sizeof(ControlPacket) == 37);
static_assert(sizeof(UsbStatus) == 7);
static_assert(sizeof(MeterBlock) == 768);
static_assert(sizeof(MixerTable) == 66304);

namespace MixerCell {

inline constexpr std::size_t columns = 32;
inline constexpr std::size_t outputRow = 64; ///< first row that feeds an output
inline constexpr std::size_t outputGains = 8192;
inline constexpr std::size_t outputCount = 96;

constexpr std::size_t at(std::size_t row, std::size_t column)
{
    return columns * row + column;
}

/// The route from a source to an output.
constexpr std::size_t route(std::size_t source, std::size_t output)
{
    return at(outputRow + output, source);
}

/// The gain of an output.
constexpr std::size_t output(std::size_t number)
{
    return outputGains + number;
}

} // namespace MixerCell
