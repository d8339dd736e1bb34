#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// What a ControlPacket asks of the device (its byte 1).
enum class Opcode : std::uint8_t {
    setOutVolume = 0x03,
    setMicVolume = 0x07,
    setMic20dB = 0x5A,
    setMic48V = 0x5B,
    setOtgOff = 0x5E,
    setOtgOn = 0x5F,
    upgradeFirmware = 0x60,
    switchMicInstrument = 0x64,
    readFirmwareVersion = 0x65,
    setCloseFeedback = 0x68,
};

#pragma pack(push, 1)

/// The 37-byte command record of the device. All reserved bytes stay zero.
struct ControlPacket
{
    std::uint8_t marker = 0x01;
    Opcode opcode;
    std::uint8_t reserved = 0;
    std::uint8_t modeOrState = 0; ///< 0x02 for volumes; 0 or 1 for switches
    std::uint8_t channel = 0;
    std::uint16_t value = 0; ///< volumes only, little-endian
    std::array<std::uint8_t, 30> reservedTail{};
};

#pragma pack(pop)

static_assert(sizeof(ControlPacket) == 37);
static_assert(offsetof(ControlPacket, marker) == 0);
static_assert(offsetof(ControlPacket, opcode) == 1);
static_assert(offsetof(ControlPacket, modeOrState) == 3);
static_assert(offsetof(ControlPacket, channel) == 4);
static_assert(offsetof(ControlPacket, value) == 5);
static_assert(offsetof(ControlPacket, reservedTail) == 7);
