#include "random/virtual_time.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <tuple>

/// Every event dispatcher of a GUI application ends its turn with this call; the header that
/// declares it is not among the toolkit's public ones.
class QWindowSystemInterface
{
public:
    static bool sendWindowSystemEvents(QEventLoop::ProcessEventsFlags flags);
};

VirtualTime& VirtualTime::instance()
{
    // The application deletes the one that is installed.
    static VirtualTime* const time = new VirtualTime;
    return *time;
}

bool VirtualTime::handleWaiting()
{
    emit awake();
    QCoreApplication::sendPostedEvents();
    return QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
}

void VirtualTime::settle()
{
    // A bound, so that a program that never comes to rest is seen and not waited for.
    constexpr int mostTurns = 100;
    for (int turn = 0; turn < mostTurns; ++turn) {
        const bool handled = handleWaiting();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (!handled && turn > 0)
            return;
    }
    qWarning("The event queue does not run empty.");
}

void VirtualTime::run(long long milliseconds)
{
    const long long until = clock + milliseconds;
    settle();
    while (fireNext(until))
        settle();
    clock = std::max(clock, until);
}

bool VirtualTime::fireNext(long long until)
{
    const auto next = std::ranges::min_element(timers, [](const Timer& a, const Timer& b) {
        return std::tie(a.due, a.started) < std::tie(b.due, b.started);
    });
    if (next == timers.end() || next->due > until)
        return false;
    clock = std::max(clock, next->due);
    next->due += std::max(next->interval, 1LL);
    if (next->due < clock)
        next->due = clock + next->interval;
    QTimerEvent event(next->id);
    QCoreApplication::sendEvent(next->object, &event);
    return true;
}

bool VirtualTime::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    disturbed = false;
    const bool handled = handleWaiting() || disturbed;
    if (handled || !flags.testFlag(QEventLoop::WaitForMoreEvents))
        return handled;
    if (whenIdle)
        whenIdle();
    return true;
}

void VirtualTime::registerTimer(int timerId, qint64 interval, Qt::TimerType, QObject* object)
{
    timers.push_back({timerId, interval, clock + interval, ++starts, object});
}

bool VirtualTime::unregisterTimer(int timerId)
{
    return std::erase_if(timers, [=](const Timer& timer) { return timer.id == timerId; }) > 0;
}

bool VirtualTime::unregisterTimers(QObject* object)
{
    return std::erase_if(timers, [=](const Timer& timer) { return timer.object == object; }) > 0;
}

QList<QAbstractEventDispatcher::TimerInfo> VirtualTime::registeredTimers(QObject* object) const
{
    QList<TimerInfo> list;
    for (const Timer& timer : timers) {
        if (timer.object == object)
            list.append(TimerInfo(timer.id, static_cast<int>(timer.interval), Qt::PreciseTimer));
    }
    return list;
}

int VirtualTime::remainingTime(int timerId)
{
    for (const Timer& timer : timers) {
        if (timer.id == timerId)
            return static_cast<int>(std::max(0LL, timer.due - clock));
    }
    return -1;
}
