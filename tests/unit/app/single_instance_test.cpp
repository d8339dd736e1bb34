#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QSharedMemory>
#include <QTest>

namespace {

// By this name copies of any version find each other.
const QString markerKey = QStringLiteral("QuorvelQtDriverSharedMemory");

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void firstCopy();
    void secondCopy();
    void guardIsReleased();
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

void SingleInstanceTest::guardIsReleased()
{
    SingleInstance first;
    first.claim();
    for (int copy = 0; copy < 3; ++copy) {
        SingleInstance next; // Waits for ever otherwise.
        QCOMPARE(next.claim(), SingleInstance::Claim::alreadyRunning);
    }
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
