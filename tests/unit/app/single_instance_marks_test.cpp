#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QTest>

#include <future>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// Claims the mark in a process that goes without letting go of it, as one that was killed.
bool leaveOrphan()
{
    const pid_t child = ::fork();
    if (child == 0) {
        auto* instance = new SingleInstance;
        ::_exit(instance->claim() == SingleInstance::Claim::first ? 0 : 1);
    }
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

/// The number of the System V mark that belongs to a key file of the toolkit.
key_t keyOf(const QString& file)
{
    struct stat status = {};
    // The whole number: the C library's key has 16 bits of it.
    return stat(qPrintable(file), &status) == 0 ? static_cast<key_t>(status.st_ino) : -1;
}

/// How many copies wait for the guard.
int waitingCopies()
{
    const QDir folder = QDir::temp();
    const QStringList guards =
        folder.entryList({QStringLiteral("qipc_systemsem_QuorvelQtDriverSemaphore*")});
    return guards.isEmpty()
               ? 0
               : semctl(semget(keyOf(folder.filePath(guards.constFirst())), 1, 0), 0, GETNCNT);
}

/// A copy that starts while another one has the guard, and by now waits for it. One that does not
/// wait has decided by now.
class LateCopy
{
public:
    LateCopy()
        : decision(std::async(std::launch::async, [] {
            SingleInstance instance;
            return instance.claim();
        }))
    {
        while (waitingCopies() == 0 && decision.wait_for(1ms) != std::future_status::ready) {
        }
    }

    bool hasDecided() const { return decision.wait_for(0ms) == std::future_status::ready; }
    SingleInstance::Claim claim() { return decision.get(); }

private:
    std::future<SingleInstance::Claim> decision;
};

} // namespace

/// What only Unix knows: marks that outlive their process, and key files.
class SingleInstanceMarksTest : public QObject
{
    Q_OBJECT

private slots:
    void orphanCountsForNothing();
    void orphanHidesNoRunningCopy();
    void guardIsReleasedWhenTheClaimFails();
    void guardHoldsTheDecisionBack();
    void oneCopyDecidesAtATime();
    void eachFileHasMarksOfItsOwn();
};

void SingleInstanceMarksTest::orphanCountsForNothing()
{
    for (int round = 0; round < 2; ++round) {
        QVERIFY(leaveOrphan());
        DebugLog log;
        SingleInstance next;
        QCOMPARE(next.claim(), SingleInstance::Claim::first);
        QCOMPARE(log.take(), QStringList());
    }
}

void SingleInstanceMarksTest::orphanHidesNoRunningCopy()
{
    QVERIFY(leaveOrphan());
    SingleInstance first;
    QCOMPARE(first.claim(), SingleInstance::Claim::first);
    for (int copy = 0; copy < 3; ++copy) {
        SingleInstance next;
        QCOMPARE(next.claim(), SingleInstance::Claim::alreadyRunning);
    }
}

void SingleInstanceMarksTest::guardIsReleasedWhenTheClaimFails()
{
    // A key file that leads nowhere: the segment can neither be found nor made.
    const QString key = QSharedMemory(QStringLiteral("QuorvelQtDriverSharedMemory")).nativeKey();
    QFile::remove(key);
    QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all"), key));
    {
        DebugLog log;
        SingleInstance instance;
        QCOMPARE(instance.claim(), SingleInstance::Claim::failed);
        QCOMPARE(log.take(), QStringList{"无法创建共享内存，程序退出。"});

        // While the one that failed is still there.
        QSystemSemaphore guard(QStringLiteral("QuorvelQtDriverSemaphore"), 1);
        auto acquired = std::async(std::launch::async, [&guard] { return guard.acquire(); });
        const bool inTime = acquired.wait_for(45s) == std::future_status::ready;
        if (!inTime)
            QSystemSemaphore(QStringLiteral("QuorvelQtDriverSemaphore"), 1).release();
        QVERIFY(acquired.get());
        guard.release();
        QVERIFY(inTime);
    }
    QFile::remove(key);
}

void SingleInstanceMarksTest::guardHoldsTheDecisionBack()
{
    QSystemSemaphore guard(QStringLiteral("QuorvelQtDriverSemaphore"), 1, QSystemSemaphore::Open);
    QVERIFY(guard.acquire());
    LateCopy copy;
    const bool early = copy.hasDecided();
    QSharedMemory marker(QStringLiteral("QuorvelQtDriverSharedMemory"));
    const bool made = marker.create(1);
    guard.release();
    QCOMPARE(copy.claim(), SingleInstance::Claim::alreadyRunning);
    QVERIFY(made);
    QVERIFY(!early);
}

/// The guard is the first copy's own here, as at the start of two copies in the same moment.
void SingleInstanceMarksTest::oneCopyDecidesAtATime()
{
    SingleInstance first;
    LateCopy copy;
    QVERIFY(!copy.hasDecided());
    QCOMPARE(first.claim(), SingleInstance::Claim::first);
    QCOMPARE(copy.claim(), SingleInstance::Claim::alreadyRunning);
}

void SingleInstanceMarksTest::eachFileHasMarksOfItsOwn()
{
    // As the toolkit finds them.
    QSharedMemory marker(QStringLiteral("QuorvelQtDriverSharedMemory"));
    QVERIFY(marker.create(1));
    QVERIFY(shmget(keyOf(marker.nativeKey()), 1, 0) >= 0);
}

QUORVEL_TEST_MAIN(SingleInstanceMarksTest)
#include "single_instance_marks_test.moc"
