#include "support/simulated_interface.h"

#include <QDeadlineTimer>
#include <QThread>

namespace {

QStringList lines(const std::vector<SimulatedRequest>& requests)
{
    QStringList result;
    for (const SimulatedRequest& request : requests)
        result.append(QString::fromStdString(formatRequest(request)));
    return result;
}

} // namespace

SimulatedInterface::SimulatedInterface()
{
    const QString problem = simulatorHost.start();
    if (!problem.isEmpty())
        qFatal("%s", qPrintable(problem));
    if (!door.open() || !door.reset())
        qFatal("the simulator's control door gives error %u",
               static_cast<unsigned>(door.lastError()));
}

QStringList SimulatedInterface::traceLines()
{
    return lines(door.trace());
}

QStringList SimulatedInterface::takeTrace()
{
    return lines(door.takeTrace());
}

int SimulatedInterface::openHandles()
{
    return static_cast<int>(door.state().openHandles);
}

int SimulatedInterface::settledHandles(int expected)
{
    const QDeadlineTimer patience(30000);
    while (openHandles() != expected && !patience.hasExpired())
        QThread::msleep(5);
    return openHandles();
}
