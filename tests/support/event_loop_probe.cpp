#include "support/event_loop_probe.h"

#include "support/queueing_time.h"

#include <algorithm>

EventLoopProbe::EventLoopProbe()
    : lastQueueing(queueingTime().value_or(std::chrono::nanoseconds()))
{
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &EventLoopProbe::tick);
    clock.start();
    timer.start(1);
}

double EventLoopProbe::longestGap() const
{
    return std::chrono::duration<double, std::milli>(longest).count();
}

bool EventLoopProbe::leavesOutQueueing()
{
    return queueingTime().has_value();
}

void EventLoopProbe::tick()
{
    const std::chrono::nanoseconds queueing = queueingTime().value_or(lastQueueing);
    // A thread that has ended takes its time with it.
    const std::chrono::nanoseconds queued =
        std::max(queueing - lastQueueing, std::chrono::nanoseconds());
    const std::chrono::nanoseconds gap = std::chrono::nanoseconds(clock.nsecsElapsed()) - queued;
    clock.start();
    lastQueueing = queueing;
    longest = std::max(longest, gap);
}
