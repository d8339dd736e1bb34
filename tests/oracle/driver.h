#pragma once

#include "oracle/world.h"

/// What one user of the driver sends and prints. Plain operations fail when the device is closed
/// or refuses; commands are sent and nobody asks what became of them: they fail by an exception.
namespace Oracle::Driver {

/// Tries the sixteen paths in order.
bool open(World& world, Device& device);

/// A command that switches something, as the driver's own papers name and number it.
struct Switch
{
    std::uint8_t opcode;
    const char* name; ///< "mic 48V"
    const char* verb = "set";
};
constexpr Switch instrument{0x64, "mic instruction", "switch"};
constexpr Switch pad{0x5A, "mic 20dB"};
constexpr Switch phantom{0x5B, "mic 48V"};

bool setMicVolume(World& world, const Device& device, int channel, int value);
bool setOutVolume(World& world, const Device& device, int channel, int value);
bool set(World& world, const Device& device, const Switch& what, int channel, bool on);
bool setOtgOn(World& world, const Device& device);
bool setOtgOff(World& world, const Device& device);
bool upgradeFirmware(World& world, const Device& device);

/// A plain operation without input.
bool act(World& world, const Device& device, std::uint32_t code);
/// A plain setter of a 32-bit number.
bool set(World& world, const Device& device, std::uint32_t code, std::uint32_t value);
/// A plain read of a 32-bit number; `value` stays after a failure.
bool read(World& world, const Device& device, std::uint32_t code, std::uint32_t& value);
/// Reads the buffer size and prints it.
bool readBufferSize(World& world, const Device& device, std::uint32_t& samples);
bool readUsbStatus(World& world, Device& device);
bool readLevels(World& world, const Device& device, std::array<std::int32_t, 4>& levels);
bool readFirmware(World& world, const Device& device, std::array<std::uint8_t, 10>& version);
bool writeMixer(World& world, const Device& device, const std::vector<double>& table);

/// Linear gain: silence at -80 dB and below, +6 dB at the most.
double gain(int decibels);

} // namespace Oracle::Driver
