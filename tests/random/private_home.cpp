#include "random/private_home.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

PrivateHome::PrivateHome()
{
    if (!home.isValid() || !programs.isValid())
        qFatal("cannot create a temporary folder");
    pointTo("HOME", QStringLiteral("home"));
    pointTo("XDG_DATA_HOME", QStringLiteral("home/data"));
    pointTo("XDG_CONFIG_HOME", QStringLiteral("home/config"));
    pointTo("TMPDIR", QStringLiteral("tmp"));
    pointTo("XDG_RUNTIME_DIR", QStringLiteral("run"));
    addCommandInterpreter();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setApplicationName(QStringLiteral("QuorvelDriver"));
}

void PrivateHome::pointTo(const char* variable, const QString& folder) const
{
    QDir(home.path()).mkpath(folder);
    QFile::setPermissions(home.filePath(folder),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv(variable, QFile::encodeName(home.filePath(folder)));
}

/// A stand-in that ends with $EXPLORER_EXIT when it is asked for what it should be.
void PrivateHome::addCommandInterpreter() const
{
    QFile program(programs.filePath(QStringLiteral("cmd.exe")));
    if (!program.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(program.fileName()));
    program.write("#!/bin/sh\n"
                  "[ \"$1\" = /c ] || exit 98\n"
                  "[ \"$2\" = 'taskkill /f /im explorer.exe && start explorer.exe' ] || exit 99\n"
                  "printf out\n"
                  "printf err >&2\n"
                  "exit $EXPLORER_EXIT\n");
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("PATH", QFile::encodeName(programs.path()) + ':' + qgetenv("PATH"));
}
