#pragma once

#include <QtGlobal>

/// What was tried and what came of it.
struct SoakFigures
{
    qint64 actions = 0;
    qint64 arrivals = 0;
    qint64 requests = 0;
    qint64 faults = 0;   ///< requests that the interface refused
    qint64 restarts = 0; ///< of the simulator
    qint64 pipeClients = 0;
    qint64 copies = 0;
};
