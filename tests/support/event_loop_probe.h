#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>

/// Ticks in the event loop of its thread, as often as that comes round, and keeps the longest time
/// between two ticks. Time in which threads of this process were ready to run and other programs
/// had the processor is not counted where the system tells of it.
class EventLoopProbe : public QObject
{
    Q_OBJECT

public:
    EventLoopProbe();

    /// The longest gap so far, in milliseconds.
    double longestGap() const;

    /// Whether time without a processor is left out.
    static bool leavesOutQueueing();

private:
    void tick();

    QTimer timer;
    QElapsedTimer clock;
    std::chrono::nanoseconds lastQueueing;
    std::chrono::nanoseconds longest{};
};
