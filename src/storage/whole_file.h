#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A small text file, read and replaced as a whole. Lines end with "\n" here and in the system's
/// own way on the disk. Neither function waits for another program; what the file system itself
/// takes is not bounded here.
namespace WholeFile {

/// The file's content, empty when there is no such file; nothing when it is there but cannot be
/// read now. One of more than 64 KiB is none of ours: it gets another name, with a debug line, and
/// there is no such file then.
std::optional<QByteArray> read(const QString& path);

/// Puts a file with this content in place of what is there, and only when the disk has taken all of
/// it: whenever the process or the power ends, the old file or the new one is there. It is written
/// under the name with ".saving" added, which the next call overwrites. False when nothing has
/// changed: the file or its folder cannot be written, another program has it open, the disk is
/// full.
bool replace(const QString& path, const QByteArray& content);

} // namespace WholeFile
