#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// The INI files of the settings folder, written and read as plain text: past QSettings' cache,
/// as another program would.
namespace IniFile {

/// Full path of a file such as "ka1.ini" in the application data folder.
QString path(const QString& name);

/// Replaces the file; keys are "Group/Key".
void write(const QString& name, const QMap<QString, QString>& values);
void writeRaw(const QString& name, const QByteArray& bytes);

/// All keys of the file with their texts; empty when there is no file.
QMap<QString, QString> read(const QString& name);

void remove(const QString& name);

} // namespace IniFile
