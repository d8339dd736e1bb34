#pragma once

#include <QProcessEnvironment>
#include <QStringList>

#include <optional>

/// Runs a short-lived command and returns what it wrote to its standard output, without carriage
/// returns; nothing when it could not start, took longer than ten seconds or ended with another
/// exit code than 0. A failing command's standard error is passed on.
std::optional<QString>
runTool(const QString& program, const QStringList& arguments,
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

/// The program of this name beside the running one.
QString besideThisProgram(const QString& name);
