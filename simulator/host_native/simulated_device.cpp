#include "simulator/host_native/simulated_device.h"

SimulatedDevice::SimulatedDevice()
    : data(std::make_unique<SimModel>())
    , start(std::chrono::steady_clock::now())
{
    simInitialise(data.get());
}

std::uint32_t SimulatedDevice::now() const
{
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

std::uint32_t SimulatedDevice::control(std::uint32_t code, const void* input, std::uint32_t length)
{
    const SimCall call = {now(), code, static_cast<const std::uint8_t*>(input), length, nullptr, 0};
    return simControl(data.get(), &call).error;
}
