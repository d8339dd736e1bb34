#include "oracle/timeline.h"

#include <algorithm>
#include <tuple>

namespace Oracle {

void Timeline::reach(long long moment)
{
    clock = std::max(clock, moment);
}

void Timeline::start(Timer timer, int interval)
{
    stop(timer);
    running.push_back({timer, clock + interval, ++starts, interval});
}

void Timeline::startOnce(Timer timer, int interval)
{
    running.push_back({timer, clock + interval, ++starts, 0});
}

void Timeline::stop(Timer timer)
{
    std::erase_if(running, [=](const Entry& entry) { return entry.timer == timer; });
}

bool Timeline::isActive(Timer timer) const
{
    return std::ranges::any_of(running, [=](const Entry& entry) { return entry.timer == timer; });
}

bool Timeline::takeDue(long long until, Timer& timer)
{
    const auto next = std::ranges::min_element(running, [](const Entry& a, const Entry& b) {
        return std::tie(a.due, a.started) < std::tie(b.due, b.started);
    });
    if (next == running.end() || next->due > until)
        return false;
    reach(next->due);
    timer = next->timer;
    if (next->interval == 0) {
        running.erase(next);
        return true;
    }
    next->due += next->interval;
    if (next->due < clock)
        next->due = clock + next->interval;
    return true;
}

} // namespace Oracle
