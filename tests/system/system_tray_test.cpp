#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QDir>
#include <QElapsedTimer>

namespace {

const QString mainWindow = QStringLiteral("^Quorvel Driver$");
const QString settingsDialog = QStringLiteral("^Settings$");

} // namespace

/// The icon in the notification area, its menu, and the ways in which the program ends.
class SystemTray : public SystemTest
{
    Q_OBJECT

private slots:
    void nothingIsShownAtStart();
    void clicksOpenTheWindow_data();
    void clicksOpenTheWindow();
    void doubleClickOpensTheWindow();
    void middleAndRightClickOpenNoWindow();
    void iconComesBackWithTheNotificationArea();
    void closingTheWindowHidesIt();
    void menuShowsBothWindows();
    void quitEndsInOrder();
    void upgradeCommandsTheDevice();
    void soundPanelStarts();
    void soundPanelMissing();
    void explorerIsRestarted();
    void explorerRestartFails();
    void explorerRestartTakesTooLong();

private:
    bool startWithoutDevice() { return session().startSimulator() && session().startPanel(); }
    /// Puts a program of this name, a shell script, in front of all others.
    bool placeCommand(const QString& name, const QString& script);
    /// Makes the desktop take two clicks for a double click however slowly they come.
    bool allowSlowDoubleClicks();
};

bool SystemTray::placeCommand(const QString& name, const QString& script)
{
    const QString commands = folder().path(QStringLiteral("commands"));
    QDir().mkpath(commands);
    QFile file(commands + QLatin1Char('/') + name);
    if (!file.open(QFile::WriteOnly))
        return false;
    file.write("#!/bin/sh\n" + script.toUtf8() + "\n");
    file.close();
    folder().setVariable(QStringLiteral("PATH"),
                         commands + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    return file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool SystemTray::allowSlowDoubleClicks()
{
    // The toolkit knows a few desktops' settings; this one's file is the simplest.
    folder().setVariable(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
    folder().setVariable(QStringLiteral("KDE_SESSION_VERSION"), QStringLiteral("5"));
    QFile file(folder().path(QStringLiteral("config/kdeglobals")));
    const QByteArray settings = "[KDE]\nDoubleClickInterval=60000\n";
    return file.open(QFile::WriteOnly) && file.write(settings) == settings.size();
}

void SystemTray::nothingIsShownAtStart()
{
    QVERIFY(startWithoutDevice());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(waitForLooks());
    QVERIFY(Desktop::hasNoWindow(QStringLiteral("^Quorvel")));
    QVERIFY(Desktop::hasNoWindow(settingsDialog));
}

void SystemTray::clicksOpenTheWindow_data()
{
    QTest::addColumn<bool>("twice");
    QTest::newRow("single click") << false;
    QTest::newRow("double click") << true;
}

void SystemTray::clicksOpenTheWindow()
{
    QFETCH(bool, twice);
    QVERIFY(startWithoutDevice());
    const auto icon = Desktop::waitForTrayIcon();
    QVERIFY(icon.has_value());
    QVERIFY(twice ? Desktop::doubleClick(icon->center()) : Desktop::click(icon->center()));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
    QVERIFY(waitForLooks());
    QVERIFY(Desktop::window(mainWindow).has_value());
    QVERIFY(Desktop::hasNoWindow(settingsDialog));
}

void SystemTray::doubleClickOpensTheWindow()
{
    QVERIFY(allowSlowDoubleClicks());
    QVERIFY(startWithoutDevice());
    const auto icon = Desktop::waitForTrayIcon();
    QVERIFY(icon.has_value());
    // The first click of a double click is a click, too; what it opens is put away.
    QVERIFY(Desktop::click(icon->center()));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
    QVERIFY(Desktop::key(QStringLiteral("alt+F4")));
    QVERIFY(Desktop::waitForNoWindow(mainWindow));
    QVERIFY(Desktop::clickAgain(icon->center()));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
}

void SystemTray::middleAndRightClickOpenNoWindow()
{
    QVERIFY(startWithoutDevice());
    const auto icon = Desktop::waitForTrayIcon();
    QVERIFY(icon.has_value());
    QVERIFY(Desktop::click(icon->center(), Desktop::MouseButton::Middle));
    QVERIFY(waitForLooks());
    QVERIFY(Desktop::hasNoWindow(QStringLiteral("^Quorvel")));
    TrayMenu menu;
    QVERIFY(menu.open());
    QVERIFY(menu.close());
    QVERIFY(waitForLooks());
    QVERIFY(Desktop::hasNoWindow(QStringLiteral("^Quorvel")));
}

/// As after a restart of the Explorer.
void SystemTray::iconComesBackWithTheNotificationArea()
{
    QVERIFY(startWithoutDevice());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(Desktop::restartNotificationArea());
    const auto icon = Desktop::waitForTrayIcon();
    QVERIFY(icon.has_value());
    QVERIFY(Desktop::click(icon->center()));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

void SystemTray::closingTheWindowHidesIt()
{
    QVERIFY(startWithoutDevice());
    auto window = session().openMainWindow();
    for (int round = 0; round < 2; ++round) {
        QVERIFY(window.has_value());
        QVERIFY(Desktop::activate(*window));
        QVERIFY(Desktop::key(QStringLiteral("alt+F4")));
        QVERIFY(Desktop::waitForNoWindow(mainWindow));
        QVERIFY(waitForLooks());
        QVERIFY(panel().isRunning());
        window = session().openMainWindow();
    }
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

void SystemTray::menuShowsBothWindows()
{
    QVERIFY(startWithoutDevice());
    QVERIFY(chooseFromTrayMenu(TrayEntry::MainWindow));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Setup));
    QVERIFY(Desktop::waitForWindow(settingsDialog).has_value());
}

void SystemTray::quitEndsInOrder()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Setup));
    QVERIFY(Desktop::waitForWindow(settingsDialog).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    const QStringList lines = panel().debugLines();
    // The dialog's last line; after it only its pipe thread ends.
    const qsizetype closed =
        lines.indexOf(QStringLiteral("Settings dialog closed and resources cleaned up."));
    QVERIFY(closed > 0);
    QCOMPARE(lines.constLast(), QStringLiteral("Pipe closed."));
    QVERIFY2(lines.size() - closed <= 3, qPrintable(lines.mid(closed).join(u'\n')));
    QCOMPARE(handles(0), 0);

    // Nothing of the guard is left: the next start is the first copy again.
    QVERIFY(session().startPanel());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
}

void SystemTray::upgradeCommandsTheDevice()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(simulator().clearTrace());
    QVERIFY(chooseFromTrayMenu(TrayEntry::UpgradeFirmware));
    const QStringList upgrade{QStringLiteral("0160").leftJustified(74, '0')};
    QCOMPARE(packets(upgrade), upgrade);
    QVERIFY(waitForWatch());
    QCOMPARE(packets(upgrade), upgrade);
}

