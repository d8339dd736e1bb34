#pragma once

#include <QProcessEnvironment>
#include <QString>

/// The private folders of one run of the panel, so that runs never meet: home, settings,
/// temporary files and the simulator's runtime folder. They live below QUORVEL_DESKTOP_DIR and
/// go when the desktop goes.
class SessionFolder
{
public:
    SessionFolder();

    /// What programs of this session are started with.
    QProcessEnvironment environment() const { return variables; }
    void setVariable(const QString& name, const QString& value) { variables.insert(name, value); }

    QString path(const QString& name) const { return root + QLatin1Char('/') + name; }

    /// The full name of one of the panel's settings files ("ka1.ini").
    QString settingsFile(const QString& name) const;

private:
    QString root;
    QProcessEnvironment variables;
};
