#include "support/rounds.h"
#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

/// Cables pulled and put back. What is kept once for each of them shows after few.
class SystemEndurance : public SystemTest
{
    Q_OBJECT

public:
    SystemEndurance() { Rounds::allowTimeFor(cycles); }

private slots:
    void returnsKeepNothing();

private:
    struct Holdings
    {
        int openFiles;
        int threads;
    };

    /// What the panel holds once its connection stands; nothing when that cannot be told.
    std::optional<Holdings> holdings();
    bool leaveAndReturn(const QString& model, int returns);

    const int cycles = std::max(Rounds::number(9), 6);
};

std::optional<SystemEndurance::Holdings> SystemEndurance::holdings()
{
    // The settings dialog, the panel and the connection's watcher each have a handle.
    const bool stands = waitForWatch() && handles(3) == 3;
    const auto figures = ProcessFigures::of(panel().processId());
    if (!stands || !figures)
        return std::nullopt;
    return Holdings{figures->openFiles, figures->threads};
}

bool SystemEndurance::leaveAndReturn(const QString& model, int returns)
{
    return simulator().unplug() &&
           panel().waitForLine(QStringLiteral("Meter driver handle deleted."), returns) &&
           simulator().plug(model) &&
           panel().waitForLine(QStringLiteral("设置初始化完成"), returns + 1);
}

void SystemEndurance::returnsKeepNothing()
{
    const QStringList models{QStringLiteral("ka1"), QStringLiteral("ka2"), QStringLiteral("ks")};
    QVERIFY(arrive(models.first()).has_value());

    // Panels of all models have been there before anything is counted.
    std::optional<Holdings> first;
    for (int returns = 1; returns <= cycles; ++returns) {
        QVERIFY2(leaveAndReturn(models.at(returns % models.size()), returns),
                 qPrintable(QString::number(returns)));
        if (returns == models.size()) {
            first = holdings();
            QVERIFY(first.has_value());
        }
    }
    // What a return sets off may hold something for a moment, but nothing for good.
    std::optional<Holdings> last;
    const bool kept = !waitUntil([&] {
        last = holdings();
        return last && last->openFiles <= first->openFiles && last->threads <= first->threads;
    });
    QVERIFY(last.has_value());
    qInfo("open files %d, threads %d; at first %d, %d", last->openFiles, last->threads,
          first->openFiles, first->threads);
    QVERIFY(!kept);

    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    QCOMPARE(handles(0), 0);
}

QUORVEL_TEST_MAIN(SystemEndurance)
#include "system_endurance_test.moc"
