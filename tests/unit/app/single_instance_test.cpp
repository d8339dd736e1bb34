#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QTest>

#include <atomic>
#include <thread>

namespace {

// By these names copies of any version find each other.
const QString guardKey = QStringLiteral("QuorvelQtDriverSemaphore");
const QString markerKey = QStringLiteral("QuorvelQtDriverSharedMemory");

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void firstCopy();
    void secondCopy();
    void afterTheFirstIsGone();
    void guardIsReleased();
    void guardHoldsTheDecisionBack();
    void oneCopyDecidesAtATime();
    void markerOfAnotherVersionCounts();
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

void SingleInstanceTest::guardHoldsTheDecisionBack()
{
    QSystemSemaphore guard(guardKey, 1, QSystemSemaphore::Open);
    QVERIFY(guard.acquire());
    std::atomic<bool> decided = false;
    auto claim = SingleInstance::Claim::failed;
    std::thread copy([&] {
        SingleInstance instance;
        claim = instance.claim();
        decided = true;
    });
    QTest::qWait(300);
    const bool tooEarly = decided;
    guard.release();
    copy.join();
    QVERIFY(!tooEarly);
    QCOMPARE(claim, SingleInstance::Claim::first);
}

/// The guard is the first copy's own here, as at the start of two copies in the same moment.
void SingleInstanceTest::oneCopyDecidesAtATime()
{
    SingleInstance first;
    std::atomic<bool> decided = false;
    auto claim = SingleInstance::Claim::failed;
    std::thread copy([&] {
        SingleInstance second;
        claim = second.claim();
        decided = true;
    });
    QTest::qWait(300);
    const bool tooEarly = decided;
    const SingleInstance::Claim firstClaim = first.claim();
    copy.join();
    QVERIFY(!tooEarly);
    QCOMPARE(firstClaim, SingleInstance::Claim::first);
    QCOMPARE(claim, SingleInstance::Claim::alreadyRunning);
}

void SingleInstanceTest::markerOfAnotherVersionCounts()
{
    QSharedMemory marker(markerKey);
    QVERIFY(marker.create(1));
    SingleInstance instance;
    QCOMPARE(instance.claim(), SingleInstance::Claim::alreadyRunning);
}

QUORVEL_TEST_MAIN(SingleInstanceTest)
#include "single_instance_test.moc"
