#include "driver/command_guard.h"
#include "driver/control_codes.h"
#include "driver/driver_device.h"

namespace {

constexpr std::uint8_t volumeMode = 0x02;

ControlPacket volumePacket(Opcode opcode, std::uint8_t channel, std::uint16_t value)
{
    ControlPacket packet{.opcode = opcode};
    packet.modeOrState = volumeMode;
    packet.channel = channel;
    packet.value = value;
    return packet;
}

ControlPacket switchPacket(Opcode opcode, std::uint8_t channel, std::uint8_t on)
{
    ControlPacket packet{.opcode = opcode};
    packet.modeOrState = on;
    packet.channel = channel;
    return packet;
}

} // namespace

bool DriverDevice::command(const CommandFailure& failure, const ControlPacket& packet) noexcept
{
    return guarded(failure, [&] {
        send(packet);
        return true;
    });
}

bool DriverDevice::setMicVolume(std::uint8_t channel, std::uint16_t value)
{
    return command({"Failed to set mic volume: ", "Failed to set mic volume: Unknown error"},
                   volumePacket(Opcode::setMicVolume, channel, value));
}

bool DriverDevice::setOutVolume(std::uint8_t channel, std::uint16_t value)
{
    return command({"Failed to set out volume: ", "Failed to set out volume: Unknown error"},
                   volumePacket(Opcode::setOutVolume, channel, value));
}

bool DriverDevice::switchMicInstrument(std::uint8_t channel, std::uint8_t on)
{
    return command(
        {"Failed to switch mic instruction: ", "Failed to switch mic instruction: Unknown error"},
        switchPacket(Opcode::switchMicInstrument, channel, on));
}

bool DriverDevice::setMic20dB(std::uint8_t channel, std::uint8_t on)
{
    return command({"Failed to set mic 20dB: ", "Failed to set mic 20dB: Unknown error"},
                   switchPacket(Opcode::setMic20dB, channel, on));
}

bool DriverDevice::setMic48V(std::uint8_t channel, std::uint8_t on)
{
    return command({"Failed to set mic 48V: ", "Failed to set mic 48V: Unknown error"},
                   switchPacket(Opcode::setMic48V, channel, on));
}

bool DriverDevice::setOtgOn()
{
    return command({"Failed to set OTG On: ", "Failed to set OTG On: Unknown error"},
                   {.opcode = Opcode::setOtgOn});
}

bool DriverDevice::setOtgOff()
{
    return command({"Failed to set OTG Off: ", "Failed to set OTG Off: Unknown error"},
                   {.opcode = Opcode::setOtgOff});
}

bool DriverDevice::setCloseFeedback()
{
    // The capital F of the second text is kept on purpose: log readers match it.
    return command(
        {"Failed to set close feedback: ", "Failed to set close Feedback: Unknown error"},
        {.opcode = Opcode::setCloseFeedback});
}

bool DriverDevice::setSampleRate(std::uint32_t rate)
{
    return write(ControlCode::setSampleRate, rate);
}

bool DriverDevice::setBufferSize(std::uint32_t samples)
{
    return write(ControlCode::setBufferSize, samples);
}

bool DriverDevice::setUsbLatency(std::uint32_t frames)
{
    return write(ControlCode::setUsbLatency, frames);
}

bool DriverDevice::setWdmChannelCount(std::uint32_t count)
{
    return write(ControlCode::setWdmChannelCount, count);
}

bool DriverDevice::enableUsbSlowMode()
{
    return action(ControlCode::enableUsbSlowMode);
}

bool DriverDevice::disableUsbSlowMode()
{
    return action(ControlCode::disableUsbSlowMode);
}

bool DriverDevice::stopAudio()
{
    return action(ControlCode::stopAudio);
}

bool DriverDevice::startAudio()
{
    return action(ControlCode::startAudio);
}

bool DriverDevice::initAudio()
{
    return action(ControlCode::initAudio);
}

bool DriverDevice::writeMixerTable(const MixerTable& table)
{
    return write(ControlCode::writeMixerTable, table);
}

bool DriverDevice::sendControl(const void* bytes, std::uint32_t length)
{
    return control(ControlCode::controlPacket, bytes, length, nullptr, 0);
}

bool DriverDevice::setValue16(std::uint16_t value)
{
    return write(ControlCode::writeValue16, value);
}

bool DriverDevice::setValue8(std::uint8_t value)
{
    return write(ControlCode::writeValue8, value);
}
