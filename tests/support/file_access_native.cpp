#include "support/file_access.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Takes from this thread what lets root open files whatever their modes say.
class WithoutExemption
{
public:
    WithoutExemption()
    {
        syscall(SYS_capget, &header, before);
        __user_cap_data_struct less[2] = {before[0], before[1]};
        less[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        if (syscall(SYS_capset, &header, less) != 0)
            qFatal("capset");
    }
    ~WithoutExemption() { syscall(SYS_capset, &header, before); }
    WithoutExemption(const WithoutExemption&) = delete;
    WithoutExemption& operator=(const WithoutExemption&) = delete;

private:
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before[2]{};
};

/// Takes permissions away from a file or folder.
class Mode
{
public:
    Mode(const QString& file, QFile::Permissions without)
        : path(file)
        , before(QFile::permissions(file))
    {
        QFile::setPermissions(path, before & ~without);
    }
    ~Mode() { QFile::setPermissions(path, before); }
    Mode(const Mode&) = delete;
    Mode& operator=(const Mode&) = delete;

private:
    QString path;
    QFile::Permissions before;
};

/// The file's folder, which must be the settings folder: any other has files of other programs.
QString ownFolder(const QString& file)
{
    const QString folder = QFileInfo(file).path();
    if (folder != QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
        qFatal("%s is not in the settings folder", qPrintable(file));
    return folder;
}

constexpr QFile::Permissions writing =
    QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther;
constexpr QFile::Permissions reading =
    QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther;

} // namespace

struct ReadOnly::Refusal
{
    WithoutExemption withoutExemption;
    Mode file;
    Mode folder;
};

ReadOnly::ReadOnly(const QString& file)
    : refusal(new Refusal{{}, {file, writing}, {ownFolder(file), writing}})
{
    if (QFile(file).open(QFile::ReadWrite | QFile::ExistingOnly))
        qFatal("%s can still be written", qPrintable(file));
}

ReadOnly::~ReadOnly() = default;

struct Unreadable::Refusal
{
    WithoutExemption withoutExemption;
    Mode file;
};

Unreadable::Unreadable(const QString& file)
    : refusal(new Refusal{{}, {file, reading | writing}})
{
    if (QFile(file).open(QFile::ReadOnly))
        qFatal("%s can still be read", qPrintable(file));
}

Unreadable::~Unreadable() = default;
