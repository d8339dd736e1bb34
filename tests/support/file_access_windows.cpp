#include "support/file_access.h"

#include <QFile>

// The read-only attribute is enough here: it also keeps the file from being replaced by another,
// and administrators get no exemption from it.

ReadOnly::ReadOnly(const QString& file)
    : path(file)
{
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser);
    if (QFile(path).open(QFile::ReadWrite | QFile::ExistingOnly))
        qFatal("%s can still be written", qPrintable(path));
}

ReadOnly::~ReadOnly()
{
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser | QFile::WriteOwner |
                                    QFile::WriteUser);
}
