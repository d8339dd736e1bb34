#pragma once

#include <cstdint>

/// What travels between the port's device handles and the process that serves the device: one
/// message per request and one per answer, in the machine's own byte order.

enum class DeviceCall : std::uint32_t { open = 1, control = 2, close = 3 };

/// Followed by `inputLength` bytes.
struct DeviceRequest
{
    DeviceCall call;
    std::uint32_t code;
    std::uint32_t inputLength;
    std::uint32_t outputLength;
};

/// Followed by `returned` bytes. `error` is a Windows error number, 0 for success.
struct DeviceAnswer
{
    std::uint32_t error;
    std::uint32_t returned;
};

/// The most bytes that one request or answer carries after its header.
constexpr std::uint32_t largestTransfer = 128 * 1024;
