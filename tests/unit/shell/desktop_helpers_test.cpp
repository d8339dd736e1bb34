#include "platform/system_folder.h"
#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/fake_program.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

namespace {

QString interpreterFolder;

} // namespace

/// In place of the system's.
std::wstring systemFolder()
{
    return interpreterFolder.toStdWString();
}

/// The restart of the Explorer with a stand-in for the command interpreter.
class DesktopHelpersTest : public QObject
{
    Q_OBJECT

private slots:
    void explorerRestarts();
    void explorerNotRunning();
    void noInterpreter();
};

void DesktopHelpersTest::explorerRestarts()
{
    const FakeProgram interpreter("cmd.exe");
    interpreterFolder = interpreter.folder();
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    // Where the Explorer comes up.
    QCOMPARE(QDir::currentPath(), interpreterFolder);
    QCOMPARE(log.take(), QStringList{"资源管理器已成功重启"});
    QCOMPARE(interpreter.arguments(),
             (QStringList{"/c", "taskkill /f /im explorer.exe && start explorer.exe"}));
}

void DesktopHelpersTest::explorerNotRunning()
{
    const FakeProgram interpreter("cmd.exe", {"said\n", "complained\n", 128, 0});
    interpreterFolder = interpreter.folder();
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QCOMPARE(log.take(),
             (QStringList{"warning: 命令执行失败，退出代码: 128", "warning: 输出: \"said\\n\"",
                          "warning: 错误输出: \"complained\\n\""}));
}

void DesktopHelpersTest::noInterpreter()
{
    interpreterFolder = QCoreApplication::applicationDirPath();
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 5);
    QCOMPARE(lines[0], QString("warning: 重启资源管理器超时"));
    QVERIFY(lines[1].startsWith("warning: 错误信息: \""));
    QVERIFY(lines[2].startsWith("warning: 命令执行失败，退出代码: "));
    QCOMPARE(lines[3], QString("warning: 输出: \"\""));
    QCOMPARE(lines[4], QString("warning: 错误输出: \"\""));
}

QUORVEL_TEST_MAIN(DesktopHelpersTest)
#include "desktop_helpers_test.moc"
