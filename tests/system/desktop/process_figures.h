#pragma once

#include <QtGlobal>

#include <chrono>
#include <optional>

/// What the system's process table says about a running program.
struct ProcessFigures
{
    std::chrono::milliseconds processorTime{}; ///< User and system time since its start.
    int openFiles = 0;
    int threads = 0;

    /// Nothing when there is no such process.
    static std::optional<ProcessFigures> of(qint64 processId);
};
