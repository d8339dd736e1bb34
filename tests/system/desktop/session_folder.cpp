#include "system/desktop/session_folder.h"

#include "system/desktop/target.h"

#include <QDir>
#include <QTemporaryDir>

SessionFolder::SessionFolder()
    : variables(QProcessEnvironment::systemEnvironment())
{
    QTemporaryDir folder(qEnvironmentVariable("QUORVEL_DESKTOP_DIR", QDir::tempPath()) +
                         QStringLiteral("/session-XXXXXX"));
    folder.setAutoRemove(false);
    root = folder.path();
    const QList<QPair<QString, QString>> folders{
        {QStringLiteral("HOME"), QStringLiteral("home")},
        {QStringLiteral("XDG_DATA_HOME"), QStringLiteral("data")},
        {QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("config")},
        {QStringLiteral("TMPDIR"), QStringLiteral("tmp")},
        {QStringLiteral("QUORVEL_RUNTIME_DIR"), QStringLiteral("run")},
    };
    for (const auto& [variable, name] : folders) {
        QDir().mkpath(path(name));
        QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        variables.insert(variable, path(name));
    }
    // Windows has one settings folder for all sessions.
    if (Target::isWindows())
        QDir(Target::settingsFolder()).removeRecursively();
    variables.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    variables.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    variables.insert(QStringLiteral("LC_ALL"), Target::utf8Locale());
}

QString SessionFolder::settingsFile(const QString& name) const
{
    if (Target::isWindows())
        return Target::settingsFolder() + QLatin1Char('/') + name;
    return path(QStringLiteral("data/QuorvelDriver/") + name);
}
