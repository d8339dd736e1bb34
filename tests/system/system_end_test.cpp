#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/wait_until.h"
#include "system/end_states.h"

#include <QElapsedTimer>

using namespace std::chrono_literals;

/// The system ends the panel: natively by a signal, on Windows with the user's session.
class SystemEnd : public EndStates
{
    Q_OBJECT

private slots:
    void everyStateEnds_data() { addStates(); }
    void everyStateEnds();
    void lastChangeIsSaved();
    void impatientSystemAsksOften();

private:
    bool tellToEnd() { return session().askToEnd(panel()); }
};

void SystemEnd::everyStateEnds()
{
    QVERIFY(reachState());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(tellToEnd());
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(leftBehind(), QString());
    qInfo("ended after %lld ms", clock.elapsed());

    // Nothing is in the way of the next start.
    QVERIFY(session().startPanel());
    QVERIFY(Desktop::waitForTrayIcon().has_value());
    QVERIFY(tellToEnd());
    QCOMPARE(flawOfTheEnd(), QString());
}

void SystemEnd::lastChangeIsSaved()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QPoint knob;
    QVERIFY(waitUntil(
        [&] {
            const auto window =
                Desktop::window(QStringLiteral("^Quorvel KA1 ")).value_or(DesktopWindow());
            const auto knobs = knobsIn(PanelSession::pictureOf(window));
            knob = window.area.topLeft() + knobs.value(0);
            return !knobs.isEmpty();
        },
        10s));
    QVERIFY(Desktop::wheel(knob, 12));
    QVERIFY(tellToEnd());
    QCOMPARE(flawOfTheEnd(), QString());

    const QString change = QStringLiteral("Mic volume set to: ");
    const QString last =
        panel().debugLines().filter(change).value(panel().debugLines().filter(change).size() - 1);
    QVERIFY(!last.isEmpty());
    QCOMPARE(session().storedValue(QStringLiteral("ka1.ini"), QStringLiteral("Dial/MicValue")),
             last.mid(change.size()));
}

void SystemEnd::impatientSystemAsksOften()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    for (int i = 0; i < 20; ++i)
        QVERIFY(tellToEnd() || !panel().isRunning());
    QCOMPARE(flawOfTheEnd(), QString());
}

QUORVEL_TEST_MAIN(SystemEnd)
#include "system_end_test.moc"
