#include "driver/driver_device.h"

#include <QDebug>

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int pathCount = 16;
constexpr std::uint8_t volumeMode = 0x02;
constexpr std::uint32_t replySize = 32;
constexpr std::size_t versionSize = 10;

ControlPacket volumePacket(Opcode opcode, std::uint8_t channel, std::uint16_t value)
{
    return {.opcode = opcode, .modeOrState = volumeMode, .channel = channel, .value = value};
}

ControlPacket switchPacket(Opcode opcode, std::uint8_t channel, std::uint8_t on)
{
    return {.opcode = opcode, .modeOrState = on, .channel = channel};
}

/// What failed, for a line on the standard error stream.
struct Action
{
    std::string_view name;
    std::string_view nameWhenUnknown = name; ///< for an exception that says nothing of itself
};

/// Runs a command and returns its result; an exception is reported and gives false.
template <typename Command> bool guarded(const Action& action, Command command) noexcept
{
    try {
        return command();
    } catch (const std::exception& error) {
        std::cerr << "Failed to " << action.name << ": " << error.what() << std::endl;
    } catch (...) {
        std::cerr << "Failed to " << action.nameWhenUnknown << ": Unknown error" << std::endl;
    }
    return false;
}

} // namespace

bool DriverDevice::open()
{
    for (int bus = 0; bus < pathCount; ++bus) {
        const std::wstring path = LR"(\\.\QuorvelAudioBus)" + std::to_wstring(bus);
        const HANDLE opened =
            CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            handle.release();
            handle.reset(opened);
            std::wcout << L"Open device " << path << L" success!" << std::endl;
            return true;
        }
        const DWORD error = GetLastError();
        std::wcout << L"Open device " << path << L" failed, error: " << error << std::endl;
    }
    return false;
}

bool DriverDevice::control(std::uint32_t code, const void* input, std::uint32_t inputSize,
                           void* output, std::uint32_t outputSize)
{
    if (!handle.isValid())
        return false;
    DWORD returned = 0;
    // The Windows declaration takes the input without const; buffered transfer never writes it.
    return DeviceIoControl(handle.get(), code, const_cast<void*>(input), inputSize, output,
                           outputSize, &returned, nullptr) != 0;
}

bool DriverDevice::send(const ControlPacket& packet)
{
    sendControl(&packet, sizeof packet);
    return true;
}

bool DriverDevice::command(const char* action, const ControlPacket& packet) noexcept
{
    return guarded({action}, [&] { return send(packet); });
}

bool DriverDevice::setMicVolume(std::uint8_t channel, std::uint16_t value)
{
    return command("set mic volume", volumePacket(Opcode::setMicVolume, channel, value));
}

bool DriverDevice::setOutVolume(std::uint8_t channel, std::uint16_t value)
{
    return command("set out volume", volumePacket(Opcode::setOutVolume, channel, value));
}

bool DriverDevice::switchMicInstrument(std::uint8_t channel, std::uint8_t on)
{
    return command("switch mic instruction",
                   switchPacket(Opcode::switchMicInstrument, channel, on));
}

bool DriverDevice::setMic20dB(std::uint8_t channel, std::uint8_t on)
{
    return command("set mic 20dB", switchPacket(Opcode::setMic20dB, channel, on));
}

bool DriverDevice::setMic48V(std::uint8_t channel, std::uint8_t on)
{
    return command("set mic 48V", switchPacket(Opcode::setMic48V, channel, on));
}

bool DriverDevice::setOtgOn()
{
    return command("set OTG On", {.opcode = Opcode::setOtgOn});
}

bool DriverDevice::setOtgOff()
{
    return command("set OTG Off", {.opcode = Opcode::setOtgOff});
}

bool DriverDevice::setCloseFeedback()
{
    // The capital F of the second text is kept on purpose: log readers match it.
    return guarded({"set close feedback", "set close Feedback"},
                   [this] { return send({.opcode = Opcode::setCloseFeedback}); });
}

bool DriverDevice::upgradeFirmware()
{
    return handle.isValid() && command("upgrade firmware", {.opcode = Opcode::upgradeFirmware});
}

bool DriverDevice::getBufferSize(std::uint32_t& samples)
{
    if (!read(ControlCode::readBufferSize, samples))
        return false;
    qDebug() << "Buffer size:" << samples;
    return true;
}

bool DriverDevice::readUsbStatus(UsbStatus& status)
{
    if (!handle.isValid())
        return false;
    const bool succeeded =
        control(ControlCode::readUsbStatus, nullptr, 0, &lastUsbStatus, sizeof lastUsbStatus);
    // Copied after a failure too, so that the caller goes on showing the last good reading.
    status = lastUsbStatus;
    return succeeded;
}

bool DriverDevice::getFlag8(bool& flag)
{
    std::uint8_t byte = 0;
    if (!read(ControlCode::readFlag8, byte))
        return false;
    flag = byte != 0;
    return true;
}

bool DriverDevice::transfer(const QByteArray& request, QByteArray& reply)
{
    reply = reply.leftJustified(replySize, '\0', true);
    return control(ControlCode::requestWithReply, request.constData(),
                   static_cast<std::uint32_t>(request.size()), reply.data(), replySize);
}

bool DriverDevice::getFirmwareVersion(std::uint8_t* version, std::uint32_t length)
{
    return guarded({"get firmware version"}, [&] {
        const ControlPacket request{.opcode = Opcode::readFirmwareVersion};
        std::vector<std::uint8_t> reply(replySize);
        if (!control(ControlCode::requestWithReply, &request, sizeof request, reply.data(),
                     replySize)) {
            std::cerr << "Failed to read firmware version from device." << std::endl;
            return false;
        }
        // Judges the buffer and not the count that the driver returned, on purpose: a device that
        // answers fewer bytes still has a version, with zeros at its end.
        if (reply.size() < versionSize) {
            std::cerr << "Invalid firmware version response size." << std::endl;
            return false;
        }
        std::copy_n(reply.begin(), std::min<std::size_t>(length, versionSize), version);
        return true;
    });
}
