#pragma once

#include "storage/settings_file.h"

#include <QCoreApplication>
#include <QTimer>

inline QList<SettingsFile*> settingsFiles()
{
    return QCoreApplication::instance()->findChildren<SettingsFile*>(QString(),
                                                                     Qt::FindDirectChildrenOnly);
}

/// As at the start of the program: no INI file is open, no value waits to be saved.
inline void forgetSettingsFiles()
{
    qDeleteAll(settingsFiles());
}

/// The next turn of the timer that tries to read and save one again; false when none runs.
inline bool retrySettingsFile()
{
    for (SettingsFile* file : settingsFiles()) {
        auto* retry = file->findChild<QTimer*>();
        if (!retry->isActive())
            continue;
        const int interval = retry->interval();
        retry->setInterval(0);
        QCoreApplication::processEvents();
        if (retry->isActive())
            retry->setInterval(interval);
        return true;
    }
    return false;
}
