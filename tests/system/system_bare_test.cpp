#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/wait_until.h"

#include <QSystemTrayIcon>

using namespace std::chrono_literals;

/// A desktop without a notification area.
class SystemBare : public SystemTest
{
    Q_OBJECT

private slots:
    void runsWithoutTray();
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
    QVERIFY(Desktop::windows(QStringLiteral("^Quorvel")).isEmpty());

    panel().terminate();
    QVERIFY(waitUntil([this] { return !panel().isRunning(); }, 10s));
    QTRY_COMPARE(simulator().openHandles().value_or(-1), 0);
}

QUORVEL_TEST_MAIN(SystemBare)
#include "system_bare_test.moc"
