#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

/// The choices of the settings dialog: the item texts, which also stand in the INI file, and what
/// they mean.
namespace SettingsChoices {

QStringList bufferSizes();
QStringList usbLatencies();
QStringList sampleRates();
QStringList slowModes();

/// Samples; nothing for a text that is not among the choices.
std::optional<std::uint32_t> bufferSize(const QString& text);
/// Frames; 8 for a text that is not among the choices.
std::uint32_t usbLatency(const QString& text);
/// Hz; nothing for a text that is not among the choices.
std::optional<std::uint32_t> sampleRate(const QString& text);
/// Whether slow mode is on; nothing for a text that is not among the choices.
std::optional<bool> slowMode(const QString& text);

/// The highest USB latency, in frames, that a buffer of this many samples allows.
std::uint32_t latencyForBuffer(std::uint32_t samples);

} // namespace SettingsChoices
