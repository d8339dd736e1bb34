#pragma once

#include <QStringList>
#include <QtGlobal>

#include <optional>

/// What the system's process table says about a running program.
struct ProcessFigures
{
    int openFiles = 0;
    int sockets = 0; ///< Among the open files.
    int threads = 0;
    qint64 memory = 0;  ///< Of its own, in KiB.
    qint64 wakeUps = 0; ///< How often its threads have gone to sleep and come back.

    /// Nothing when there is no such process or the table does not tell.
    static std::optional<ProcessFigures> of(qint64 processId);

    /// The names of its threads and what its files are, for a report.
    static QStringList details(qint64 processId);
};
