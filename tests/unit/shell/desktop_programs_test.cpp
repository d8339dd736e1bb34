#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/fake_program.h"
#include "support/test_main.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

/// The two desktop helpers where the programs that they start can be replaced and absent.
class DesktopProgramsTest : public QObject
{
    Q_OBJECT

private slots:
    void soundPanelOpens();
    void soundPanelMissing();
    void noCommandInterpreter();
};

void DesktopProgramsTest::soundPanelOpens()
{
    const FakeProgram control("control.exe");
    TrayIcon tray;
    DebugLog log;
    tray.openSoundPannel();
    QCOMPARE(log.take(), QStringList{"声音设置面板已打开。"});
    QTRY_COMPARE_WITH_TIMEOUT(control.arguments(), QStringList{"mmsys.cpl"}, 5000);
}

void DesktopProgramsTest::soundPanelMissing()
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
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QVERIFY(box->parent() == nullptr);
        QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    });
    DebugLog log;
    tray.openSoundPannel();
    QCOMPARE(title, QString("错误"));
    QCOMPARE(text, QString("无法打开声音设置面板，请检查系统设置。"));
    QVERIFY(!log.lines().contains("声音设置面板已打开。"));
}

void DesktopProgramsTest::noCommandInterpreter()
{
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    const QStringList lines = log.take();
    QCOMPARE(lines.value(0), QString("warning: 重启资源管理器超时"));
    QVERIFY(!lines.contains("资源管理器已成功重启"));
}

QUORVEL_TEST_MAIN(DesktopProgramsTest)
#include "desktop_programs_test.moc"
