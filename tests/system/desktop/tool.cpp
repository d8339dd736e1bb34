#include "system/desktop/tool.h"

#include <QCoreApplication>
#include <QProcess>

std::optional<QString> runTool(const QString& program, const QStringList& arguments,
                               const QProcessEnvironment& environment)
{
    constexpr int timeout = 10000;
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(timeout) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).remove(QLatin1Char('\r'));
}

QString besideThisProgram(const QString& name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}
