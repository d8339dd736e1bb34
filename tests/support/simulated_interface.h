#pragma once

#include "simulator/client/simulator_control.h"
#include "support/simulator_host.h"

#include <QStringList>

/// A simulated interface for one test: freshly reset, nothing plugged in. The test ends at once
/// with a message when there is no simulator to talk to. Use it from one thread.
class SimulatedInterface
{
public:
    SimulatedInterface();

    SimulatorControl& control() { return door; }
    SimulatorHost& host() { return simulatorHost; }

    /// The requests so far as formatRequest() writes them.
    QStringList traceLines();

    /// traceLines(), and these requests are forgotten.
    QStringList takeTrace();

    /// How many device handles opened since the last reset are open now.
    int openHandles();

    /// The same, as soon as it is `expected` or half a minute has passed: a kernel-mode driver
    /// hears of a closed handle a moment after the call that closed it has returned.
    int settledHandles(int expected);

private:
    SimulatorHost simulatorHost;
    SimulatorControl door;
};
