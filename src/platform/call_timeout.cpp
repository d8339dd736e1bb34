#include "platform/call_timeout.h"

#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace {

using namespace std::chrono_literals;

constexpr auto retryInterval = 10ms;

/// Repeated, because a cancellation finds nothing while the thread is only about to wait.
void cancelCalls(const std::stop_token& stop, HANDLE caller, std::chrono::milliseconds timeout)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any stopping;
    const auto isStopped = [&] { return stop.stop_requested(); };
    for (auto pause = timeout; !stopping.wait_for(lock, stop, pause, isStopped);
         pause = retryInterval)
        CancelSynchronousIo(caller);
}

} // namespace

CallTimeout::CallTimeout(std::chrono::milliseconds timeout)
    : caller(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()))
    , timer(cancelCalls, caller.get(), timeout)
{
}
