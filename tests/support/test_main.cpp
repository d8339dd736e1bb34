#include "support/test_main.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {

/// Sets the variable to a fresh folder below `home`.
void pointTo(const char* variable, const QTemporaryDir& home, const QString& folder)
{
    QDir(home.path()).mkpath(folder);
    QFile::setPermissions(home.filePath(folder),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv(variable, QFile::encodeName(home.filePath(folder)));
}

} // namespace

int runTest(int argc, char** argv, std::unique_ptr<QObject> (*make)())
{
    const QTemporaryDir home;
    if (!home.isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return 1;
    }
    pointTo("HOME", home, QStringLiteral("home"));
    pointTo("XDG_DATA_HOME", home, QStringLiteral("home/data"));
    pointTo("XDG_CONFIG_HOME", home, QStringLiteral("home/config"));
    pointTo("TMPDIR", home, QStringLiteral("tmp"));
    pointTo("QUORVEL_RUNTIME_DIR", home, QStringLiteral("run"));
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Under a name of our own, because Wine hides Qt's variables from Windows programs.
    if (qEnvironmentVariableIsSet("QUORVEL_TEST_SCALE"))
        qputenv("QT_SCALE_FACTOR", qgetenv("QUORVEL_TEST_SCALE"));

    QApplication application(argc, argv);
    // The settings folder follows the application name; one of its own keeps parallel tests
    // apart where it does not follow the environment (Windows).
    QCoreApplication::setApplicationName(
        QStringLiteral("QuorvelDriver-%1-%2")
            .arg(QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName())
            .arg(QCoreApplication::applicationPid()));
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir(data).removeRecursively();
    const std::unique_ptr<QObject> test = make();
    const int result = QTest::qExec(test.get(), argc, argv);
    QDir(data).removeRecursively();
    return result;
}
