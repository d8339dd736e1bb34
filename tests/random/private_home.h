#pragma once

<<<<<<< HEAD
#include <QDir>
#include <QFile>
=======
#include "support/private_place.h"

>>>>>>> df32d37 (Let the shell's tests fire the timers themselves)
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

<<<<<<< HEAD
    /// In memory where there is a place for it: each change of a control is a file written anew.
    QTemporaryDir home{QFile::exists(QStringLiteral("/dev/shm"))
                           ? QStringLiteral("/dev/shm/quorvel-random-XXXXXX")
                           : QDir::tempPath() + QStringLiteral("/quorvel-random-XXXXXX")};
=======
    QTemporaryDir home{privatePlace()};
>>>>>>> df32d37 (Let the shell's tests fire the timers themselves)
};
