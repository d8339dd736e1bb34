#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/fake_program.h"
#include "support/test_main.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

/// The two desktop helpers with stand-ins for the programs that they start.
class DesktopHelpersTest : public QObject
{
    Q_OBJECT

private slots:
    void soundPanelOpens();
    void soundPanelMissing();
    void explorerRestarts();
    void explorerNotRunning();
    void explorerTakesTooLong();
    void noCommandInterpreter();
};

void DesktopHelpersTest::soundPanelOpens()
{
    const FakeProgram control("control.exe", "echo \"$@\" > \"$0.arguments\"");
    TrayIcon tray;
    DebugLog log;
    tray.openSoundPannel();
    QCOMPARE(log.take(), QStringList{"声音设置面板已打开。"});
    QTRY_COMPARE_WITH_TIMEOUT(control.output("arguments"), QByteArray("mmsys.cpl\n"), 2000);
}

void DesktopHelpersTest::soundPanelMissing()
{
    TrayIcon tray;
    QString title;
    QString text;
    QTimer::singleShot(0, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        title = box->windowTitle();
        text = box->text();
        QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    });
    DebugLog log;
    tray.openSoundPannel();
    QCOMPARE(title, QString("错误"));
    QCOMPARE(text, QString("无法打开声音设置面板，请检查系统设置。"));
    QVERIFY(!log.lines().contains("声音设置面板已打开。"));
}

void DesktopHelpersTest::explorerRestarts()
{
    const FakeProgram interpreter("cmd.exe",
                                  "for a in \"$@\"; do echo \"$a\"; done > \"$0.arguments\"");
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QCOMPARE(log.take(), QStringList{"资源管理器已成功重启"});
    QCOMPARE(interpreter.output("arguments"),
             QByteArray("/c\ntaskkill /f /im explorer.exe && start explorer.exe\n"));
}

void DesktopHelpersTest::explorerNotRunning()
{
    const FakeProgram interpreter("cmd.exe", "echo said; echo complained >&2; exit 128");
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QCOMPARE(log.take(),
             (QStringList{"warning: 命令执行失败，退出代码: 128", "warning: 输出: \"said\\n\"",
                          "warning: 错误输出: \"complained\\n\""}));
}

void DesktopHelpersTest::explorerTakesTooLong()
{
    const FakeProgram interpreter("cmd.exe", "exec sleep 30");
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

void DesktopHelpersTest::noCommandInterpreter()
{
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    const QStringList lines = log.take();
    QCOMPARE(lines.value(0), QString("warning: 重启资源管理器超时"));
    QVERIFY(!lines.contains("资源管理器已成功重启"));
}

QUORVEL_TEST_MAIN(DesktopHelpersTest)
#include "desktop_helpers_test.moc"
