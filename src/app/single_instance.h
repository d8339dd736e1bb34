#pragma once

#include <QSharedMemory>
#include <QSystemSemaphore>

/// Marks the running copy of the program: a shared segment that lives as long as this object.
class SingleInstance
{
public:
    enum class Claim {
        first,          ///< this is the only copy
        alreadyRunning, ///< another copy holds the marker
        failed,         ///< the marker could neither be found nor made
    };

    /// Waits for other copies that decide at the same moment.
    SingleInstance();

    /// Decides which copy this is; a debug line tells of the other two cases.
    Claim claim();

private:
    Claim decide();

    QSystemSemaphore guard;
    QSharedMemory marker;
};
