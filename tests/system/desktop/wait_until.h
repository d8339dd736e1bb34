#pragma once

#include <QElapsedTimer>
#include <QThread>

#include <chrono>

/// Asks `condition` again and again, every 20 ms, until it is true or the time is over.
/// Returns its last answer.
template <typename Condition> bool waitUntil(Condition condition, std::chrono::milliseconds timeout)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.hasExpired(timeout.count()))
            return condition();
        QThread::msleep(20);
    }
    return true;
}
