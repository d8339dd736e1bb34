#include "driver/gain.h"

#include <cmath>

namespace {

constexpr double silenceDb = -80.0;
constexpr double ceilingDb = 6.0;
constexpr double ceilingGain = 1.9952623149688795;
constexpr double fullScale = 2147483647.0;

/// The magnitude in 32-bit two's complement: -2147483648 stays negative.
std::int32_t magnitude(std::int32_t level)
{
    if (level >= 0)
        return level;
    return static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(level));
}

} // namespace

double dbToGain(double dB)
{
    if (dB < silenceDb)
        return 0.0;
    if (dB > ceilingDb)
        return ceilingGain;
    if (dB == silenceDb)
        return 0.0;
    return std::pow(10.0, dB / 20.0);
}

double sampleToDb(std::int32_t level)
{
    return 20.0 * std::log10(static_cast<double>(magnitude(level)) / fullScale);
}
