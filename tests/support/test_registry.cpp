#include "support/test_main.h"

#include "support/settings_place.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

namespace {

/// Sets the variable to a fresh folder below `place`.
void pointTo(const char* variable, const QTemporaryDir& place, const QString& folder)
{
    QDir(place.path()).mkpath(folder);
    QFile::setPermissions(place.filePath(folder),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv(variable, QFile::encodeName(place.filePath(folder)));
}

using Make = std::unique_ptr<QObject> (*)();

std::map<std::string, Make>& tests()
{
    static std::map<std::string, Make> list;
    return list;
}

} // namespace

RegisteredTest::RegisteredTest(const char* file, Make make)
{
    tests().emplace(std::filesystem::path(file).stem().string(), make);
}

int runTest(int argc, char** argv)
{
    const auto test = argc > 1 ? tests().find(argv[1]) : tests().end();
    if (test == tests().end()) {
        std::fprintf(stderr, "usage: %s TEST [FUNCTION...]; its tests are:\n", argv[0]);
        for (const auto& [name, make] : tests())
            std::fprintf(stderr, "  %s\n", name.c_str());
        return 2;
    }
    // What follows is for Qt Test.
    std::rotate(argv + 1, argv + 2, argv + argc);
    --argc;

    const QTemporaryDir home;
    const QTemporaryDir settings(settingsPlace());
    if (!home.isValid() || !settings.isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return 1;
    }
    pointTo("HOME", home, QStringLiteral("home"));
    pointTo("XDG_DATA_HOME", settings, QStringLiteral("data"));
    pointTo("XDG_CONFIG_HOME", settings, QStringLiteral("config"));
    pointTo("TMPDIR", home, QStringLiteral("tmp"));
    pointTo("QUORVEL_RUNTIME_DIR", home, QStringLiteral("run"));
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Under names of our own, because Wine hides Qt's variables from Windows programs.
    if (qEnvironmentVariableIsSet("QUORVEL_TEST_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", qgetenv("QUORVEL_TEST_PLATFORM"));
    if (qEnvironmentVariableIsSet("QUORVEL_TEST_SCALE"))
        qputenv("QT_SCALE_FACTOR", qgetenv("QUORVEL_TEST_SCALE"));

    QApplication application(argc, argv);
    // The settings folder follows the application name; one of its own keeps parallel tests
    // apart where it does not follow the environment (Windows).
    QCoreApplication::setApplicationName(QStringLiteral("QuorvelDriver-%1-%2")
                                             .arg(QString::fromStdString(test->first))
                                             .arg(QCoreApplication::applicationPid()));
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir(data).removeRecursively();
    const int result = QTest::qExec(test->second().get(), argc, argv);
    QDir(data).removeRecursively();
    return result;
}
