#include "simulator/asio_peer/deadline.h"

#include "platform/scoped_handle.h"

namespace {

/// Between two attempts: one finds nothing while the thread is between two calls.
constexpr std::chrono::milliseconds attemptInterval{10};

} // namespace

Deadline::Deadline(std::chrono::milliseconds time)
    : end(std::chrono::steady_clock::now() + time)
    , watcher(&Deadline::watch, this, GetCurrentThreadId())
{
}

Deadline::~Deadline()
{
    {
        const std::lock_guard lock(mutex);
        finished = true;
    }
    change.notify_one();
    watcher.join();
}

void Deadline::watch(DWORD threadId)
{
    const ScopedHandle thread(OpenThread(THREAD_TERMINATE, FALSE, threadId));
    std::unique_lock lock(mutex);
    change.wait_until(lock, end, [this] { return finished; });
    while (!finished) {
        CancelSynchronousIo(thread.get());
        change.wait_for(lock, attemptInterval, [this] { return finished; });
    }
}
