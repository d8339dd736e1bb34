#include "platform/call_timeout.h"

namespace {

using namespace std::chrono_literals;

constexpr auto retryInterval = 10ms;

} // namespace

CallTimeout::CallTimeout(std::chrono::milliseconds timeout)
    : caller(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()))
    , timer([this, timeout] { cancelCalls(timeout); })
{
}

/// No std::jthread: with the compiler for Windows its request to stop now and then wakes nobody.
CallTimeout::~CallTimeout()
{
    {
        const std::lock_guard lock(mutex);
        ended = true;
    }
    ending.notify_one();
    timer.join();
}

/// Repeated, because a cancellation finds nothing while the thread is only about to wait.
void CallTimeout::cancelCalls(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(mutex);
    for (auto pause = timeout; !ending.wait_for(lock, pause, [this] { return ended; });
         pause = retryInterval)
        CancelSynchronousIo(caller.get());
}
