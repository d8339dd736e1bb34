#pragma once

#include "platform/scoped_handle.h"

#include <chrono>
#include <vector>

/// The pipe on which the ASIO driver waits for the panel's reset request. Calls return 0 or the
/// Windows error number.
class ResetServer
{
public:
    /// Creates the pipe; it is there until the end of this object. Without a buffer (size 0) the
    /// client waits until its message is read.
    DWORD open(DWORD bufferSize = 4096);

    /// Waits for the next message; clients that send none do not count. After that time:
    /// ERROR_OPERATION_ABORTED.
    DWORD receive(std::chrono::milliseconds time, std::vector<unsigned char>& message);

    /// Occupies the pipe with a client of its own.
    DWORD makeBusy();

private:
    DWORD receiveOnce(std::vector<unsigned char>& message);

    ScopedHandle pipe;
    ScopedHandle client;
};
