#pragma once

#include "storage/ini_text.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>

/// One INI file of the application data folder, saved with every value. What was not read is never
/// written: a file that is there but cannot be read now (another program has it for itself, no
/// permission, a folder that is not there yet and cannot be made) is left alone, with no default in
/// it either, until it can. While it can be read but not saved, or not read, what was stored stays
/// in memory, one debug line tells of it, and all is tried again once a second until it succeeds.
/// No call waits for another program; each takes what the file system takes for a small file. GUI
/// thread only.
class SettingsFile : public QObject
{
    Q_OBJECT

public:
    /// The file of this name ("ka1.ini") as it is on the disk now; makes its folder. It belongs to
    /// the application object, so that a value that waits to be saved outlives the window that
    /// stored it and is found again by the next one.
    static SettingsFile& open(const QString& name);

    /// Tries once more to save what waits in all files: for the end of the program.
    static void saveAll();

    /// The key's text: `missing` when there is no such key, empty when it holds no plain text but a
    /// list or an encoded value. `key` is "Group/Key".
    QString text(const char* key, const QString& missing = QString()) const;

    /// Puts a plain text in the file (see IniText), at once when that is possible. While the file
    /// is unread, a text that bringBack() has stored already is no change.
    void store(const char* key, const QString& text);

    /// Calls `values`, which reads texts, acts on them and may store what comes of it. While the
    /// file is unread that is only assumed and not saved; `values` is then called once more when
    /// the file has been read, unless `user` is gone by then or the file has been opened again.
    void bringBack(QObject* user, const std::function<void()>& values);

    /// Saves what waits and takes up what other programs have changed in the file.
    void save();

private:
    SettingsFile(const QString& path, QObject* owner);

    void tryAgain();
    void readAndWrite();
    void write();
    void report(const char* trouble);

    QString path;
    IniText known; ///< as the file was last read or written
    bool unread = true;
    QMap<QString, QString> waiting; ///< not saved yet
    QMap<QString, QString> assumed; ///< what bringBack() stored while the file is unread
    bool bringingBack = false;
    QPointer<QObject> user;       ///< to whom values are to be brought back
    std::function<void()> values; ///< by this, when the file has been read
    QTimer retry;
    const char* reported = nullptr; ///< the debug line of the present trouble
};
