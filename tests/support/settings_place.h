#pragma once

#include <QDir>
#include <QFileInfo>

/// The template for a folder of a test's settings: on a memory file system where there is one.
/// Elsewhere each saved value waits until the disk has it.
inline QString settingsPlace()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    const bool fits = memory.isDir() && memory.isWritable();
    return (fits ? memory.filePath() : QDir::tempPath()) + QStringLiteral("/quorvel-XXXXXX");
}
