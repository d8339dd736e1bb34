#pragma once

#include <QAbstractEventDispatcher>

#include <atomic>
#include <functional>
#include <vector>

/// The GUI thread's events with a clock of their own: no timer fires by itself. Must be installed
/// before the application object is built.
class VirtualTime : public QAbstractEventDispatcher
{
    Q_OBJECT

public:
    static VirtualTime& instance();

    long long now() const { return clock; }
    /// The clock goes on while the GUI thread is blocked: timers do not fire.
    void pass(int milliseconds) { clock += milliseconds; }
    /// Lets that time go by with the timers that are due in it, earliest first.
    void run(long long milliseconds);
    /// Handles all that is waiting, timers apart.
    void settle();

    /// Called when a nested event loop waits and nothing is there to be handled.
    std::function<void()> whenIdle;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier*) override {}
    void unregisterSocketNotifier(QSocketNotifier*) override {}
    void registerTimer(int timerId, qint64 interval, Qt::TimerType type, QObject* object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int timerId) override;
    void wakeUp() override { disturbed = true; }
    void interrupt() override { disturbed = true; }

private:
    struct Timer
    {
        int id;
        long long interval;
        long long due;
        long long started;
        QObject* object;
    };

    bool fireNext(long long until);
    bool handleWaiting();

    std::atomic<bool> disturbed = false; ///< something came up since the turn began
    long long clock = 0;
    long long starts = 0;
    std::vector<Timer> timers;
};
