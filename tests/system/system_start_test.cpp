#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>

namespace {

/// In a second. Nine are what the timers of a connected panel take; a frame rate is far above.
constexpr qint64 mostWakeUps = 40;

} // namespace

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
    QCOMPARE(handles(3), 3);
    const auto copy = session().startCopy();
    QCOMPARE(copy->waitForExit().value_or(-1), 0);
    QVERIFY(copy->debugLines().contains(QStringLiteral("Quorvel Mixer 已经在运行中。")));
    QVERIFY(!copy->debugLines().contains(QStringLiteral("Settings dialog created.")));

    QVERIFY(panel().isRunning());
    QVERIFY(waitForWatch());
    QCOMPARE(handles(3), 3);
    QCOMPARE(Desktop::trayIcons().value_or(QList<QRect>()).size(), 1);
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
    const auto saying = [&](const QString& line) {
        return std::count_if(copies.begin(), copies.end(),
                             [&](const auto& copy) { return copy->debugLines().contains(line); });
    };
    const QString created = QStringLiteral("Settings dialog created.");
    QVERIFY(waitUntil([&] { return saying(created) > 0; }));
    QCOMPARE(awaited(1L, running), 1L);
    QCOMPARE(saying(created), 1);
    QCOMPARE(saying(QStringLiteral("Quorvel Mixer 已经在运行中。")), 3);
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
    QVERIFY(waitForLooks());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

void SystemStart::oneWatcherOpensAndClosesTheDevice()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    // The settings dialog, the panel and the connection's watcher each hold a handle of their own.
    QCOMPARE(handles(3), 3);
    QVERIFY(waitForWatch());
    QCOMPARE(handles(3), 3);
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    QCOMPARE(handles(0), 0);
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
    QVERIFY(Desktop::window(QStringLiteral("^Quorvel Driver$")).has_value());
}

void SystemStart::idlingIsCheap()
{
    constexpr unsigned long seconds = 6;
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(simulator().moveLevels());
    const auto before = ProcessFigures::of(panel().processId());
    QElapsedTimer clock;
    clock.start();
    QThread::sleep(seconds);
    const auto after = ProcessFigures::of(panel().processId());
    const qint64 span = clock.elapsed();
    QVERIFY(before && after);
    QVERIFY(before->processorTime.count() > 0);
    QVERIFY(after->wakeUps > before->wakeUps);
    const qint64 used = (after->processorTime - before->processorTime).count();
    const qint64 wakeUps = (after->wakeUps - before->wakeUps) * 1000 / span;
    qInfo("%lld ms of processor time in %lld ms, %lld wake-ups a second, window shown and levels "
          "moving",
          used, span, wakeUps);
    // The time grows on a slow machine and under a sanitizer, the wake-ups do not.
    QVERIFY2(used * 100 <= span * 3, qPrintable(QString::number(used)));
    // Under Wine each call that waits for its server counts as well.
    QVERIFY2(Target::isWindows() || wakeUps <= mostWakeUps, qPrintable(QString::number(wakeUps)));
}

QUORVEL_TEST_MAIN(SystemStart)
#include "system_start_test.moc"