void SystemTray::soundPanelStarts()
{
    const QString report = folder().path(QStringLiteral("control"));
    QVERIFY(placeCommand(
        QStringLiteral("control.exe"),
        QStringLiteral("printf '%s|' \"$@\" >'%1.new' && mv '%1.new' '%1'").arg(report)));
    QVERIFY(startWithoutDevice());
    QVERIFY(chooseFromTrayMenu(TrayEntry::SoundPanel));
    QVERIFY(panel().waitForLine(QStringLiteral("声音设置面板已打开。")));
    QVERIFY(waitUntil([&] { return QFile::exists(report); }));
    QFile file(report);
    QVERIFY(file.open(QFile::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("mmsys.cpl|"));
}

void SystemTray::soundPanelMissing()
{
    QVERIFY(startWithoutDevice());
    QVERIFY(chooseFromTrayMenu(TrayEntry::SoundPanel));
    const QString box = QStringLiteral("^错误$");
    QVERIFY(Desktop::waitForWindow(box).has_value());
    QVERIFY(Desktop::key(QStringLiteral("Return")));
    QVERIFY(Desktop::waitForNoWindow(box));
    QVERIFY(waitForLooks());
    QVERIFY(panel().isRunning());
    QVERIFY(!panel().debugLines().contains(QStringLiteral("声音设置面板已打开。")));
}

void SystemTray::explorerIsRestarted()
{
    const QString report = folder().path(QStringLiteral("cmd"));
    QVERIFY(placeCommand(QStringLiteral("cmd.exe"),
                         QStringLiteral("printf '%s|' \"$@\" >'%1'").arg(report)));
    QVERIFY(startWithoutDevice());
    QVERIFY(chooseFromTrayMenu(TrayEntry::RefreshAudioDevice));
    QVERIFY(panel().waitForLine(QStringLiteral("资源管理器已成功重启")));
    QFile file(report);
    QVERIFY(file.open(QFile::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("/c|taskkill /f /im explorer.exe && start explorer.exe|"));
}

void SystemTray::explorerRestartFails()
{
    QVERIFY(placeCommand(QStringLiteral("cmd.exe"),
                         QStringLiteral("echo out; echo err >&2; exit 128")));
    QVERIFY(startWithoutDevice());
    QVERIFY(chooseFromTrayMenu(TrayEntry::RefreshAudioDevice));
    QVERIFY(panel().waitForLine(QStringLiteral("错误输出: \"err\\n\"")));
    QVERIFY(waitForLooks());
    const QStringList lines = panel().debugLines();
    const auto first = lines.indexOf(QStringLiteral("命令执行失败，退出代码: 128"));
    QVERIFY(first >= 0);
    QCOMPARE(lines.mid(first, 3), QStringList({QStringLiteral("命令执行失败，退出代码: 128"),
                                               QStringLiteral("输出: \"out\\n\""),
                                               QStringLiteral("错误输出: \"err\\n\"")}));
    QVERIFY(!lines.contains(QStringLiteral("资源管理器已成功重启")));
}

void SystemTray::explorerRestartTakesTooLong()
{
    QVERIFY(placeCommand(QStringLiteral("cmd.exe"), QStringLiteral("exec sleep 30")));
    QVERIFY(startWithoutDevice());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(chooseFromTrayMenu(TrayEntry::RefreshAudioDevice));
    QVERIFY(panel().waitForLine(QStringLiteral("资源管理器已成功重启")));
    QVERIFY(clock.elapsed() >= 5000);
    const QStringList lines = panel().debugLines();
    const auto first = lines.indexOf(QStringLiteral("重启资源管理器超时"));
    QVERIFY(first >= 0);
    QVERIFY(lines.value(first + 1).startsWith(QStringLiteral("错误信息: \"")));
    QCOMPARE(lines.value(first + 2), QStringLiteral("资源管理器已成功重启"));
}

QUORVEL_TEST_MAIN(SystemTray)
#include "system_tray_test.moc"
