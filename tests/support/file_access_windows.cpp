#include "support/file_access.h"

#include "platform/scoped_handle.h"
#include "platform/win32.h"

#include <QFile>

// The read-only attribute is enough here: it also keeps the file from being replaced by another,
// and administrators get no exemption from it.

struct ReadOnly::Refusal
{
    QString path;
};

ReadOnly::ReadOnly(const QString& file)
    : refusal(new Refusal{file})
{
    // Wine lets root open it all the same, so the attribute is what can be asked for.
    if (!QFile::setPermissions(file, QFile::ReadOwner | QFile::ReadUser) ||
        (QFile::permissions(file) & QFile::WriteUser))
        qFatal("%s can still be written", qPrintable(file));
}

ReadOnly::~ReadOnly()
{
    QFile::setPermissions(refusal->path, QFile::ReadOwner | QFile::ReadUser | QFile::WriteOwner |
                                             QFile::WriteUser);
}

struct Unreadable::Refusal
{
    ScopedHandle file;
};

Unreadable::Unreadable(const QString& file)
    : refusal(new Refusal{ScopedHandle(
          CreateFileW(reinterpret_cast<const wchar_t*>(QString(file).replace(u'/', u'\\').utf16()),
                      GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))})
{
    if (refusal->file.get() == INVALID_HANDLE_VALUE || QFile(file).open(QFile::ReadOnly))
        qFatal("%s can still be read", qPrintable(file));
}

Unreadable::~Unreadable() = default;
