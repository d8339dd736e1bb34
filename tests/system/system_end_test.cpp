#include "support/test_main.h"
#include "system/desktop/target.h"
#include "system/end_states.h"

/// The system ends the panel: natively by a signal, on Windows with the user's session.
class SystemEnd : public EndStates
{
    Q_OBJECT

private slots:
    void everyStateEnds_data() { addStates(); }
    void everyStateEnds();
    void impatientSystemLosesNothing();

private:
    bool tellToEnd() { return session().askToEnd(panel()); }
};

void SystemEnd::everyStateEnds()
{
    QVERIFY(reachState());
    QVERIFY(stateHolds());
    QVERIFY(tellToEnd());
    QVERIFY(release());
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(leftBehind(), QString());
}

void SystemEnd::impatientSystemLosesNothing()
{
    QVERIFY(changeGain());
    for (int i = 0; i < (Target::isWindows() ? 5 : 20); ++i)
        QVERIFY(tellToEnd() || !panel().isRunning());
    QCOMPARE(flawOfTheEnd(), QString());
    QCOMPARE(flawOfTheGain(), QString());
}

QUORVEL_TEST_MAIN(SystemEnd)
#include "system_end_test.moc"
