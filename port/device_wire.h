#pragma once

#include <cstdint>

/// What travels between the port's device handles and the process that serves the device: a handle
/// is a connection, and each request and each answer is one message, in the machine's own byte
/// order.

/// Followed by `inputLength` bytes. It takes the place of a request that is still unanswered:
/// whoever asked that one has given up.
struct DeviceRequest
{
    std::uint32_t number; ///< Returned with the answer, so that a late one is recognised.
    std::uint32_t code;
    std::uint32_t inputLength;
    std::uint32_t outputLength;
};

/// Followed by `returned` bytes. `error` is a Windows error number, 0 for success.
struct DeviceAnswer
{
    std::uint32_t number;
    std::uint32_t error;
    std::uint32_t returned;
};

/// The most bytes that one request or answer carries after its header.
constexpr std::uint32_t largestTransfer = 128 * 1024;
