#include "support/simulator_host.h"

#include <QCoreApplication>

SimulatorHost::~SimulatorHost()
{
    stop();
}

QString SimulatorHost::start()
{
    const QString program = QCoreApplication::applicationDirPath() + "/quorvel-simulator";
    process.setProcessChannelMode(QProcess::MergedChannels);
    // Should the test crash, its end of the pipe closes and the simulator ends by itself.
    process.start(program, {QStringLiteral("--until-stdin-closes")});
    while (process.waitForReadyRead(30000)) {
        if (process.canReadLine())
            break;
    }
    const QString line = QString::fromLocal8Bit(process.readLine()).trimmed();
    if (line == "ready")
        return {};
    stop();
    return program + ": " + (line.isEmpty() ? process.errorString() : line);
}

void SimulatorHost::stop()
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    process.waitForFinished();
}
