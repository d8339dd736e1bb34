#pragma once

#include "port/file_descriptor.h"
#include "port/handle_table.h"

#include <memory>
#include <mutex>

/// The place where one thread waits for sockets and where others can wake it.
class ThreadWait
{
public:
    /// That of the calling thread.
    static ThreadWait& current();

    /// That of a running thread, null when there is none with this number. Only threads that have
    /// asked for their number or waited before are known.
    static std::shared_ptr<ThreadWait> ofThread(DWORD threadId);

    ThreadWait();

    /// Waits until `events` (as for poll) or the end of the other side show on the socket. False
    /// when it was cancelled.
    bool wait(int socket, short events);

    /// Notes on which handle the thread works from now on, null for none.
    void use(HANDLE handle);

    /// Wakes the thread. False when it does not wait, or not on this handle (null means any).
    bool cancel(HANDLE handle = nullptr);

    /// Wakes all threads that wait in a call on this handle. False when there is none.
    static bool cancelAllOn(HANDLE handle);

private:
    FileDescriptor wakeUp;
    std::mutex mutex;
    bool waiting = false;
    HANDLE used = nullptr;
};

/// A call of this thread on a handle.
class HandleUse
{
public:
    explicit HandleUse(HANDLE handle) { ThreadWait::current().use(handle); }
    ~HandleUse() { ThreadWait::current().use(nullptr); }
    HandleUse(const HandleUse&) = delete;
    HandleUse& operator=(const HandleUse&) = delete;
};

/// An open handle on a thread.
class ThreadObject : public PortObject
{
public:
    explicit ThreadObject(std::shared_ptr<ThreadWait> thread)
        : place(std::move(thread))
    {
    }

    bool cancel() { return place->cancel(); }

private:
    std::shared_ptr<ThreadWait> place;
};
