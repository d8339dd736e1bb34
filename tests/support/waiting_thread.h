#pragma once

#include "platform/scoped_handle.h"

#include <atomic>
#include <functional>
#include <thread>

/// A thread that makes one call, and that others can cancel in it.
class WaitingThread
{
public:
    /// `work` returns the call's error number.
    explicit WaitingThread(std::function<DWORD()> work);
    ~WaitingThread();
    WaitingThread(const WaitingThread&) = delete;
    WaitingThread& operator=(const WaitingThread&) = delete;

    HANDLE threadHandle() const { return handle.get(); }
    bool hasReturned() const { return returned; }

    /// Tries until the call is hit: from outside a call that waits cannot be told from one about to
    /// wait.
    void cancel();

    /// The same by the handle on which the call works.
    void cancelOn(HANDLE file);

    /// Waits for the call; its error number.
    DWORD join();

private:
    std::atomic<DWORD> number = 0;
    std::atomic<DWORD> result = 0;
    std::atomic<bool> returned = false;
    ScopedHandle handle;
    std::thread thread;
};
