#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// How the debug stream and the labels print things.
namespace Oracle::Text {

/// A debug line: the text, a blank, the value.
std::string line(std::string_view text, long long value);
std::string line(std::string_view text, double value);
std::string line(std::string_view text, const std::string& value); ///< as it stands
std::string lineQuoted(std::string_view text, std::string_view value);
std::string lineTruth(std::string_view text, bool value); ///< "true" or "false"

/// Six significant digits, as few as say it.
std::string gain(double value);
/// All of a double, for mixer cells.
std::string exact(double value);
/// One decimal and " dB"; silence is "-inf", the one level without a magnitude is "nan".
std::string level(std::int32_t sample);

std::string hex(std::uint32_t value);
/// Blank-separated hex; zeros at the end are told by the length only.
std::string bytes(std::span<const std::uint8_t> data);
/// A character of Latin-1 in UTF-8.
std::string latin1(std::uint8_t character);

} // namespace Oracle::Text
