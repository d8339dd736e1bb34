#pragma once

#include "port/file_descriptor.h"

#include <atomic>
#include <cstdint>
#include <thread>

/// A simulator whose control door opens and then fails every request. It serves one client after
/// the other in the runtime folder until it is destroyed.
class FailingSimulator
{
public:
    /// What each request gets: a Windows error number, 0 for success, and so many bytes of one
    /// value.
    struct Answer
    {
        std::uint32_t error = 0;
        std::uint32_t length = 0;
        std::uint8_t value = 0;
    };

    explicit FailingSimulator(const Answer& answer);
    ~FailingSimulator();
    FailingSimulator(const FailingSimulator&) = delete;
    FailingSimulator& operator=(const FailingSimulator&) = delete;

private:
    void serve();
    void serveClient(const FileDescriptor& client) const;

    const Answer given;
    FileDescriptor listener;
    std::atomic<bool> leave = false;
    std::thread server;
};
