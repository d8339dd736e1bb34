#pragma once

#include <cstdint>

/// The control codes of the kernel driver, as DeviceIoControl takes them.
namespace ControlCode {

inline constexpr std::uint32_t deviceType = 0xFFDC;

/// The Windows CTL_CODE rule for our device type, any access and buffered transfer.
constexpr std::uint32_t fromFunction(std::uint32_t function)
{
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
