#pragma once

#include "platform/win32.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Ends the event loop of the GUI thread from another thread, however deep it is nested and
/// wherever it waits. Made and destroyed in the GUI thread while the application object lives.
class EventLoopEnd
{
public:
    EventLoopEnd();
    ~EventLoopEnd();
    EventLoopEnd(const EventLoopEnd&) = delete;
    EventLoopEnd& operator=(const EventLoopEnd&) = delete;

    /// Asks until finish() was called, and returns true then; false when that takes longer than
    /// `patience`. Marked waits (EndableWait) are cancelled at once, any other system call in
    /// which the GUI thread waits after three seconds. From any other thread.
    bool endAndWait(std::chrono::milliseconds patience);

    /// Everything that the loop served is torn down. From then on nothing is asked any more.
    void finish();

private:
    using Clock = std::chrono::steady_clock;

    void ask(Clock::duration since);

    const HANDLE guiThread;
    std::mutex mutex;
    std::condition_variable condition;
    bool finished = false;
};
