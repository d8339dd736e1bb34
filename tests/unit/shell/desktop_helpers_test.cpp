#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/fake_program.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QTest>

/// The restart of the Explorer with a stand-in for the command interpreter.
class DesktopHelpersTest : public QObject
{
    Q_OBJECT

private slots:
    void explorerRestarts();
    void explorerNotRunning();
    void explorerTakesTooLong();
};

void DesktopHelpersTest::explorerRestarts()
{
    const FakeProgram interpreter("cmd.exe");
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QCOMPARE(log.take(), QStringList{"资源管理器已成功重启"});
    QCOMPARE(interpreter.arguments(),
             (QStringList{"/c", "taskkill /f /im explorer.exe && start explorer.exe"}));
}

void DesktopHelpersTest::explorerNotRunning()
{
    const FakeProgram interpreter("cmd.exe", {"said\n", "complained\n", 128, 0});
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QCOMPARE(log.take(),
             (QStringList{"warning: 命令执行失败，退出代码: 128", "warning: 输出: \"said\\n\"",
                          "warning: 错误输出: \"complained\\n\""}));
}

void DesktopHelpersTest::explorerTakesTooLong()
{
    const FakeProgram interpreter("cmd.exe", {{}, {}, 0, 30});
    TrayIcon tray;
    DebugLog log;
    QElapsedTimer clock;
    clock.start();
    tray.refreshDeviceList();
    QVERIFY(clock.elapsed() >= 5000);
    QVERIFY(clock.elapsed() < 10000);
    const QStringList lines = log.take();
    QCOMPARE(lines.value(0), QString("warning: 重启资源管理器超时"));
    QVERIFY(lines.value(1).startsWith("warning: 错误信息: \""));
    QCOMPARE(lines.value(2), QString("资源管理器已成功重启"));
}

QUORVEL_TEST_MAIN(DesktopHelpersTest)
#include "desktop_helpers_test.moc"
