#include "system/desktop/child_program.h"

#include <QFile>

namespace {

QStringList linesOf(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QFile::ReadOnly))
        return {};
    QStringList lines =
        QString::fromUtf8(file.readAll()).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    // What follows the last line break is empty, or a line still being written.
    lines.removeLast();
    return lines;
}

} // namespace

ChildProgram::ChildProgram(const QStringList& command, const QProcessEnvironment& environment,
                           const QString& name)
    : logName(name)
{
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(logName + QStringLiteral(".out"));
    process.setStandardErrorFile(debugFile());
    process.start(command.first(), command.mid(1));
    if (!process.waitForStarted())
        qWarning("%s: %s", qPrintable(command.first()), qPrintable(process.errorString()));
}

ChildProgram::~ChildProgram()
{
    kill();
}

bool ChildProgram::isRunning() const
{
    // QProcess learns of the end in its event loop only; the zombie is in the table already.
    QFile status(QStringLiteral("/proc/%1/stat").arg(process.processId()));
    if (process.processId() == 0 || !status.open(QFile::ReadOnly))
        return false;
    const QByteArray text = status.readAll();
    return text.mid(text.lastIndexOf(')') + 2, 1) != "Z";
}

bool ChildProgram::waitForEnd() const
{
    return waitUntil([this] { return !isRunning(); });
}

qint64 ChildProgram::processId() const
{
    return process.processId();
}

QStringList ChildProgram::debugLines() const
{
    return linesOf(debugFile());
}

QString ChildProgram::debugFile() const
{
    return logName + QStringLiteral(".err");
}

QStringList ChildProgram::outputLines() const
{
    return linesOf(logName + QStringLiteral(".out"));
}

bool ChildProgram::waitForLine(const QString& line, int count,
                               std::chrono::milliseconds timeout) const
{
    return waitUntil([&] { return debugLines().count(line) >= count; }, timeout);
}

std::optional<int> ChildProgram::waitForExit(std::chrono::milliseconds timeout)
{
    if (process.state() != QProcess::NotRunning)
        process.waitForFinished(static_cast<int>(timeout.count()));
    if (process.state() != QProcess::NotRunning || process.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return process.exitCode();
}

void ChildProgram::terminate()
{
    process.terminate();
}

void ChildProgram::kill()
{
    process.kill();
    process.waitForFinished();
}
