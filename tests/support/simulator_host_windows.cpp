#include "support/simulator_host.h"

// The kernel-mode host is loaded before the tests start and serves all of them in turn.

SimulatorHost::~SimulatorHost() = default;

QString SimulatorHost::start()
{
    return {};
}

void SimulatorHost::stop() {}
