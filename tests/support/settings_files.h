#pragma once

#include "storage/settings_file.h"

#include <QCoreApplication>

/// As at the start of the program: no INI file is open, no value waits to be saved.
inline void forgetSettingsFiles()
{
    qDeleteAll(QCoreApplication::instance()->findChildren<SettingsFile*>(
        QString(), Qt::FindDirectChildrenOnly));
}
