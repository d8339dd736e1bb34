#include "support/fake_program.h"

#include <QFile>

FakeProgram::FakeProgram(const char* name, const char* script)
    : path(folder.filePath(QLatin1String(name)))
    , searchPath(qgetenv("PATH"))
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", name);
    file.write(QByteArray("#!/bin/sh\n") + script + '\n');
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    file.close();
    qputenv("PATH", QFile::encodeName(folder.path()) + ':' + searchPath);
}

FakeProgram::~FakeProgram()
{
    qputenv("PATH", searchPath);
}

QByteArray FakeProgram::output(const char* suffix) const
{
    QFile file(path + u'.' + QLatin1String(suffix));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
