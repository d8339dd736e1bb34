#pragma once

#include "system/desktop/session_folder.h"

#include <QStringList>

/// The installer, and what it has installed for the user of this Windows.
namespace Installation {

/// A file of the installed program, or its folder.
QString installed(const QString& name = {});

QString setupFile();

/// A path of this machine as Windows programs know it.
QString onWindows(const QString& path);

/// Runs installer or uninstaller without questions and returns its exit code; -1 when it did not
/// end. The uninstaller goes on as a copy of itself and ends at once.
int run(SessionFolder& folder, const QString& file, const QStringList& options = {});

/// Runs a command of the target in the same way.
int runCommand(SessionFolder& folder, const QStringList& command);

} // namespace Installation
