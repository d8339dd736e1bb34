#pragma once

#include <QStringList>

/// Collects every line of the debug stream (qDebug, qWarning, ...) from construction to
/// destruction, from any thread, instead of printing it. One instance at a time.
class DebugLog
{
public:
    DebugLog();
    ~DebugLog();
    DebugLog(const DebugLog&) = delete;
    DebugLog& operator=(const DebugLog&) = delete;

    /// All lines so far, in order. Warnings read "warning: " + text. A line of another category
    /// than "default", or with a place in the sources, begins with these in brackets.
    QStringList lines() const;

    /// The lines since the last take() or clear(), which are forgotten.
    QStringList take();

    void clear();
};
