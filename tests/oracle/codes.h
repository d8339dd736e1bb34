#pragma once

#include <cstdint>

/// The control codes and command bytes of the interfaces' driver, as its own papers give them.
namespace Oracle::Code {

constexpr std::uint32_t readSampleRate = 0xFFDC2020;
constexpr std::uint32_t setSampleRate = 0xFFDC2038;
constexpr std::uint32_t writeMixer = 0xFFDC2040;
constexpr std::uint32_t setBufferSize = 0xFFDC2044;
constexpr std::uint32_t readBufferSize = 0xFFDC2048;
constexpr std::uint32_t readLatency = 0xFFDC204C;
constexpr std::uint32_t setLatency = 0xFFDC2050;
constexpr std::uint32_t readLevels = 0xFFDC2074;
constexpr std::uint32_t stopAudio = 0xFFDC2078;
constexpr std::uint32_t initAudio = 0xFFDC207C;
constexpr std::uint32_t startAudio = 0xFFDC2080;
constexpr std::uint32_t readProductId = 0xFFDC2084;
constexpr std::uint32_t setWdmChannels = 0xFFDC2088;
constexpr std::uint32_t slowModeOn = 0xFFDC2090;
constexpr std::uint32_t slowModeOff = 0xFFDC2094;
constexpr std::uint32_t command = 0xFFDC209C;
constexpr std::uint32_t transfer = 0xFFDC20A0;
constexpr std::uint32_t readUsbStatus = 0xFFDC20C0;

/// All that the panel ever sends.
constexpr std::uint32_t all[] = {
    readSampleRate, setSampleRate, writeMixer,  setBufferSize, readBufferSize, readLatency,
    setLatency,     readLevels,    stopAudio,   initAudio,     startAudio,     readProductId,
    setWdmChannels, slowModeOn,    slowModeOff, command,       transfer,       readUsbStatus};

} // namespace Oracle::Code
