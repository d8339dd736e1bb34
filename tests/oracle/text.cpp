#include "oracle/text.h"

#include <cmath>
#include <cstdio>

namespace Oracle::Text {

namespace {

template <typename... Values> std::string format(const char* pattern, Values... values)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, pattern, values...);
    return buffer;
}

} // namespace

std::string line(std::string_view text, long long value)
{
    return line(text, std::to_string(value));
}

std::string line(std::string_view text, double value)
{
    return line(text, gain(value));
}

std::string line(std::string_view text, const std::string& value)
{
    return std::string(text) + ' ' + value;
}

std::string lineQuoted(std::string_view text, std::string_view value)
{
    return line(text, '"' + std::string(value) + '"');
}

std::string lineTruth(std::string_view text, bool value)
{
    return line(text, std::string(value ? "true" : "false"));
}

std::string gain(double value)
{
    return format("%g", value);
}

std::string exact(double value)
{
    return format("%.17g", value);
}

std::string level(std::int32_t sample)
{
    if (sample == INT32_MIN)
        return "nan dB";
    if (sample == 0)
        return "-inf dB";
    return format("%.1f dB", 20.0 * std::log10(std::abs(sample) / 2147483647.0));
}

std::string hex(std::uint32_t value)
{
    return format("%08X", value);
}

std::string bytes(std::span<const std::uint8_t> data)
{
    std::string text;
    std::size_t last = data.size();
    while (last > 0 && data[last - 1] == 0)
        --last;
    for (const std::uint8_t byte : data.first(last))
        text += format("%02X ", static_cast<unsigned>(byte));
    return text + '/' + std::to_string(data.size());
}

std::string latin1(std::uint8_t character)
{
    if (character < 0x80)
        return {static_cast<char>(character)};
    return {static_cast<char>(0xC0 | character >> 6), static_cast<char>(0x80 | (character & 0x3F))};
}

} // namespace Oracle::Text
