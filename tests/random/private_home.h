#pragma once

#include "support/settings_place.h"

#include <QTemporaryDir>

/// Folders of this process' own for its settings, its temporary files and its programs, removed at
/// the end; and the off-screen platform. Before the application object.
class PrivateHome
{
public:
    PrivateHome();

private:
    void pointTo(const char* variable, const QString& folder) const;
    void addCommandInterpreter() const;

    QTemporaryDir home{settingsPlace()};
    QTemporaryDir programs; ///< not everything in memory may be started
};
