#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A stand-in for a program of the desktop: found under the program's name before the real one
/// while it lives. One instance per name at a time.
class FakeProgram
{
public:
    /// What it does when it is started: notes its arguments, writes to its standard streams,
    /// then sleeps, then ends.
    struct Behaviour
    {
        QByteArray output;
        QByteArray errors;
        int exitCode = 0;
        int seconds = 0;
    };

    explicit FakeProgram(const QString& name);
    FakeProgram(const QString& name, const Behaviour& behaviour);
    ~FakeProgram();
    FakeProgram(const FakeProgram&) = delete;
    FakeProgram& operator=(const FakeProgram&) = delete;

    /// Where it lies.
    QString folder() const;

    /// What it was started with last; empty when it was not started yet.
    QStringList arguments() const;

private:
    QTemporaryDir ownFolder;
    QString path;
    QByteArray searchPath;
};
