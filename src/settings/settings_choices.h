#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <span>

/// The choices of the settings dialog: a table for each of its lists.
namespace SettingsChoices {

/// An item: its text, which also stands in the INI file, and what it means to the driver.
struct Choice
{
    const char* text;
    std::uint32_t value;
};

/// Samples.
inline constexpr Choice bufferSizes[]{{"48", 48},   {"64", 64},   {"96", 96},   {"128", 128},
                                      {"192", 192}, {"256", 256}, {"512", 512}, {"1024", 1024}};
/// Frames.
inline constexpr Choice usbLatencies[]{{"8", 8}, {"16", 16}, {"24", 24}, {"32", 32}};
/// Hz.
inline constexpr Choice sampleRates[]{{"44100", 44100}, {"48000", 48000}};
/// Whether slow mode is on.
inline constexpr Choice slowModes[]{{"Disabled", 0}, {"Enabled", 1}};

/// What a text means; nothing for one that is not among the choices.
std::optional<std::uint32_t> valueOf(const QString& text, std::span<const Choice> choices);

/// The highest USB latency, in frames, that a buffer of this many samples allows.
std::uint32_t latencyForBuffer(std::uint32_t samples);

} // namespace SettingsChoices
