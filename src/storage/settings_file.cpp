#include "storage/settings_file.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <algorithm>
#include <system_error>

namespace {

constexpr int lockedInterval = 250;        // ms: whoever holds a lock saves within a moment
constexpr int unwritableInterval = 1000;   // ms
constexpr int longestSave = 3000;          // ms between a lock and what is written under it
constexpr int letterCount = 6;             // of a temporary file's name
constexpr qint64 spareRoom = 8192;         // bytes, more than a panel's values ever take
constexpr std::uintmax_t plenty = 1 << 20; // bytes free, with which nobody need try

bool isSmall(QChar letter)
{
    return letter >= u'a' && letter <= u'z';
}

bool isCapital(QChar letter)
{
    return letter >= u'A' && letter <= u'Z';
}

/// A file is saved beside itself under six random letters first, and a process that is killed
/// leaves that.
bool hasTemporaryForm(const QString& name, const QString& fileName)
{
    const auto isLetter = [](QChar sign) { return isSmall(sign) || isCapital(sign); };
    return name.size() == fileName.size() + 1 + letterCount &&
           name.startsWith(fileName + u'.', Qt::CaseInsensitive) &&
           std::all_of(name.end() - letterCount, name.end(), isLetter);
}

/// A small letter before a capital one, as nobody writes it: nine of ten random names, but not a
/// user's ".backup". Spelt out: the first regular expression of a process brings half a megabyte of
/// code to memory.
bool looksRandom(const QString& name)
{
    return std::adjacent_find(name.end() - letterCount, name.end(), [](QChar first, QChar second) {
               return isSmall(first) && isCapital(second);
           }) != name.end();
}

/// A lock that was made just before tells a name that may be a user's. An invalid time is no lock.
bool isOfSave(const QString& temporary, const QDateTime& locked)
{
    const qint64 age = locked.msecsTo(QFileInfo(temporary).lastModified());
    return locked.isValid() && age >= 0 && age <= longestSave;
}

} // namespace

SettingsFile& SettingsFile::open(const QString& name)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder);
    const QString path = folder + u'/' + name;
    QObject* owner = QCoreApplication::instance();
    auto* known = owner->findChild<SettingsFile*>(path, Qt::FindDirectChildrenOnly);
    if (known == nullptr)
        return *new SettingsFile(path, owner);
    known->save();
    return *known;
}

SettingsFile::SettingsFile(const QString& fullName, QObject* owner)
    : QObject(owner)
    , path(fullName)
    , folder(QFileInfo(fullName).filesystemAbsolutePath())
    , retry(this)
{
    setObjectName(path);
    connect(&retry, &QTimer::timeout, this, &SettingsFile::save);
    removeLeftovers();
    settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
}

SettingsFile::~SettingsFile()
{
    if (!waiting.isEmpty() && lockIsFree())
        write();
}

/// A save whose process is killed leaves its lock, its half-written file or both. Under a lock that
/// is alive another process is saving, and they are its.
void SettingsFile::removeLeftovers() const
{
    const QDateTime locked = QFileInfo(lockPath()).lastModified();
    if (!lockIsFree())
        return;
    const QFileInfo file(path);
    const QStringList names = file.dir().entryList(QDir::Files, QDir::Unsorted);
    for (const QString& name : names) {
        const QString temporary = file.dir().filePath(name);
        if (hasTemporaryForm(name, file.fileName()) &&
            (looksRandom(name) || isOfSave(temporary, locked)))
            QFile::remove(temporary);
    }
}

QString SettingsFile::lockPath() const
{
    return path + QStringLiteral(".lock");
}

QString SettingsFile::text(const char* key, const QString& missing) const
{
    const QLatin1String name(key);
    const auto unsaved = waiting.constFind(name);
    if (unsaved != waiting.cend())
        return *unsaved;
    const QVariant value = settings->value(name, missing);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

void SettingsFile::store(const char* key, const QString& text)
{
    waiting.insert(QLatin1String(key), text);
    save();
}

void SettingsFile::save()
{
    // Without a change the file is only read, which takes no lock.
    if (waiting.isEmpty()) {
        settings->sync();
        return;
    }
    const bool lockFree = lockIsFree();
    if (lockFree)
        write();
    if (waiting.isEmpty()) {
        reported = false;
        retry.stop();
        return;
    }
    retry.start(lockFree ? unwritableInterval : lockedInterval);
    if (!reported)
        qDebug() << "Cannot save the settings yet:" << path;
    reported = true;
}

/// QSettings waits without limit for its lock file, and for half a minute when a process that was
/// killed has left an empty one. A lock is alive as long as its maker keeps it open, and one that
/// is open cannot be removed.
bool SettingsFile::lockIsFree() const
{
    const QString lock = lockPath();
    return !QFile::exists(lock) || QLockFile(lock).removeStaleLockFile() || QDir().rmdir(lock);
}

/// QSettings does not notice that a full disk does not take the new content, and puts an empty file
/// in place of the old one.
bool SettingsFile::diskHasRoom() const
{
    std::error_code error;
    const auto disk = std::filesystem::space(folder, error);
    if (!error && disk.available >= plenty)
        return true;
    QTemporaryFile probe(path);
    const QByteArray content(QFileInfo(path).size() + spareRoom, '\n');
    return probe.open() && probe.write(content) == content.size() && probe.flush();
}

void SettingsFile::write()
{
    if (!diskHasRoom())
        return;
    put();
    // Damage that was found on the way hides how the saving went.
    if (settings->status() == QSettings::FormatError)
        put();
    if (settings->status() == QSettings::NoError)
        waiting.clear();
}

void SettingsFile::put()
{
    // A status never gets better again: an object without a past tells what comes of this time.
    if (settings->status() != QSettings::NoError)
        settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
    for (auto value = waiting.cbegin(); value != waiting.cend(); ++value)
        settings->setValue(value.key(), value.value());
    settings->sync();
    // What the event loop would do later has been done, and it might wait for a lock by then.
    QCoreApplication::removePostedEvents(settings.get(), QEvent::UpdateRequest);
}
