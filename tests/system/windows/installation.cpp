#include "system/windows/installation.h"

#include "system/desktop/child_program.h"
#include "system/desktop/target.h"

#include <QDir>

using namespace std::chrono_literals;

QString Installation::installed(const QString& name)
{
    return QDir::cleanPath(Target::settingsFolder() +
                           QStringLiteral("/../../../AppData/Local/Programs/QuorvelDriver/") +
                           name);
}

QString Installation::setupFile()
{
    return qEnvironmentVariable("QUORVEL_SETUP");
}

QString Installation::onWindows(const QString& path)
{
    return QStringLiteral("Z:") +
           QDir(path).absolutePath().replace(QLatin1Char('/'), QLatin1Char('\\'));
}

int Installation::run(SessionFolder& folder, const QString& file, const QStringList& options)
{
    return runCommand(folder, Target::command(file) + QStringList(QStringLiteral("/S")) + options);
}

int Installation::runCommand(SessionFolder& folder, const QStringList& command)
{
    ChildProgram program(command, folder.environment(), folder.path(QStringLiteral("installer")));
    return program.waitForExit(60s).value_or(-1);
}
