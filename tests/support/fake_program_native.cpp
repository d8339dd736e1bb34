#include "support/fake_program.h"

#include "support/fake_program_files.h"

namespace {

// A sleeping shell would outlive its own end by its child, so it becomes the sleeper.
constexpr char script[] = R"(#!/bin/sh
printf '%s\n' "$@" > "$0.arguments"
cat "$0.output"
cat "$0.errors" >&2
[ %1 = 0 ] || exec sleep %1
exit %2
)";

} // namespace

FakeProgram::FakeProgram(const QString& name)
    : FakeProgram(name, Behaviour())
{
}

FakeProgram::FakeProgram(const QString& name, const Behaviour& behaviour)
    : path(ownFolder.filePath(name))
    , searchPath(qgetenv("PATH"))
{
    writeFile(path + ".output", behaviour.output);
    writeFile(path + ".errors", behaviour.errors);
    writeFile(path, QString(script).arg(behaviour.seconds).arg(behaviour.exitCode).toUtf8());
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("PATH", QFile::encodeName(folder()) + ':' + searchPath);
}

FakeProgram::~FakeProgram()
{
    qputenv("PATH", searchPath);
}

QString FakeProgram::folder() const
{
    return ownFolder.path();
}

QStringList FakeProgram::arguments() const
{
    return linesOf(path + ".arguments");
}
