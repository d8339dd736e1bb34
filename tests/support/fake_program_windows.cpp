#include "support/fake_program.h"

#include "support/fake_program_files.h"

#include <QCoreApplication>
#include <QThread>

// A process is looked for in the folder of the starting program before it is looked for in
// Windows' own, so that is where the stand-in lies; the search path would never be reached.

namespace {

const QStringList companions{".arguments", ".output", ".errors", ".plan", ""};

void removeAll(const QString& path)
{
    constexpr int attempts = 50;
    for (const QString& suffix : companions) {
        // The file of a program that has just ended stays locked for a moment.
        for (int i = 0; i < attempts && QFile::exists(path + suffix); ++i) {
            if (!QFile::remove(path + suffix))
                QThread::msleep(20);
        }
    }
}

} // namespace

FakeProgram::FakeProgram(const QString& name)
    : FakeProgram(name, Behaviour())
{
}

FakeProgram::FakeProgram(const QString& name, const Behaviour& behaviour)
    : path(QCoreApplication::applicationDirPath() + '/' + name)
{
    removeAll(path);
    writeFile(path + ".output", behaviour.output);
    writeFile(path + ".errors", behaviour.errors);
    writeFile(path + ".plan", QByteArray::number(behaviour.seconds) + ' ' +
                                  QByteArray::number(behaviour.exitCode) + '\n');
    if (!QFile::copy(QCoreApplication::applicationDirPath() + "/quorvel-fake-program.exe", path))
        qFatal("cannot make %s", qPrintable(path));
}

FakeProgram::~FakeProgram()
{
    removeAll(path);
}

QString FakeProgram::folder() const
{
    return QCoreApplication::applicationDirPath();
}

QStringList FakeProgram::arguments() const
{
    return linesOf(path + ".arguments");
}
