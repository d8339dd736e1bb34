#include "shell/kept_connections.h"

#include "driver/driver_device.h"

#include <utility>

namespace {

constexpr std::size_t mostConnections = 256;

} // namespace

KeptConnections::KeptConnections() = default;

KeptConnections::~KeptConnections() = default;

void KeptConnections::keep(std::unique_ptr<DriverDevice> device)
{
    if (!device->isOpen())
        return;
    if (devices.size() == mostConnections)
        devices.pop_front();
    devices.push_back(std::move(device));
}
