#include "support/test_main.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"
#include "system/end_states.h"

#include <QDir>

using namespace std::chrono_literals;

namespace {

constexpr int stillRunning = 3; // exit code of the installer

QString installFolder()
{
    return QDir::cleanPath(Target::settingsFolder() +
                           QStringLiteral("/../../../AppData/Local/Programs/QuorvelDriver"));
}

QString installed(const QString& name)
{
    return installFolder() + QLatin1Char('/') + name;
}

QString onWindows(const QString& path)
{
    return QStringLiteral("Z:") +
           QDir(path).absolutePath().replace(QLatin1Char('/'), QLatin1Char('\\'));
}

} // namespace

/// Installing over a running copy and removing it in every state, the end of the session, and
/// what none of them may touch.
class SystemUpgrade : public EndStates
{
    Q_OBJECT

private slots:
    void cleanup();
    void upgradeInEveryState_data() { addStates(); }
    void upgradeInEveryState();
    void removalEndsIt_data()
    {
        addStates({QStringLiteral("both shown"), QStringLiteral("waiting in a sequence")});
    }
    void removalEndsIt();
    void copyElsewhereRunsOn();
    void busyFileChangesNothing();
    void sessionThatGoesOnEndsNothing();
    void visibleWindowsLeadToTheEnd();
    void sessionEnds();

private:
    int runInstaller(const QString& file);
    int install() { return runInstaller(qEnvironmentVariable("QUORVEL_SETUP")); }
    bool installForUse();
    /// Another program with a window; null when it did not start.
    std::unique_ptr<ChildProgram> startBystander();
    bool endSession(const QString& command);
};

void SystemUpgrade::cleanup()
{
    SystemTest::cleanup();
    // Started again by the installer, it is no child of this program.
    endSession(QStringLiteral("end"));
}

int SystemUpgrade::runInstaller(const QString& file)
{
    ChildProgram installer(Target::command(file) << QStringLiteral("/S"), folder().environment(),
                           folder().path(QStringLiteral("installer")));
    return installer.waitForExit(60s).value_or(-1);
}

bool SystemUpgrade::installForUse()
{
    const QString program = installed(QStringLiteral("QuorvelDriver.exe"));
    session().setProgram(program);
    return QFile::exists(program) || install() == 0;
}

std::unique_ptr<ChildProgram> SystemUpgrade::startBystander()
{
    auto program = std::make_unique<ChildProgram>(Target::command(QStringLiteral("notepad")),
                                                  folder().environment(),
                                                  folder().path(QStringLiteral("bystander")));
    return Desktop::waitForWindow(QStringLiteral("Notepad")) ? std::move(program) : nullptr;
}

bool SystemUpgrade::endSession(const QString& command)
{
    const QStringList words = Target::tool(QStringLiteral("quorvel-end-session"))
                              << command << QStringLiteral("QuorvelDriver.exe");
    return runTool(words.first(), words.mid(1), QProcessEnvironment::systemEnvironment())
        .has_value();
}

void SystemUpgrade::upgradeInEveryState()
{
    QVERIFY(installForUse());
    QVERIFY(reachState());
    const QString settings = folder().settingsFile(QStringLiteral("ka1.ini"));
    const bool hadSettings = QFile::exists(settings);
    QVERIFY(stateHolds());
    QCOMPARE(install(), 0);
    QCOMPARE(flawOfTheEnd(), QString());
    QVERIFY(!hadSettings || QFile::exists(settings));
    // It is left as it was found: running.
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(waitUntil([&] { return simulator().openHandles().value_or(0) > 0; }));
}

void SystemUpgrade::removalEndsIt()
{
    QVERIFY(installForUse());
    QVERIFY(reachState());
    QVERIFY(stateHolds());
    // The uninstaller goes on as a copy of itself and ends at once.
    QCOMPARE(runInstaller(installed(QStringLiteral("uninstall.exe"))), 0);
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(leftBehind(), QString());
    QVERIFY(waitUntil([] { return !QFile::exists(installed(QStringLiteral("uninstall.exe"))); }));
    QVERIFY(!QFile::exists(installed(QStringLiteral("QuorvelDriver.exe"))));
}

void SystemUpgrade::copyElsewhereRunsOn()
{
    QCOMPARE(install(), 0);
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QCOMPARE(install(), 0);
    QCOMPARE(runInstaller(installed(QStringLiteral("uninstall.exe"))), 0);
    QVERIFY(waitUntil([] { return !QFile::exists(installed(QStringLiteral("uninstall.exe"))); }));
    QVERIFY(panel().isRunning());
    QVERIFY(endSession(QStringLiteral("end")));
    QCOMPARE(flawOfTheEnd(), QString());
}

void SystemUpgrade::busyFileChangesNothing()
{
    QCOMPARE(install(), 0);
    const auto bystander = startBystander();
    QVERIFY(bystander != nullptr);
    // The copy that runs is another one; as far as the installer can tell, whoever uses the file
    // is another user.
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    const QString file = installed(QStringLiteral("QuorvelDriver.exe"));
    const ChildProgram holder(Target::tool(QStringLiteral("quorvel-end-session"))
                                  << QStringLiteral("hold") << onWindows(file)
                                  << QStringLiteral("120"),
                              folder().environment(), folder().path(QStringLiteral("holder")));
    QVERIFY(waitUntil([&] { return holder.outputLines().contains(QStringLiteral("holding")); }));
    const QDateTime written = QFileInfo(installed(QStringLiteral("uninstall.exe"))).lastModified();
    const auto count = QDir(installFolder()).count();

    QCOMPARE(install(), stillRunning);
    QVERIFY(panel().isRunning());
    QVERIFY(holder.isRunning());
    QVERIFY(bystander->isRunning());
    QVERIFY(Desktop::waitForWindow(QStringLiteral("Notepad")).has_value());
    QCOMPARE(QFileInfo(installed(QStringLiteral("uninstall.exe"))).lastModified(), written);
    QCOMPARE(QDir(installFolder()).count(), count);
}

void SystemUpgrade::sessionThatGoesOnEndsNothing()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Setup));
    QVERIFY(endSession(QStringLiteral("cancel")));
    QVERIFY(waitForWatch());
    QVERIFY(panel().isRunning());
    QVERIFY(Desktop::waitForWindow(QStringLiteral("^Quorvel KA1 ")).has_value());
}

void SystemUpgrade::visibleWindowsLeadToTheEnd()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Setup));
    QVERIFY(Desktop::waitForWindow(QStringLiteral("^Settings$")).has_value());
    QVERIFY(endSession(QStringLiteral("end-visible")));
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(leftBehind(), QString());
}

void SystemUpgrade::sessionEnds()
{
    QVERIFY(changeGain());
    // Wine's own end of the session, which terminates each program as soon as it has answered:
    // nothing that was set may be lost by that.
    const QStringList words = Target::command(QStringLiteral("wineboot"))
                              << QStringLiteral("--end-session");
    QVERIFY(runTool(words.first(), words.mid(1), folder().environment()).has_value());
    QVERIFY(panel().waitForEnd());
    QCOMPARE(flawOfTheGain(), QString());
}

QUORVEL_TEST_MAIN(SystemUpgrade)
#include "system_upgrade_test.moc"
