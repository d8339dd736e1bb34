#pragma once

#include <QProcessEnvironment>
#include <QStringList>

#include <optional>

/// How a command ended that ended by itself.
struct ToolAnswer
{
    int exitCode = 0;
    QString output; ///< Without carriage returns.
    QString errors; ///< What it wrote to standard error.
};

/// Runs a short-lived command; nothing when it could not start, crashed or took longer than a
/// minute, which is reported as a warning.
std::optional<ToolAnswer>
askTool(const QString& program, const QStringList& arguments,
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

/// The same for commands that must succeed: what it wrote to its standard output; nothing when its
/// exit code was another than 0. A failing command's standard error is passed on.
std::optional<QString>
runTool(const QString& program, const QStringList& arguments,
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

/// What runTool() makes of an answer of askTool() to the same command.
std::optional<QString> toolOutput(const QString& program, const QStringList& arguments,
                                  const std::optional<ToolAnswer>& answer);

/// The program of this name beside the running one.
QString besideThisProgram(const QString& name);
