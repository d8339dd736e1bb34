#pragma once

#include "platform/scoped_handle.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// A time-out for the synchronous system calls of the thread that makes it. Once that time is over,
/// and for as long as the object lives, a call that waits is cancelled: it fails with
/// ERROR_OPERATION_ABORTED. Nothing that the thread calls after the object's end is cancelled.
class CallTimeout
{
public:
    explicit CallTimeout(std::chrono::milliseconds timeout);
    ~CallTimeout();
    CallTimeout(const CallTimeout&) = delete;
    CallTimeout& operator=(const CallTimeout&) = delete;

private:
    void cancelCalls(std::chrono::milliseconds timeout);

    ScopedHandle caller;
    std::mutex mutex;
    std::condition_variable ending;
    bool ended = false;
    std::thread timer; ///< the last member: it uses the others
};
