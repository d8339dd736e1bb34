#pragma once

#include "driver/device_protocol.h"
#include "platform/scoped_handle.h"

#include <QByteArray>

#include <cstdint>

/// The one door to the kernel driver of the audio interface: owns a device handle and sends
/// synchronous requests. Not thread-safe; everything uses it from the GUI thread.
///
/// Two conventions of failure exist on purpose. Plain operations return false (or 0 where they
/// return the value itself) when the device is not open or the driver refuses. ControlPacket
/// commands return true even then, because the device gives no verdict on them; false means that
/// an exception was reported on the standard error stream.
class DriverDevice
{
public:
    /// Opens the first of the sixteen device paths that answers and writes one line for each path
    /// tried to the wide standard output. A handle already held is not closed: open a fresh object
    /// once.
    bool open();
    bool isOpen() const { return handle.isValid(); }
    void close() { handle.reset(nullptr); }

    // ControlPacket commands. Channels count from 1; `on` is 0 or 1; volumes are the device's own
    // 16-bit steps (the panels send two for each dB of microphone gain).
    bool setMicVolume(std::uint8_t channel, std::uint16_t value);
    bool setOutVolume(std::uint8_t channel, std::uint16_t value);
    bool switchMicInstrument(std::uint8_t channel, std::uint8_t on);
    bool setMic20dB(std::uint8_t channel, std::uint8_t on);
    bool setMic48V(std::uint8_t channel, std::uint8_t on);
    /// Switches the phone (OTG) input chip on.
    bool setOtgOn();
    bool setOtgOff();
    bool setCloseFeedback();
    /// Puts the device into firmware-upgrade mode. Unlike the other commands, false when the
    /// device is not open.
    bool upgradeFirmware();

    // Audio engine. Rates in Hz, sizes in samples, USB latency in frames.
    bool setSampleRate(std::uint32_t rate) { return write(ControlCode::setSampleRate, rate); }
    bool setBufferSize(std::uint32_t samples) { return write(ControlCode::setBufferSize, samples); }
    bool setUsbLatency(std::uint32_t frames) { return write(ControlCode::setUsbLatency, frames); }
    bool setWdmChannelCount(std::uint32_t count)
    {
        return write(ControlCode::setWdmChannelCount, count);
    }
    bool enableUsbSlowMode() { return action(ControlCode::enableUsbSlowMode); }
    bool disableUsbSlowMode() { return action(ControlCode::disableUsbSlowMode); }
    bool stopAudio() { return action(ControlCode::stopAudio); }
    bool startAudio() { return action(ControlCode::startAudio); }
    bool initAudio() { return action(ControlCode::initAudio); }
    bool writeMixerTable(const MixerTable& table)
    {
        return write(ControlCode::writeMixerTable, table);
    }

    /// Sends command bytes as they are.
    bool sendControl(const void* bytes, std::uint32_t length)
    {
        return control(ControlCode::controlPacket, bytes, length, nullptr, 0);
    }
    bool setValue16(std::uint16_t value) { return write(ControlCode::writeValue16, value); }
    bool setValue8(std::uint8_t value) { return write(ControlCode::writeValue8, value); }

    // Reads. An out-parameter is written only on success, but for readUsbStatus.
    bool getDevicePid(std::uint32_t& pid) { return read(ControlCode::readProductId, pid); }
    bool readMeterData(MeterBlock& block)
    {
        return control(ControlCode::readMeters, nullptr, 0, block.data(), sizeof block);
    }
    /// Hz; 0 when the device is not open or the driver refuses.
    std::uint32_t querySampleRate() { return query(ControlCode::readSampleRate); }
    bool getSampleRate(std::uint32_t& rate) { return read(ControlCode::readSampleRate, rate); }
    /// Samples; writes a debug line on success.
    bool getBufferSize(std::uint32_t& samples);
    /// Frames.
    bool getUsbLatency(std::uint32_t& frames) { return read(ControlCode::readUsbLatency, frames); }
    /// On an open device fills `status` even when the driver refuses: with the last good block.
    bool readUsbStatus(UsbStatus& status);
    std::uint32_t queryValue829() { return query(ControlCode::readValue829); }
    bool getValue16(std::uint16_t& value) { return read(ControlCode::readValue16, value); }
    bool getFlag8(bool& flag);
    /// Sends a raw request; the reply is resized to 32 bytes.
    bool transfer(const QByteArray& request, QByteArray& reply);
    /// Copies up to `length` of the ten version bytes, with a line on the standard error stream
    /// on failure.
    bool getFirmwareVersion(std::uint8_t* version, std::uint32_t length);

private:
    bool control(std::uint32_t code, const void* input, std::uint32_t inputSize, void* output,
                 std::uint32_t outputSize);
    /// Sends the record if the device is open, and is true: the driver's answer is not looked at.
    bool send(const ControlPacket& packet);
    /// Sends the record. False only when an exception had to be reported, as a failure to do what
    /// `action` says.
    bool command(const char* action, const ControlPacket& packet) noexcept;
    bool action(std::uint32_t code) { return control(code, nullptr, 0, nullptr, 0); }
    template <typename Value> bool write(std::uint32_t code, const Value& value)
    {
        return control(code, &value, sizeof value, nullptr, 0);
    }
    template <typename Value> bool read(std::uint32_t code, Value& value)
    {
        Value word{};
        if (!control(code, nullptr, 0, &word, sizeof word))
            return false;
        value = word;
        return true;
    }
    std::uint32_t query(std::uint32_t code)
    {
        std::uint32_t value = 0;
        read(code, value);
        return value;
    }

    ScopedHandle handle;
    UsbStatus lastUsbStatus;
};
