#pragma once

#include "asio/thread_settings_pip.h"
#include "pipe_peer.h"
#include "support/debug_log.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>

/// A pipe thread with the lines and signals that come from it.
class PipStage
{
public:
    static const QString running;
    static const QString nothing;
    static const QString parted; ///< "Pipe closed."

    PipStage();
    ~PipStage();
    PipStage(const PipStage&) = delete;
    PipStage& operator=(const PipStage&) = delete;

    DebugLog& log() { return *debugLog; }

    /// A new thread that is not started.
    void create();
    /// create(), then waits until the thread has written its first line, which is forgotten.
    void start();
    /// Waits until `count` lines have come since the last call, and takes all that are there. After
    /// ten seconds it takes those that came.
    QStringList waitForLines(qsizetype count);
    /// Waits as waitForLines() until this many `running` lines are there.
    QStringList waitForPasses(qsizetype count);

    /// Connects, sends and waits until the thread parts. False when a step fails.
    static bool serve(const QByteArray& message);

    /// The values of progressUpdated since the last call, delivered to the GUI thread.
    QList<int> takeSignals();

    std::unique_ptr<ThreadSettingsPip> thread;

private:
    QStringList waitFor(const std::function<bool(const QStringList&)>& enough);

    std::optional<DebugLog> debugLog;
    QList<int> values;
    QObject receiver; ///< Lives in the GUI thread, so the values come queued.
};
