#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// Folders of this process' own for its settings, its temporary files and its programs, removed at
/// the end; and the off-screen platform. Before the application object.
class PrivateHome
{
public:
    PrivateHome();

private:
    void pointTo(const char* variable, const QString& folder) const;
    void addCommandInterpreter() const;

    /// In memory where there is a place for it: each change of a control is a file written anew.
    QTemporaryDir home{QFile::exists(QStringLiteral("/dev/shm"))
                           ? QStringLiteral("/dev/shm/quorvel-random-XXXXXX")
                           : QDir::tempPath() + QStringLiteral("/quorvel-random-XXXXXX")};
};
