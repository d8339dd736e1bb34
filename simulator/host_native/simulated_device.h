#pragma once

#include "simulator/model/device_model.h"

#include <chrono>
#include <cstdint>
#include <memory>

/// The device model with the clock of this host.
class SimulatedDevice
{
public:
    SimulatedDevice();

    SimModel& model() { return *data; }

    /// Milliseconds since the start.
    std::uint32_t now() const;

    /// One control request of the host itself. Returns the error number, 0 for success.
    std::uint32_t control(std::uint32_t code, const void* input, std::uint32_t length);

private:
    std::unique_ptr<SimModel> data;
    std::chrono::steady_clock::time_point start;
};
