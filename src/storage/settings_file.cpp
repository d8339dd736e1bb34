#include "storage/settings_file.h"

#include "storage/whole_file.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

namespace {

constexpr int retryInterval = 1000; // ms

} // namespace

SettingsFile& SettingsFile::open(const QString& name)
{
    const QString path =
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + u'/' + name;
    QObject* owner = QCoreApplication::instance();
    auto* file = owner->findChild<SettingsFile*>(path, Qt::FindDirectChildrenOnly);
    if (file == nullptr)
        file = new SettingsFile(path, owner);
    file->unread = true;
    file->assumed.clear();
    file->user.clear();
    file->readAndWrite();
    return *file;
}

void SettingsFile::saveAll()
{
    const auto files = QCoreApplication::instance()->findChildren<SettingsFile*>(
        QString(), Qt::FindDirectChildrenOnly);
    for (SettingsFile* file : files)
        file->readAndWrite();
}

SettingsFile::SettingsFile(const QString& fullName, QObject* owner)
    : QObject(owner)
    , path(fullName)
    , retry(this)
{
    setObjectName(path);
    retry.setInterval(retryInterval);
    connect(&retry, &QTimer::timeout, this, &SettingsFile::tryAgain);
}

QString SettingsFile::text(const char* key, const QString& missing) const
{
    const QString name = QLatin1String(key);
    const auto unsaved = waiting.constFind(name);
    return unsaved != waiting.cend() ? *unsaved : known.text(name, missing);
}

void SettingsFile::store(const char* key, const QString& text)
{
    const QString name = QLatin1String(key);
    if (unread && bringingBack) {
        assumed.insert(name, text);
        return;
    }
    if (unread && !waiting.contains(name) && assumed.value(name) == text)
        return;
    waiting.insert(name, text);
    save();
}

void SettingsFile::bringBack(QObject* newUser, const std::function<void()>& newValues)
{
    bringingBack = true;
    newValues();
    bringingBack = false;
    user = unread ? newUser : nullptr;
    values = newValues;
}

void SettingsFile::save()
{
    // Reading a file at last moves the controls, which must not happen while one of them stores.
    if (!unread)
        readAndWrite();
}

void SettingsFile::tryAgain()
{
    const bool wasUnread = unread;
    readAndWrite();
    if (wasUnread && !unread && user != nullptr)
        values();
}

void SettingsFile::readAndWrite()
{
    const bool hasFolder = QDir().mkpath(QFileInfo(path).path());
    if (const auto content = hasFolder ? WholeFile::read(path) : std::nullopt) {
        known = IniText(*content);
        unread = false;
        write();
    }
    if (unread)
        report("Cannot read the settings yet:");
    else if (!waiting.isEmpty())
        report("Cannot save the settings yet:");
    else {
        retry.stop();
        reported = nullptr;
    }
}

void SettingsFile::write()
{
    IniText changed = known;
    for (auto value = waiting.cbegin(); value != waiting.cend(); ++value)
        changed.set(value.key(), value.value());
    const QByteArray content = changed.content();
    if (content != known.content() && !WholeFile::replace(path, content))
        return;
    known = changed;
    waiting.clear();
}

void SettingsFile::report(const char* trouble)
{
    if (!retry.isActive())
        retry.start();
    if (reported != trouble)
        qDebug() << trouble << path;
    reported = trouble;
}
