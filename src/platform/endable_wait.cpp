#include "platform/endable_wait.h"

#include <mutex>

namespace {

/// The thread that waits now, null when none does. Locked while its call is being cancelled: no
/// cancellation may reach what the thread does after it.
struct Waiting
{
    std::mutex mutex;
    HANDLE thread = nullptr;
};

Waiting& waiting()
{
    static Waiting instance;
    return instance;
}

} // namespace

EndableWait::EndableWait()
    : thread(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()))
{
    const std::lock_guard lock(waiting().mutex);
    waiting().thread = thread;
}

EndableWait::~EndableWait()
{
    {
        const std::lock_guard lock(waiting().mutex);
        waiting().thread = nullptr;
    }
    if (thread != nullptr)
        CloseHandle(thread);
}

void EndableWait::cancel()
{
    const std::lock_guard lock(waiting().mutex);
    if (waiting().thread != nullptr)
        CancelSynchronousIo(waiting().thread);
}
