#include "support/test_main.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"
#include "system/end_states.h"
#include "system/windows/installation.h"

#include <QDir>
#include <QScopeGuard>

using Installation::installed;

namespace {

// Exit codes of the installer.
constexpr int stillRunning = 3;
constexpr int anothersFolder = 4;

const QStringList otherFolder{QStringLiteral(R"(/D=C:\other)")};
const QString uninstallKey =
    QStringLiteral(R"(HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\QuorvelDriver)");

QString driveC(const QString& path)
{
    return qEnvironmentVariable("WINEPREFIX") + QStringLiteral("/drive_c/") + path;
}

/// A program that leaves a mark when it is started.
bool plant(const QString& file)
{
    QFile::remove(file);
    return QFile::copy(qEnvironmentVariable("QUORVEL_TOOLS") +
                           QStringLiteral("/quorvel-planted-program.exe"),
                       file);
}

QString markOf(const QString& planted)
{
    QFile file(planted + QStringLiteral(".ran"));
    if (!file.open(QFile::ReadOnly))
        return {};
    const QByteArray line = file.readAll();
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(line.constData()), line.size() / 2);
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
    void elevatedItLeavesTheStartToTheExplorer();
    void anothersFolderIsRefused_data();
    void anothersFolderIsRefused();
    void sessionThatGoesOnEndsNothing();
    void visibleWindowsLeadToTheEnd();
    void sessionEnds();

private:
    int runInstaller(const QString& file) { return Installation::run(folder(), file); }
    int install() { return runInstaller(Installation::setupFile()); }
    /// Tells Windows whether an administrator's programs run with fewer rights unless asked.
    bool setUserAccountControl(bool on);
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

bool SystemUpgrade::setUserAccountControl(bool on)
{
    const QStringList words{
        QStringLiteral("add"),
        QStringLiteral(R"(HKLM\Software\Microsoft\Windows\CurrentVersion\Policies\System)"),
        QStringLiteral("/v"),
        QStringLiteral("EnableLUA"),
        QStringLiteral("/t"),
        QStringLiteral("REG_DWORD"),
        QStringLiteral("/d"),
        on ? QStringLiteral("1") : QStringLiteral("0"),
        QStringLiteral("/f")};
    return Installation::runCommand(folder(), Target::command(QStringLiteral("reg")) + words) == 0;
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
                                  << QStringLiteral("hold") << Installation::onWindows(file)
                                  << QStringLiteral("120"),
                              folder().environment(), folder().path(QStringLiteral("holder")));
    QVERIFY(waitUntil([&] { return holder.outputLines().contains(QStringLiteral("holding")); }));
    const QDateTime written = QFileInfo(installed(QStringLiteral("uninstall.exe"))).lastModified();
    const auto count = QDir(installed()).count();

    QCOMPARE(install(), stillRunning);
    QVERIFY(panel().isRunning());
    QVERIFY(holder.isRunning());
    QVERIFY(bystander->isRunning());
    QVERIFY(Desktop::waitForWindow(QStringLiteral("Notepad")).has_value());
    QCOMPARE(QFileInfo(installed(QStringLiteral("uninstall.exe"))).lastModified(), written);
    QCOMPARE(QDir(installed()).count(), count);
}

void SystemUpgrade::elevatedItLeavesTheStartToTheExplorer()
{
    QVERIFY(installForUse());
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    const QString explorer = driveC(QStringLiteral("windows/explorer.exe"));
    QVERIFY(QFile::rename(explorer, explorer + QStringLiteral(".kept")));
    const auto restore = qScopeGuard([&] {
        QFile::remove(explorer);
        QFile::rename(explorer + QStringLiteral(".kept"), explorer);
        setUserAccountControl(false);
    });
    QVERIFY(plant(explorer));
    QVERIFY(setUserAccountControl(true));

    QCOMPARE(
        Installation::runCommand(folder(), Target::tool(QStringLiteral("quorvel-elevated"))
                                               << Installation::onWindows(Installation::setupFile())
                                               << QStringLiteral("/S")),
        0);
    QCOMPARE(flawOfTheEnd(), QString());
    QVERIFY(waitUntil([&] { return !markOf(explorer).isEmpty(); }));
    QVERIFY(markOf(explorer).endsWith(QStringLiteral("\\QuorvelDriver\\QuorvelDriver.exe\"")));
    QCOMPARE(leftBehind(), QString());
}

void SystemUpgrade::anothersFolderIsRefused_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("registered");
    const QString uninstaller = QStringLiteral("uninstall.exe");
    const QStringList usual;
    QTest::newRow("of another program") << QStringList{uninstaller} << usual;
    QTest::newRow("of a copy that is not the registered one")
        << QStringList{QStringLiteral("QuorvelDriver.exe"), uninstaller} << usual;
    QTest::newRow("in the place of the registered copy") << QStringList{uninstaller} << otherFolder;
}

void SystemUpgrade::anothersFolderIsRefused()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, registered);
    QDir other(driveC(QStringLiteral("other")));
    const auto restore = qScopeGuard([&] {
        QDir(installed()).removeRecursively();
        other.removeRecursively();
        Installation::runCommand(folder(), Target::command(QStringLiteral("reg"))
                                               << QStringLiteral("delete") << uninstallKey
                                               << QStringLiteral("/f"));
    });
    QCOMPARE(Installation::run(folder(), Installation::setupFile(), registered), 0);
    QVERIFY(other.removeRecursively() && other.mkpath(QStringLiteral(".")));
    for (const QString& file : files)
        QVERIFY(plant(other.filePath(file)));
    QCOMPARE(Installation::run(folder(), Installation::setupFile(), otherFolder), anothersFolder);
    QCOMPARE(other.entryList(QDir::Files), files);
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
