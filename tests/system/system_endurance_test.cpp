#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"

/// Many cables pulled and put back.
class SystemEndurance : public SystemTest
{
    Q_OBJECT

private slots:
    void fiftyReturnsKeepNothing();

private:
    struct Holdings
    {
        int deviceHandles;
        int openFiles;
        int threads;
    };

    Holdings holdings();
    bool leaveAndReturn(const QString& model, int returns);
};

SystemEndurance::Holdings SystemEndurance::holdings()
{
    const auto figures = ProcessFigures::of(panel().processId()).value_or(ProcessFigures());
    return {simulator().openHandles().value_or(-1), figures.openFiles, figures.threads};
}

bool SystemEndurance::leaveAndReturn(const QString& model, int returns)
{
    return simulator().unplug() &&
           panel().waitForLine(QStringLiteral("Meter driver handle deleted."), returns) &&
           simulator().plug(model) &&
           panel().waitForLine(QStringLiteral("设置初始化完成"), returns + 1);
}

void SystemEndurance::fiftyReturnsKeepNothing()
{
    constexpr int cycles = 50;
    const QStringList models{QStringLiteral("ka1"), QStringLiteral("ka2"), QStringLiteral("ks")};
    QVERIFY(arrive(models.first()).has_value());

    // Panels of all models have been there before anything is counted.
    int returns = 0;
    Holdings first{};
    for (; returns < cycles; ++returns) {
        const QString& model = models.at((returns + 1) % models.size());
        QVERIFY2(leaveAndReturn(model, returns + 1), qPrintable(QString::number(returns)));
        if (returns + 1 == models.size())
            first = holdings();
    }
    QCOMPARE(returns, cycles);
    const Holdings last = holdings();
    qInfo("device handles %d, open files %d, threads %d", last.deviceHandles, last.openFiles,
          last.threads);
    QCOMPARE(last.deviceHandles, first.deviceHandles);
    QCOMPARE(last.openFiles, first.openFiles);
    QCOMPARE(last.threads, first.threads);
    QCOMPARE(last.deviceHandles, 3);

    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
}

QUORVEL_TEST_MAIN(SystemEndurance)
#include "system_endurance_test.moc"
