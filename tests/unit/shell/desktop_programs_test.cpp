#include "platform/system_folder.h"
#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/fake_program.h"
#include "support/patience.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

QString programFolder;
bool timeIsUp = false; ///< whoever waits for a program has waited long enough
QList<int> timeLimits; ///< milliseconds, of each wait

} // namespace

/// In place of the system's.
std::wstring systemFolder()
{
    return programFolder.toStdWString();
}

/// In place of the toolkit's.
bool QProcess::waitForFinished(int milliseconds)
{
    timeLimits.append(milliseconds);
    return !timeIsUp &&
           QTest::qWaitFor([this] { return state() == QProcess::NotRunning; }, patience);
}

/// The two desktop helpers where the programs that they start can be replaced and absent.
class DesktopProgramsTest : public QObject
{
    Q_OBJECT

private slots:
    void soundPanelOpens();
    void soundPanelMissing();
    void plantedInterpreter();
    void explorerTakesTooLong();
};

void DesktopProgramsTest::soundPanelOpens()
{
    const FakeProgram control("control.exe");
    programFolder = control.folder();
    TrayIcon tray;
    DebugLog log;
    tray.openSoundPannel();
    // Windows looks for the program in the current folder first.
    QCOMPARE(QDir::currentPath(), programFolder);
    QCOMPARE(log.take(), QStringList{"声音设置面板已打开。"});
    QUORVEL_TRY_COMPARE(control.arguments(), QStringList{"mmsys.cpl"});
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

/// A program of the same name that is found first.
void DesktopProgramsTest::plantedInterpreter()
{
    const FakeProgram interpreter("cmd.exe");
    const FakeProgram planted("cmd.exe");
    programFolder = interpreter.folder();
    TrayIcon tray;
    DebugLog log;
    tray.refreshDeviceList();
    QVERIFY(!interpreter.arguments().isEmpty());
    QVERIFY(planted.arguments().isEmpty());
}

void DesktopProgramsTest::explorerTakesTooLong()
{
    const FakeProgram interpreter("cmd.exe", {{}, {}, 0, 600});
    programFolder = interpreter.folder();
    TrayIcon tray;
    DebugLog log;
    timeLimits.clear();
    timeIsUp = true;
    tray.refreshDeviceList();
    timeIsUp = false;
    // Where the toolkit can be replaced in its own calls too, that of its destructor follows.
    QCOMPARE(timeLimits.value(0), 5000);
    const QStringList lines = log.take();
    QCOMPARE(lines.value(0), QString("warning: 重启资源管理器超时"));
    QVERIFY(lines.value(1).startsWith("warning: 错误信息: \""));
    QCOMPARE(lines.value(2), QString("资源管理器已成功重启"));
}

QUORVEL_TEST_MAIN(DesktopProgramsTest)
#include "desktop_programs_test.moc"
