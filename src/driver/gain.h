#pragma once

#include <cstdint>

/// Linear gain of a level in dB: 0.0 at -80 dB and below, 1.9952623149688795 above +6 dB.
double dbToGain(double dB);

/// Level in dB full scale of a sample value: 0.0 for 2147483647, minus infinity for 0 and
/// not-a-number for -2147483648, which has no positive counterpart.
double sampleToDb(std::int32_t level);
