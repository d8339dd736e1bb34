#pragma once

#include <QElapsedTimer>
#include <QThread>

#include <chrono>

/// How long to wait for what must come. Only a failure waits that long; a slow or busy machine, on
/// which every look starts a program of its own, gets by with much less.
constexpr std::chrono::milliseconds patience = std::chrono::seconds(45);

/// Asks `condition` again and again, every 20 ms, until it is true or the time is over.
/// Returns its last answer.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds timeout = patience)
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

/// Reads again and again until the value is `expected` or the patience is over. Returns what was
/// read last, to be compared.
template <typename Value, typename Read> Value awaited(const Value& expected, Read read)
{
    Value last = expected;
    waitUntil([&] { return (last = read()) == expected; });
    return last;
}
