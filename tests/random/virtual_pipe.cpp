#include "random/virtual_pipe.h"

#include "platform/win32.h"

#include <chrono>
#include <utility>

VirtualPipe::EndOfThread::~EndOfThread()
{
    const std::lock_guard lock(pipe.mutex);
    pipe.threadHasEnded = true;
    pipe.changed.notify_all();
}

void VirtualPipe::open()
{
    const std::lock_guard lock(mutex);
    isOpen = true;
    listening = cancelled = hasClient = false;
}

void VirtualPipe::close()
{
    const std::lock_guard lock(mutex);
    isOpen = false;
    changed.notify_all();
}

std::uint32_t VirtualPipe::connect()
{
    thread_local const EndOfThread end{*this};
    std::unique_lock lock(mutex);
    threadHasEnded = false;
    listening = true;
    ++connects;
    changed.notify_all();
    changed.wait(lock, [this] { return hasClient || cancelled || !isOpen; });
    listening = false;
    changed.notify_all();
    if (std::exchange(cancelled, false))
        return ERROR_OPERATION_ABORTED;
    return isOpen ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

std::uint32_t VirtualPipe::read(std::string& message, std::size_t room)
{
    const std::lock_guard lock(mutex);
    if (!hasMessage)
        return ERROR_BROKEN_PIPE;
    message = pending.substr(0, room);
    return pending.size() > room ? ERROR_MORE_DATA : ERROR_SUCCESS;
}

void VirtualPipe::disconnect()
{
    const std::lock_guard lock(mutex);
    hasClient = false;
}

bool VirtualPipe::cancel()
{
    std::unique_lock lock(mutex);
    if (!listening)
        return false;
    cancelled = true;
    changed.notify_all();
    // The program gives its thread two seconds of real time to end, of which a busy machine may
    // leave nothing to the thread.
    changed.wait_for(lock, std::chrono::seconds(60), [this] { return threadHasEnded; });
    return true;
}

bool VirtualPipe::serve(const std::string& message, bool written)
{
    std::unique_lock lock(mutex);
    if (!isOpen)
        return false;
    const long long before = connects;
    pending = message;
    hasMessage = written;
    hasClient = true;
    changed.notify_all();
    return waitUntilListening(lock, before);
}

bool VirtualPipe::waitUntilListening()
{
    std::unique_lock lock(mutex);
    return waitUntilListening(lock, 0);
}

bool VirtualPipe::waitUntilListening(std::unique_lock<std::mutex>& lock, long long served)
{
    return changed.wait_for(lock, std::chrono::seconds(60),
                            [&] { return listening && connects > served; });
}
