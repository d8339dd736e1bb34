#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QTest>

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void firstCopy();
    void secondCopy();
    void afterTheFirstIsGone();
    void guardIsReleased();
};

void SingleInstanceTest::firstCopy()
{
    DebugLog log;
    SingleInstance instance;
    QCOMPARE(instance.claim(), SingleInstance::Claim::first);
    QCOMPARE(log.take(), QStringList());
}

void SingleInstanceTest::secondCopy()
{
    SingleInstance first;
    QCOMPARE(first.claim(), SingleInstance::Claim::first);
    DebugLog log;
    SingleInstance second;
    QCOMPARE(second.claim(), SingleInstance::Claim::alreadyRunning);
    QCOMPARE(log.take(), QStringList{"Quorvel Mixer 已经在运行中。"});
}

void SingleInstanceTest::afterTheFirstIsGone()
{
    {
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Claim::first);
    }
    SingleInstance next;
    QCOMPARE(next.claim(), SingleInstance::Claim::first);
}

void SingleInstanceTest::guardIsReleased()
{
    SingleInstance first;
    first.claim();
    for (int copy = 0; copy < 3; ++copy) {
        QElapsedTimer clock;
        clock.start();
        SingleInstance next;
        QCOMPARE(next.claim(), SingleInstance::Claim::alreadyRunning);
        QVERIFY(clock.elapsed() < 1000);
    }
}

QUORVEL_TEST_MAIN(SingleInstanceTest)
#include "single_instance_test.moc"
