#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QTest>

#include <atomic>
#include <thread>

namespace {

// By these names copies of any version find each other.
const QString guardKey = QStringLiteral("QuorvelQtDriverSemaphore");
const QString markerKey = QStringLiteral("QuorvelQtDriverSharedMemory");

/// A copy that starts while another one decides: made when it had time to decide as well.
class LateCopy
{
public:
    LateCopy()
        : thread([this] {
            started = true;
            SingleInstance instance;
            result = instance.claim();
        })
    {
        while (!started)
            std::this_thread::yield();
        QTest::qWait(100);
    }
    LateCopy(const LateCopy&) = delete;
    LateCopy& operator=(const LateCopy&) = delete;
    ~LateCopy() { claim(); }

    SingleInstance::Claim claim()
    {
        if (thread.joinable())
            thread.join();
        return result;
    }

private:
    std::atomic<bool> started = false;
    SingleInstance::Claim result = SingleInstance::Claim::failed;
    std::thread thread;
};

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
        SingleInstance next; // Waits for ever otherwise.
        QCOMPARE(next.claim(), SingleInstance::Claim::alreadyRunning);
    }
}

void SingleInstanceTest::guardHoldsTheDecisionBack()
{
    QSystemSemaphore guard(guardKey, 1, QSystemSemaphore::Open);
    QVERIFY(guard.acquire());
    LateCopy copy;
    QSharedMemory marker(markerKey);
    const bool made = marker.create(1);
    guard.release();
    QCOMPARE(copy.claim(), SingleInstance::Claim::alreadyRunning);
    QVERIFY(made);
}

/// The guard is the first copy's own here, as at the start of two copies in the same moment.
void SingleInstanceTest::oneCopyDecidesAtATime()
{
    SingleInstance first;
    LateCopy copy;
    QCOMPARE(first.claim(), SingleInstance::Claim::first);
    QCOMPARE(copy.claim(), SingleInstance::Claim::alreadyRunning);
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
