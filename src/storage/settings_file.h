#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QTimer>

#include <filesystem>
#include <memory>

class QSettings;

/// One INI file of the application data folder, saved with every value. It never waits: while the
/// file cannot be saved (a lock that another process holds, no permission, a full disk) the values
/// stay in memory, one debug line tells of it, and saving is tried again until it succeeds. GUI
/// thread only.
class SettingsFile : public QObject
{
    Q_OBJECT

public:
    /// The file of this name ("ka1.ini") as it is on the disk now; makes its folder. It belongs to
    /// the application object, so that a value that waits to be saved outlives the window that
    /// stored it and is found again by the next one.
    static SettingsFile& open(const QString& name);

    /// Tries a last time to save what still waits.
    ~SettingsFile() override;

    /// The key's text: `missing` when there is no such key, empty when it holds no plain text but a
    /// list or an encoded value. `key` is "Group/Key".
    QString text(const char* key, const QString& missing = QString()) const;

    /// Puts the text in the file, at once when that is possible.
    void store(const char* key, const QString& text);

    /// Saves what waits, then takes up what other programs have changed in the file.
    void save();

private:
    SettingsFile(const QString& path, QObject* owner);

    void removeLeftovers() const;
    QString lockPath() const;
    bool lockIsFree() const;
    bool diskHasRoom() const;
    void write();
    void put();

    QString path;
    std::filesystem::path folder;
    std::unique_ptr<QSettings> settings;
    QMap<QString, QString> waiting; ///< not saved yet
    QTimer retry;
    bool reported = false; ///< the debug line of the present trouble is out
};
