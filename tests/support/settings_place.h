#pragma once

#include <QDir>

/// The template for a folder of a test's settings: in the private folder of the surrounding command
/// where there is one, which ./test has in memory. Elsewhere each saved value waits for the disk.
inline QString settingsPlace()
{
    const QString folder = qEnvironmentVariable("QUORVEL_FOLDER");
    const bool fits = !folder.isEmpty() && QDir(folder).exists();
    return (fits ? folder : QDir::tempPath()) + QStringLiteral("/quorvel-XXXXXX");
}
