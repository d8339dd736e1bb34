#include "support/file_access.h"

#include <QFile>
#include <QFileInfo>

#include <sys/fsuid.h>
#include <unistd.h>

namespace {

// Root may write whatever the mode says; file access with another identity may not. The folders
// above are private to root, so they must be opened for looking through.
constexpr uid_t nobody = 65534;

void setMode(const QString& file, bool writable)
{
    const QFile::Permissions read =
        QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther | QFile::ReadUser;
    const QFile::Permissions look =
        QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther | QFile::ExeUser;
    const QFile::Permissions write =
        writable ? QFile::WriteOwner | QFile::WriteUser : QFile::Permissions();
    QFile::setPermissions(file, read | write);
    QFile::setPermissions(QFileInfo(file).path(), read | look | write);
}

} // namespace

ReadOnly::ReadOnly(const QString& file)
    : path(file)
{
    setMode(path, false);
    QString above = QFileInfo(QFileInfo(file).path()).path();
    while (above.count(u'/') > 1) {
        QFile::setPermissions(above, QFile::permissions(above) | QFile::ExeGroup | QFile::ExeOther);
        above = QFileInfo(above).path();
    }
    setfsuid(nobody);
    if (QFile(path).open(QFile::ReadWrite | QFile::ExistingOnly))
        qFatal("%s can still be written", qPrintable(path));
}

ReadOnly::~ReadOnly()
{
    setfsuid(geteuid());
    setMode(path, true);
}
