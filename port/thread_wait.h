#pragma once

#include "port/file_descriptor.h"
#include "port/handle_table.h"

#include <memory>
#include <mutex>

/// The place where one thread waits for sockets and where others can wake it; what a handle on a
/// thread refers to.
class ThreadWait : public PortObject
{
public:
    /// That of the calling thread.
    static ThreadWait& current();

    ThreadWait();

    /// Waits until `events` (as for poll) or the end of the other side show on the socket. False
    /// when it was cancelled.
    bool wait(int socket, short events);

    /// Notes on which handle the thread works from now on, null for none.
    void use(HANDLE handle);

    /// Wakes the thread. False when it does not wait, or not on this handle (null means any).
    bool cancel(HANDLE handle = nullptr);

private:
    FileDescriptor wakeUp;
    std::mutex mutex;
    bool waiting = false;
    HANDLE used = nullptr;
};
