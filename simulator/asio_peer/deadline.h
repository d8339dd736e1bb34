#pragma once

#include "platform/win32.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Ends the pipe calls of the thread that made it once the time is over: they fail with
/// ERROR_OPERATION_ABORTED, those that start later too. Make and destroy it in the same thread.
class Deadline
{
public:
    explicit Deadline(std::chrono::milliseconds time);
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    bool isOver() const { return std::chrono::steady_clock::now() >= end; }

private:
    void watch(DWORD threadId);

    const std::chrono::steady_clock::time_point end;
    std::mutex mutex;
    std::condition_variable change;
    bool finished = false;
    std::thread watcher;
};
