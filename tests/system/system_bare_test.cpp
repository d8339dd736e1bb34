#include "support/test_main.h"
#include "system/desktop/system_test.h"

#include <QFileInfo>
#include <QSharedMemory>
#include <QSystemTrayIcon>

/// Surroundings that lack something: a notification area, a place for the marker of the running
/// copy.
class SystemBare : public SystemTest
{
    Q_OBJECT

private slots:
    void runsWithoutTray();
    void leavesWithoutMarker();
};

void SystemBare::runsWithoutTray()
{
    QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
    QVERIFY(session().startSimulator());
    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(session().startPanel());
    QVERIFY(panel().waitForLine(QStringLiteral("Device found with PID: 1")));
    QVERIFY(panel().waitForLine(QStringLiteral("设置初始化完成")));
    QVERIFY(panel().isRunning());
    QVERIFY(waitForWatch());
    QVERIFY(Desktop::hasNoWindow(QStringLiteral("^Quorvel")));

    panel().terminate();
    QCOMPARE(panel().waitForExit(), std::optional(0));
    QCOMPARE(handles(0), 0);
}

void SystemBare::leavesWithoutMarker()
{
    // The marker's native name is made of a file, which here can neither be read nor made.
    const QSharedMemory marker(QStringLiteral("QuorvelQtDriverSharedMemory"));
    const QString name = QFileInfo(marker.nativeKey()).fileName();
    QVERIFY(QFile::link(folder().path(QStringLiteral("nowhere")),
                        folder().path(QStringLiteral("tmp/")) + name));
    const auto copy = session().startCopy();
    // -1, of which the system keeps the lowest eight bits.
    QCOMPARE(copy->waitForExit().value_or(-1), 255);
    QVERIFY(copy->debugLines().contains(QStringLiteral("无法创建共享内存，程序退出。")));
    QVERIFY(!copy->debugLines().contains(QStringLiteral("Settings dialog created.")));
}

QUORVEL_TEST_MAIN(SystemBare)
#include "system_bare_test.moc"
