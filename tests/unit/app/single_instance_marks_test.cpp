#include "app/single_instance.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QFile>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QTest>

#include <future>
#include <sys/ipc.h>
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

} // namespace

/// What only Unix knows: marks that outlive their process, and key files.
class SingleInstanceMarksTest : public QObject
{
    Q_OBJECT

private slots:
    void orphanCountsForNothing();
    void orphanHidesNoRunningCopy();
    void guardIsReleasedWhenTheClaimFails();
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

void SingleInstanceMarksTest::eachFileHasMarksOfItsOwn()
{
    // As the toolkit finds them.
    QSharedMemory marker(QStringLiteral("QuorvelQtDriverSharedMemory"));
    QVERIFY(marker.create(1));
    struct stat status = {};
    QCOMPARE(stat(qPrintable(marker.nativeKey()), &status), 0);
    // The whole number: the C library's key has 16 bits of it.
    QVERIFY(shmget(static_cast<key_t>(status.st_ino), 1, 0) >= 0);
}

QUORVEL_TEST_MAIN(SingleInstanceMarksTest)
#include "single_instance_marks_test.moc"
