#pragma once

#include "platform/scoped_handle.h"

#include <chrono>
#include <thread>

/// A time-out for the synchronous system calls of the thread that makes it. Once that time is over,
/// and for as long as the object lives, a call that waits is cancelled: it fails with
/// ERROR_OPERATION_ABORTED. Nothing that the thread calls after the object's end is cancelled.
class CallTimeout
{
public:
    explicit CallTimeout(std::chrono::milliseconds timeout);

private:
    ScopedHandle caller;
    std::jthread timer; ///< The last member: it has ended when the handle is closed.
};
