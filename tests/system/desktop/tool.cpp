#include "system/desktop/tool.h"

#include <QCoreApplication>
#include <QProcess>

std::optional<ToolAnswer> askTool(const QString& program, const QStringList& arguments,
                                  const QProcessEnvironment& environment)
{
    constexpr int timeout = 60000;
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(timeout) || process.exitStatus() != QProcess::NormalExit) {
        qWarning("%s %s: %s\n%s", qPrintable(program), qPrintable(arguments.join(QLatin1Char(' '))),
                 qPrintable(process.errorString()), process.readAllStandardError().constData());
        return std::nullopt;
    }
    return ToolAnswer{process.exitCode(),
                      QString::fromUtf8(process.readAllStandardOutput()).remove(QLatin1Char('\r')),
                      QString::fromUtf8(process.readAllStandardError())};
}

std::optional<QString> runTool(const QString& program, const QStringList& arguments,
                               const QProcessEnvironment& environment)
{
    return toolOutput(program, arguments, askTool(program, arguments, environment));
}

std::optional<QString> toolOutput(const QString& program, const QStringList& arguments,
                                  const std::optional<ToolAnswer>& answer)
{
    if (!answer)
        return std::nullopt;
    if (answer->exitCode != 0) {
        qWarning("%s %s: exit code %d\n%s", qPrintable(program),
                 qPrintable(arguments.join(QLatin1Char(' '))), answer->exitCode,
                 qPrintable(answer->errors));
        return std::nullopt;
    }
    return answer->output;
}

QString besideThisProgram(const QString& name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}
