#include "support/file_access.h"

#include <QFile>

// The read-only attribute is enough here: it also keeps the file from being replaced by another,
// and administrators get no exemption from it.

ReadOnly::ReadOnly(const QString& file)
    : path(file)
{
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser);
}

ReadOnly::~ReadOnly()
{
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser | QFile::WriteOwner |
                                    QFile::WriteUser);
}
