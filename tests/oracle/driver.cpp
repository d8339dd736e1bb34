#include "oracle/driver.h"

#include "oracle/codes.h"
#include "oracle/text.h"
#include "oracle/trace.h"

#include <algorithm>
#include <cmath>

namespace Oracle::Driver {

namespace {

/// Sends a request whose event is `told`; nothing at all when the device is closed.
bool send(World& world, const Device& device, std::uint32_t code,
          const std::vector<std::uint8_t>& input, std::size_t outputSize, std::string told,
          Answer& answer)
{
    if (!device.isOpen())
        return false;
    world.interface.reach(world.time.now());
    answer = world.interface.ask({device.handle, code, input, outputSize});
    world.events.push_back(std::move(told));
    world.time.pass(answer.delayMs);
    return answer.error == 0;
}

bool send(World& world, const Device& device, std::uint32_t code,
          const std::vector<std::uint8_t>& input, std::size_t outputSize, Answer& answer)
{
    return send(world, device, code, input, outputSize,
                describe({device.handle, code, input, outputSize}), answer);
}

bool throws(World& world, const Answer& answer, const std::string& action)
{
    if (answer.throws)
        world.events.push_back("error: Failed to " + action + ": no paper");
    return answer.throws;
}

bool command(World& world, const Device& device, const std::string& action,
             std::vector<std::uint8_t> leading)
{
    leading.insert(leading.begin(), 0x01);
    leading.resize(37);
    Answer answer;
    send(world, device, Code::command, leading, 0, answer);
    return !throws(world, answer, action);
}

bool volumeCommand(World& world, const Device& device, const std::string& action,
                   std::uint8_t opcode, int channel, int value)
{
    return command(world, device, action,
                   {opcode, 0, 2, static_cast<std::uint8_t>(channel),
                    static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}

std::uint32_t load32(const std::vector<std::uint8_t>& bytes, std::size_t first)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && first + i < bytes.size(); ++i)
        value |= std::uint32_t{bytes[first + i]} << (8 * i);
    return value;
}

} // namespace

bool open(World& world, Device& device)
{
    for (int bus = 0; bus < Interface::buses; ++bus) {
        const std::string path = "Open device \\\\.\\QuorvelAudioBus" + std::to_string(bus);
        world.interface.reach(world.time.now());
        const std::uint32_t error = world.interface.open(bus);
        if (error == 0) {
            device.handle = world.interface.lastHandle();
            world.events.push_back("out: " + path + " success!");
            return true;
        }
        world.events.push_back("out: " + path + " failed, error: " + std::to_string(error));
    }
    return false;
}

bool setMicVolume(World& world, const Device& device, int channel, int value)
{
    return volumeCommand(world, device, "set mic volume", 0x07, channel, value);
}

bool setOutVolume(World& world, const Device& device, int channel, int value)
{
    return volumeCommand(world, device, "set out volume", 0x03, channel, value);
}

bool set(World& world, const Device& device, const Switch& what, int channel, bool on)
{
    return command(world, device, std::string(what.verb) + ' ' + what.name,
                   {what.opcode, 0, static_cast<std::uint8_t>(on ? 1 : 0),
                    static_cast<std::uint8_t>(channel)});
}

bool setOtgOn(World& world, const Device& device)
{
    return command(world, device, "set OTG On", {0x5F});
}

bool setOtgOff(World& world, const Device& device)
{
    return command(world, device, "set OTG Off", {0x5E});
}

bool upgradeFirmware(World& world, const Device& device)
{
    return command(world, device, "upgrade firmware", {0x60});
}

bool act(World& world, const Device& device, std::uint32_t code)
{
    Answer ignored;
    return send(world, device, code, {}, 0, ignored);
}

bool set(World& world, const Device& device, std::uint32_t code, std::uint32_t value)
{
    std::vector<std::uint8_t> input;
    for (int shift = 0; shift < 32; shift += 8)
        input.push_back(static_cast<std::uint8_t>(value >> shift));
    Answer ignored;
    return send(world, device, code, input, 0, ignored);
}

bool read(World& world, const Device& device, std::uint32_t code, std::uint32_t& value)
{
    Answer answer;
    if (!send(world, device, code, {}, 4, answer))
        return false;
    value = load32(answer.bytes, 0);
    return true;
}

bool readBufferSize(World& world, const Device& device, std::uint32_t& samples)
{
    if (!read(world, device, Code::readBufferSize, samples))
        return false;
    world.debug(Text::line("Buffer size:", static_cast<long long>(samples)));
    return true;
}

bool readUsbStatus(World& world, Device& device)
{
    Answer answer;
    if (!send(world, device, Code::readUsbStatus, {}, 7, answer))
        return false;
    // The block is filled in place: a short answer leaves the rest as it was last.
    for (std::size_t i = 3; i < answer.bytes.size(); ++i) {
        const unsigned shift = 8 * (static_cast<unsigned>(i) - 3);
        device.usbErrors &= ~(0xFFu << shift);
        device.usbErrors |= std::uint32_t{answer.bytes[i]} << shift;
    }
    return true;
}

bool readLevels(World& world, const Device& device, std::array<std::int32_t, 4>& levels)
{
    Answer answer;
    if (!send(world, device, Code::readLevels, {}, 768, answer))
        return false;
    // In place as well.
    for (std::size_t i = 0; i < 4 * levels.size() && i < answer.bytes.size(); ++i) {
        const unsigned shift = 8 * (static_cast<unsigned>(i) % 4);
        auto level = static_cast<std::uint32_t>(levels[i / 4]);
        level = (level & ~(0xFFu << shift)) | std::uint32_t{answer.bytes[i]} << shift;
        levels[i / 4] = static_cast<std::int32_t>(level);
    }
    return true;
}

bool readFirmware(World& world, const Device& device, std::array<std::uint8_t, 10>& version)
{
    std::vector<std::uint8_t> request(37);
    request[0] = 0x01;
    request[1] = 0x65;
    Answer answer;
    const bool answered = send(world, device, Code::transfer, request, 32, answer);
    if (throws(world, answer, "get firmware version"))
        return false;
    if (!answered) {
        world.events.emplace_back("error: Failed to read firmware version from device.");
        return false;
    }
    answer.bytes.resize(32);
    std::copy_n(answer.bytes.begin(), version.size(), version.begin());
    return true;
}

bool writeMixer(World& world, const Device& device, const std::vector<double>& table)
{
    Answer ignored;
    const std::vector<std::uint8_t> sizeOnly(Interface::mixerBytes);
    const std::string told = describeTable(device.handle, world.sentMixer, table);
    if (!device.isOpen())
        return false;
    world.sentMixer = table;
    return send(world, device, Code::writeMixer, sizeOnly, 0, told, ignored);
}

double gain(int decibels)
{
    if (decibels <= -80)
        return 0.0;
    return decibels > 6 ? 1.9952623149688795 : std::pow(10.0, decibels / 20.0);
}

} // namespace Oracle::Driver
