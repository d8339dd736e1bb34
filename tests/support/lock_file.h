#pragma once

#include <QString>

/// The lock file that guards the saving of an INI file such as "ka1.ini".
namespace LockFiles {

/// In milliseconds: more than anything takes on a busy machine, and far less than the half minute
/// that a lock must be old before the toolkit takes it for a leftover.
inline constexpr int patience = 10000;

QString path(const QString& iniFile);

/// Adds the column "lock" and a row for each kind of lock that no process holds: what processes
/// that were killed have left, and worse.
void addLeftoverRows();

/// Puts the lock of the present row into the application data folder.
void plant(const QString& iniFile);

} // namespace LockFiles
