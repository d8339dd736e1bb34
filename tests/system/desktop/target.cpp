#include "system/desktop/target.h"

#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"

#include <QProcess>

bool Target::isWindows()
{
    return qEnvironmentVariableIsSet("QUORVEL_LAUNCHER");
}

int Target::tries()
{
    return isWindows() ? 3 : 1;
}

bool Target::actUntil(const std::function<bool()>& act, const std::function<bool()>& shows)
{
    const auto patienceWithOne = isWindows() ? std::chrono::seconds(15) : patience;
    for (int i = 0; i < tries(); ++i) {
        if (!act())
            return false;
        if (waitUntil(shows, patienceWithOne))
            return true;
    }
    return false;
}

QString Target::program()
{
    return qEnvironmentVariable("QUORVEL_PROGRAM",
                                besideThisProgram(QStringLiteral("QuorvelDriver")));
}

QStringList Target::command(const QString& program)
{
    return QProcess::splitCommand(qEnvironmentVariable("QUORVEL_LAUNCHER")) << program;
}

QStringList Target::tool(const QString& name)
{
    if (!isWindows())
        return {besideThisProgram(name)};
    return command(qEnvironmentVariable("QUORVEL_TOOLS") + QLatin1Char('/') + name +
                   QStringLiteral(".exe"));
}

QString Target::settingsFolder()
{
    return qEnvironmentVariable("QUORVEL_SETTINGS");
}

QString Target::systemFolder()
{
    return qEnvironmentVariable("WINEPREFIX") + QStringLiteral("/drive_c/windows/system32");
}

QString Target::utf8Locale()
{
    // Wine takes the code page from the locale's language. Hindi has none of the old ones.
    return isWindows() ? QStringLiteral("hi_IN.UTF-8") : QStringLiteral("C.UTF-8");
}
