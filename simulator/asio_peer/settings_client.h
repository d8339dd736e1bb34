#pragma once

#include "platform/scoped_handle.h"

#include <vector>

/// A client of the pipe on which the panel waits for requests, as the ASIO driver is one. Calls
/// return 0 or the Windows error number.
class SettingsClient
{
public:
    /// Connects; a panel that is busy with another client is asked again for up to five seconds.
    DWORD connect();

    /// Sends one message and waits, for up to five seconds, until the panel has taken it.
    DWORD send(const std::vector<char>& message);

private:
    ScopedHandle pipe;
};
