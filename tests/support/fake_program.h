#pragma once

#include <QByteArray>
#include <QTemporaryDir>

/// A shell script under the name of a program, first in the search path while it lives.
class FakeProgram
{
public:
    FakeProgram(const char* name, const char* script);
    ~FakeProgram();
    FakeProgram(const FakeProgram&) = delete;
    FakeProgram& operator=(const FakeProgram&) = delete;

    /// What the script wrote to "$0.<suffix>".
    QByteArray output(const char* suffix) const;

private:
    QTemporaryDir folder;
    QString path;
    QByteArray searchPath;
};
