#include "support/file_access.h"

#include <QFile>

// The read-only attribute is enough here: it also keeps the file from being replaced by another,
// and administrators get no exemption from it.

ReadOnly::ReadOnly(const QString& file)
    : path(file)
{
    // Wine lets root open it all the same, so the attribute is what can be asked for.
    if (!QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser) ||
        (QFile::permissions(path) & QFile::WriteUser))
        qFatal("%s can still be written", qPrintable(path));
}

ReadOnly::~ReadOnly()
{
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser | QFile::WriteOwner |
                                    QFile::WriteUser);
}
