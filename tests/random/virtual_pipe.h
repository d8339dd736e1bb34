#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

/// The program's named pipe inside the test, with both its ends: the program's thread waits in
/// connect(), the test is the client. Results are Windows error numbers.
class VirtualPipe
{
public:
    // The program's end.
    void open();
    void close();
    std::uint32_t connect();
    std::uint32_t read(std::string& message, std::size_t room);
    void disconnect();
    bool cancel(); ///< false when no call waits; else the thread has ended when this returns

    // The client's end.
    bool serve(const std::string& message, bool written);
    bool waitUntilListening();

private:
    /// Goes with the thread that it was made in.
    struct EndOfThread
    {
        VirtualPipe& pipe;
        ~EndOfThread();
    };

    bool waitUntilListening(std::unique_lock<std::mutex>& lock, long long served);

    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
    bool listening = false;
    bool cancelled = false;
    bool threadHasEnded = false;
    bool hasClient = false;
    bool hasMessage = false;
    long long connects = 0;
    std::string pending;
};
