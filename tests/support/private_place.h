#pragma once

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

/// The template for a private folder of a test: on a memory file system where there is one that
/// programs can be started from as well. Elsewhere each saved value waits until the disk has it.
inline QString privatePlace()
{
    QTemporaryFile probe(QStringLiteral("/dev/shm/quorvel-XXXXXX"));
    const bool fits = probe.open() && probe.setPermissions(QFile::ReadOwner | QFile::ExeOwner) &&
                      QFileInfo(probe).isExecutable();
    return (fits ? QStringLiteral("/dev/shm") : QDir::tempPath()) +
           QStringLiteral("/quorvel-XXXXXX");
}
