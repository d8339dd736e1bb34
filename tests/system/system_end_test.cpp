#include "support/test_main.h"
#include "system/end_states.h"

#include <QElapsedTimer>

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
    QVERIFY(changeGain());
    QVERIFY(tellToEnd());
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(flawOfTheGain(), QString());
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
