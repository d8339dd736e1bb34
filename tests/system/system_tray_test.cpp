#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QDir>

namespace {

const QString mainWindow = QStringLiteral("^Quorvel ");
const QString settingsDialog = QStringLiteral("^Settings$");

} // namespace

/// The icon in the notification area and its menu.
class SystemTray : public SystemTest
{
    Q_OBJECT

private slots:
    void iconLeadsToEverything();
    void iconComesBackWithTheNotificationArea();
    void menuStartsOtherPrograms();

private:
    bool start() { return session().startSimulator() && session().startPanel(); }
    bool nothingIsShown();
    /// Puts a program of this name, a shell script, in front of all others. Its arguments come into
    /// the file `name`.arguments beside it.
    bool placeCommand(const QString& name);
    QString commandFile(const QString& name);
    QByteArray argumentsOf(const QString& name);
    /// Makes the desktop take two clicks for a double click however slowly they come.
    bool allowSlowDoubleClicks();
};

QString SystemTray::commandFile(const QString& name)
{
    return folder().path(QStringLiteral("commands/")) + name;
}

bool SystemTray::placeCommand(const QString& name)
{
    const QString fileName = commandFile(name);
    const QString commands = QFileInfo(fileName).path();
    QFile file(fileName);
    if (!QDir().mkpath(commands) || !file.open(QFile::WriteOnly))
        return false;
    file.write("#!/bin/sh\nprintf '%s|' \"$@\" >\"$0.new\" && mv \"$0.new\" \"$0.arguments\"\n");
    file.close();
    folder().setVariable(QStringLiteral("PATH"),
                         commands + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    return file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QByteArray SystemTray::argumentsOf(const QString& name)
{
    QFile file(commandFile(name) + QStringLiteral(".arguments"));
    waitUntil([&] { return file.exists(); });
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("not started");
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

bool SystemTray::nothingIsShown()
{
    return Desktop::hasNoWindow(mainWindow) && Desktop::hasNoWindow(settingsDialog);
}

void SystemTray::iconLeadsToEverything()
{
    QVERIFY(start());
    const auto icon = Desktop::waitForTrayIcon();
    QVERIFY(icon.has_value());
    QVERIFY(Desktop::click(icon->center(), Desktop::MouseButton::Middle));
    TrayMenu menu;
    QVERIFY(menu.open());
    QVERIFY(menu.close());
    QVERIFY(waitForLooks());
    QVERIFY(nothingIsShown());

    QVERIFY(Desktop::click(icon->center()));
    const auto window = Desktop::waitForWindow(QStringLiteral("^Quorvel Driver$"));
    QVERIFY(window.has_value());
    QVERIFY(Desktop::hasNoWindow(settingsDialog));
    QVERIFY(Desktop::activate(*window));
    QVERIFY(Desktop::key(QStringLiteral("alt+F4")));
    QVERIFY(Desktop::waitForNoWindow(mainWindow));
    QVERIFY(Desktop::doubleClick(icon->center()));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());

    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(panel().waitForLine(QStringLiteral("设置初始化完成")));
    QVERIFY(simulator().clearTrace());
    QVERIFY(chooseFromTrayMenu(TrayEntry::UpgradeFirmware));
    const QStringList upgrade{QStringLiteral("0160").leftJustified(74, '0')};
    QCOMPARE(packets(upgrade), upgrade);

    QVERIFY(chooseFromTrayMenu(TrayEntry::Setup));
    QVERIFY(Desktop::waitForWindow(settingsDialog).has_value());
    QCOMPARE(packets(upgrade), upgrade);
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    QCOMPARE(handles(0), 0);
}

/// As after a restart of the Explorer.
void SystemTray::iconComesBackWithTheNotificationArea()
{
    QVERIFY(allowSlowDoubleClicks());
    QVERIFY(start());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(Desktop::restartNotificationArea());
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

void SystemTray::menuStartsOtherPrograms()
{
    const QString control = QStringLiteral("control.exe");
    const QString interpreter = QStringLiteral("cmd.exe");
    QVERIFY(placeCommand(interpreter));
    QVERIFY(start());
    QVERIFY(chooseFromTrayMenu(TrayEntry::RefreshAudioDevice));
    QVERIFY(panel().waitForLine(QStringLiteral("资源管理器已成功重启")));
    QCOMPARE(argumentsOf(interpreter),
             QByteArray("/c|taskkill /f /im explorer.exe && start explorer.exe|"));

    const QString started = QStringLiteral("声音设置面板已打开。");
    QVERIFY(chooseFromTrayMenu(TrayEntry::SoundPanel));
    const QString box = QStringLiteral("^错误$");
    QVERIFY(Desktop::waitForWindow(box).has_value());
    QVERIFY(Desktop::key(QStringLiteral("Return")));
    QVERIFY(Desktop::waitForNoWindow(box));
    QVERIFY(!panel().debugLines().contains(started));

    QVERIFY(placeCommand(control));
    QVERIFY(chooseFromTrayMenu(TrayEntry::SoundPanel));
    QVERIFY(panel().waitForLine(started));
    QCOMPARE(argumentsOf(control), QByteArray("mmsys.cpl|"));

    QVERIFY(chooseFromTrayMenu(TrayEntry::MainWindow));
    QVERIFY(Desktop::waitForWindow(mainWindow).has_value());
}

QUORVEL_TEST_MAIN(SystemTray)
#include "system_tray_test.moc"
