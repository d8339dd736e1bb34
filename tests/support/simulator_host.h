#pragma once

#include <QProcess>
#include <QString>

/// The process or driver behind the simulated interface during one test. Natively it is the
/// quorvel-simulator beside the test program, in the test's own runtime folder.
class SimulatorHost
{
public:
    SimulatorHost() = default;
    SimulatorHost(const SimulatorHost&) = delete;
    SimulatorHost& operator=(const SimulatorHost&) = delete;
    ~SimulatorHost();

    /// Starts it and waits until it serves. Empty on success, else what went wrong.
    QString start();

    /// Ends it and waits for that; programs then find no device. Harmless when it does not run.
    void stop();

private:
    QProcess process;
};
