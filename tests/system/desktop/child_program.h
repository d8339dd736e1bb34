#pragma once

#include "system/desktop/wait_until.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <chrono>
#include <optional>

/// A program that runs beside the caller, with both standard streams kept in files. It is killed
/// when the object goes.
class ChildProgram
{
public:
    /// Starts the program; its streams go to `logName`.out and `logName`.err.
    ChildProgram(const QStringList& command, const QProcessEnvironment& environment,
                 const QString& logName);
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    bool isRunning() const;
    /// Waits until it does not run any more, however it ended.
    bool waitForEnd() const;
    qint64 processId() const;

    /// The lines written to standard error so far, where the debug stream goes.
    QStringList debugLines() const;
    /// The file that takes them.
    QString debugFile() const;
    /// The lines written to standard output so far.
    QStringList outputLines() const;

    /// Waits until `line` was written to the debug stream at least `count` times.
    bool waitForLine(const QString& line, int count = 1,
                     std::chrono::milliseconds timeout = patience) const;

    /// Waits for the end; nothing when the program still runs or was ended by a signal.
    std::optional<int> waitForExit(std::chrono::milliseconds timeout = patience);

    /// Asks the program to end (SIGTERM).
    void terminate();

    /// Ends it without asking (SIGKILL) and waits until it is gone.
    void kill();

private:
    QString logName;
    QProcess process;
};
