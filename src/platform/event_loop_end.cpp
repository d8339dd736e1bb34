#include "platform/event_loop_end.h"

#include "platform/endable_wait.h"

#include <QCoreApplication>
#include <QMetaObject>

namespace {

using namespace std::chrono_literals;

constexpr auto nudge = 50ms; // between two requests
constexpr auto grace = 3s;   // for waits that are not marked

} // namespace

EventLoopEnd::EventLoopEnd()
    : guiThread(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()))
{
}

EventLoopEnd::~EventLoopEnd()
{
    if (guiThread != nullptr)
        CloseHandle(guiThread);
}

bool EventLoopEnd::endAndWait(std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex);
    const auto start = Clock::now();
    while (!finished && Clock::now() - start < patience) {
        ask(Clock::now() - start);
        condition.wait_for(lock, nudge);
    }
    return finished;
}

void EventLoopEnd::finish()
{
    const std::lock_guard lock(mutex);
    finished = true;
    condition.notify_all();
}

/// Repeated, because a request that is delivered before the loop runs does nothing, and neither
/// does a cancellation that comes just before the wait.
void EventLoopEnd::ask(Clock::duration since)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    EndableWait::cancel();
    if (since >= grace)
        CancelSynchronousIo(guiThread);
}
