#include "driver/control_codes.h"
#include "driver/driver_device.h"

#include <QDebug>

namespace {

constexpr int transferReplySize = 32;

} // namespace

bool DriverDevice::getDevicePid(std::uint32_t& pid)
{
    return read(ControlCode::readProductId, pid);
}

bool DriverDevice::readMeterData(MeterBlock& block)
{
    return control(ControlCode::readMeters, nullptr, 0, block.data(), sizeof block);
}

std::uint32_t DriverDevice::querySampleRate()
{
    std::uint32_t rate = 0;
    getSampleRate(rate);
    return rate;
}

bool DriverDevice::getSampleRate(std::uint32_t& rate)
{
    return read(ControlCode::readSampleRate, rate);
}

bool DriverDevice::getBufferSize(std::uint32_t& samples)
{
    if (!read(ControlCode::readBufferSize, samples))
        return false;
    qDebug() << "Buffer size:" << samples;
    return true;
}

bool DriverDevice::getUsbLatency(std::uint32_t& frames)
{
    return read(ControlCode::readUsbLatency, frames);
}

bool DriverDevice::readUsbStatus(UsbStatus& status)
{
    if (!isOpen())
        return false;
    const bool succeeded =
        control(ControlCode::readUsbStatus, nullptr, 0, &lastUsbStatus, sizeof lastUsbStatus);
    // Copied after a failure too, so that the caller goes on showing the last good reading.
    status = lastUsbStatus;
    return succeeded;
}

std::uint32_t DriverDevice::queryValue829()
{
    std::uint32_t value = 0;
    read(ControlCode::readValue829, value);
    return value;
}

bool DriverDevice::getValue16(std::uint16_t& value)
{
    return read(ControlCode::readValue16, value);
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
    const qsizetype known = reply.size();
    reply.resize(transferReplySize);
    if (known < transferReplySize)
        std::fill(reply.begin() + known, reply.end(), '\0');
    return control(ControlCode::requestWithReply, request.constData(),
                   static_cast<std::uint32_t>(request.size()), reply.data(), transferReplySize);
}
