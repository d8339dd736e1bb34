#pragma once

#include <array>
#include <cstddef>

/// The mixer's linear gains (0.0 = silent, 1.0 = unity) as the driver takes them: 256 routing
/// rows of 32 source columns, then one gain for each of 96 outputs.
using MixerTable = std::array<double, 8288>;

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
