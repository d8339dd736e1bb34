#pragma once

#include <QString>

/// The lock file that guards the saving of an INI file such as "ka1.ini".
namespace LockFile {

QString path(const QString& iniFile);

/// Adds the column "lock" and a row for each kind of lock that no process holds: what processes
/// that were killed have left, and worse.
void addLeftoverRows();

/// Puts the lock of the present row into the application data folder.
void plant(const QString& iniFile);

} // namespace LockFile
