#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"

#include "system/desktop/wait_until.h"
#include <QElapsedTimer>
#include <QThread>

using namespace std::chrono_literals;

/// One copy only, a start without anything there, and what the program costs while nothing
/// happens.
class SystemStart : public SystemTest
{
    Q_OBJECT

private slots:
    void secondCopyLeavesAtOnce();
    void copiesStartedTogetherLeaveOne();
    void startAfterAKillWorks();
    void waitsWithoutSimulator();
    void oneWatcherOpensAndClosesTheDevice();
    void everyModelIsRecognised_data();
    void everyModelIsRecognised();
    void unknownModelIsNamed();
    void idlingIsCheap();
};

void SystemStart::secondCopyLeavesAtOnce()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    const int handles = simulator().openHandles().value_or(-1);
    const auto copy = session().startCopy();
    QCOMPARE(copy->waitForExit().value_or(-1), 0);
    QVERIFY(copy->debugLines().contains(QStringLiteral("Quorvel Mixer 已经在运行中。")));
    QVERIFY(!copy->debugLines().contains(QStringLiteral("Settings dialog created.")));

    QVERIFY(panel().isRunning());
    QCOMPARE(simulator().openHandles().value_or(-1), handles);
    QCOMPARE(Desktop::trayIcons().size(), 1);
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

void SystemStart::copiesStartedTogetherLeaveOne()
{
    std::vector<std::unique_ptr<ChildProgram>> copies;
    for (int i = 0; i < 4; ++i)
        copies.push_back(session().startCopy());
    const auto running = [&] {
        return std::count_if(copies.begin(), copies.end(),
                             [](const auto& copy) { return copy->isRunning(); });
    };
    QTRY_COMPARE_WITH_TIMEOUT(running(), 1, 15000);
    QCOMPARE(std::count_if(copies.begin(), copies.end(),
                           [](const auto& copy) {
                               return copy->debugLines().contains(
                                   QStringLiteral("Quorvel Mixer 已经在运行中。"));
                           }),
             3);
}

void SystemStart::startAfterAKillWorks()
{
    for (int round = 0; round < 2; ++round) {
        QVERIFY(session().startPanel());
        QVERIFY(Desktop::waitForTrayIcon().has_value());
        panel().kill();
    }
    QVERIFY(session().startPanel());
    const auto copy = session().startCopy();
    QCOMPARE(copy->waitForExit().value_or(-1), 0);
    QVERIFY(copy->debugLines().contains(QStringLiteral("Quorvel Mixer 已经在运行中。")));
    QVERIFY(panel().isRunning());
}

void SystemStart::waitsWithoutSimulator()
{
    QVERIFY(session().startPanel());
    QVERIFY(panel().waitForLine(QStringLiteral("Device PID: 0"), 2));
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

void SystemStart::oneWatcherOpensAndClosesTheDevice()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    // The settings dialog, the panel and the connection's watcher each hold a handle of their own.
    QTRY_COMPARE(simulator().openHandles().value_or(-1), 3);
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QVERIFY(panel().waitForExit().has_value());
    QCOMPARE(simulator().openHandles().value_or(-1), 0);
}

void SystemStart::everyModelIsRecognised_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("number");
    QTest::newRow("KA1") << QStringLiteral("ka1") << QStringLiteral("1");
    QTest::newRow("KA2") << QStringLiteral("ka2") << QStringLiteral("2");
    QTest::newRow("KS") << QStringLiteral("ks") << QStringLiteral("15");
}

void SystemStart::everyModelIsRecognised()
{
    QFETCH(QString, model);
    QFETCH(QString, number);
    QVERIFY(arrive(model).has_value());
    QVERIFY(panel().waitForLine(QStringLiteral("Adding %1 widget to layout.").arg(model)));
    QVERIFY(panel().waitForLine(QStringLiteral("Device found with PID: ") + number));
    QVERIFY(QFile::exists(folder().settingsFile(model + QStringLiteral(".ini"))));
}

void SystemStart::unknownModelIsNamed()
{
    QVERIFY(session().startSimulator());
    QVERIFY(simulator().plug(QStringLiteral("7")));
    QVERIFY(session().startPanel());
    QVERIFY(panel().waitForLine(QStringLiteral("Unknown device PID: 7"), 2));
    QVERIFY(session().openMainWindow().has_value());
    QVERIFY(!Desktop::windows(QStringLiteral("^Quorvel Driver$")).isEmpty());
}

void SystemStart::idlingIsCheap()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(simulator().moveLevels());
    const auto before = ProcessFigures::of(panel().processId());
    QElapsedTimer clock;
    clock.start();
    QThread::sleep(5);
    const auto after = ProcessFigures::of(panel().processId());
    const qint64 span = clock.elapsed();
    QVERIFY(before && after);
    QVERIFY(before->processorTime.count() > 0);
    const qint64 used = (after->processorTime - before->processorTime).count();
    qInfo("%lld ms of processor time in %lld ms, window shown and levels moving", used, span);
    // Far above what it takes, also under a sanitizer; a busy loop takes all of it.
    QVERIFY(used < span / 4);
}

QUORVEL_TEST_MAIN(SystemStart)
#include "system_start_test.moc"
