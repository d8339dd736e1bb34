#pragma once

#include "port/file_descriptor.h"
#include "port/win32_port.h"

#include <string>
#include <vector>

/// The sockets of one pipe's instances: a folder below the runtime folder with one socket per
/// instance. Whoever connects a client or changes an instance's state holds the lock, so that all
/// processes see each change as a whole.
class PipeFolder
{
public:
    explicit PipeFolder(const std::string& name);

    /// Creates the folder if it is missing.
    bool create() const;

    /// Waits for the lock; it ends with the descriptor. Invalid when there is no such folder.
    FileDescriptor lock() const;

    /// The sockets of the running processes; those of processes that crashed are removed.
    std::vector<std::string> sockets() const;

    /// A path for a new instance of this process, which tells how many instances it allows and
    /// whether it has a buffer for what clients write.
    std::string newSocket(DWORD mostInstances, bool buffered) const;

    /// How many instances the owner of this socket allows.
    static DWORD instanceLimit(const std::string& socket);

    static bool isBuffered(const std::string& socket);

private:
    std::string folder;
    std::string lockFile;
};

/// A client's connection to an instance.
struct PipeConnection
{
    FileDescriptor socket;
    bool buffered = true;
};

/// Connects to an instance that listens. On failure the Windows error number is in `error`.
PipeConnection connectToPipe(const std::string& name, DWORD& error);
