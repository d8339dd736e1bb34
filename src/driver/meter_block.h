#pragma once

#include <array>
#include <cstdint>

/// The driver's level meters: one signed sample value for each channel slot, full scale
/// 2147483647.
using MeterBlock = std::array<std::int32_t, 192>;

static_assert(sizeof(MeterBlock) == 768);
