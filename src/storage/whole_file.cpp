#include "storage/whole_file.h"

#include "platform/disk.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace Disk = std::filesystem;

namespace {

constexpr qint64 largest = 65536; // bytes

bool rename(const QString& from, const QString& to)
{
    std::error_code error;
    Disk::rename(QFileInfo(from).filesystemFilePath(), QFileInfo(to).filesystemFilePath(), error);
    return !error;
}

bool setAside(const QString& path)
{
    const QString plain = path + QStringLiteral(".set-aside");
    QString name = plain;
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = plain + QString::number(number);
    if (!rename(path, name))
        return false;
    qDebug() << "Too large for settings, set aside:" << name;
    return true;
}

/// Also false for one that is not to be replaced because it cannot be written.
bool write(const QString& path, const QString& name, const QByteArray& content)
{
    QFile present(path);
    const bool exists = present.exists();
    // Not everybody whom the mode forbids it is refused.
    if (exists &&
        (!QFileInfo(path).isWritable() || !present.open(QFile::ReadWrite | QFile::ExistingOnly)))
        return false;
    QFile file(name);
    if (!file.open(QFile::WriteOnly | QFile::Truncate | QFile::Text))
        return false;
    if (exists)
        file.setPermissions(present.permissions());
    return file.write(content) == content.size() && file.flush() && flushToDisk(file.handle());
}

} // namespace

std::optional<QByteArray> WholeFile::read(const QString& path)
{
    std::error_code error;
    const auto kind = Disk::status(QFileInfo(path).filesystemFilePath(), error).type();
    if (kind == Disk::file_type::not_found)
        return QByteArray();
    QFile file(path);
    if (kind != Disk::file_type::regular || !file.open(QFile::ReadOnly | QFile::Text))
        return std::nullopt;
    if (file.size() > largest) {
        file.close();
        return setAside(path) ? std::optional(QByteArray()) : std::nullopt;
    }
    const QByteArray content = file.readAll();
    return file.error() == QFile::NoError ? std::optional(content) : std::nullopt;
}

bool WholeFile::replace(const QString& path, const QByteArray& content)
{
    const QString name = path + QStringLiteral(".saving");
    if (write(path, name, content) && rename(name, path))
        return true;
    QFile::remove(name);
    return false;
}
