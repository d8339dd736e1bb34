#pragma once

#include <vector>

namespace Oracle {

enum class Timer {
    usbErrors,
    detection,
    productId,
    readOuts,
    otgOffThenInit,
    initAfterOtg,
    otgOffThenOn,
    otgOnAfterRateChange,
    saveSettings,
    savePanel, ///< of the first model; those of the others follow
};

/// The clock and the timers that run, in whole milliseconds. Timers that are due at the same
/// moment fire in the order in which they were started.
class Timeline
{
public:
    long long now() const { return clock; }
    void pass(int milliseconds) { clock += milliseconds; }
    /// Goes on to that moment, unless it has passed.
    void reach(long long moment);

    /// (Re)starts a timer that fires again and again.
    void start(Timer timer, int interval);
    /// Adds one that fires once; several of a kind can run.
    void startOnce(Timer timer, int interval);
    void stop(Timer timer);
    void stopAll() { running.clear(); }
    bool isActive(Timer timer) const;

    /// Takes the next timer that is due until then, and sets the clock to its moment. One that
    /// fires late fires next a whole interval later.
    bool takeDue(long long until, Timer& timer);

private:
    struct Entry
    {
        Timer timer;
        long long due;
        long long started;
        int interval; ///< 0: once
    };

    long long clock = 0;
    long long starts = 0;
    std::vector<Entry> running;
};

} // namespace Oracle
