#include "pip_stage.h"
#include "support/test_main.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr int rounds = 100;

const QString finished = QStringLiteral("thread finished");

} // namespace

/// Ends the thread wherever it may be, again and again, and before its pipe is closed.
class ThreadShutdownTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { stage = std::make_unique<PipStage>(); }
    void cleanup() { stage.reset(); }

    void neverStarted();
    void justStarted();
    void waitingForAClient();
    void withoutAPipe();
    void silentClient();
    void duringThePause();
    void clientsAtThatVeryMoment();

private:
    void create();
    void start();
    void stop();

    std::unique_ptr<PipStage> stage;
};

void ThreadShutdownTest::create()
{
    stage->create();
    // Written by the thread itself as its last act.
    connect(
        stage->thread.get(), &QThread::finished, stage->thread.get(),
        [] { qDebug("thread finished"); }, Qt::DirectConnection);
}

void ThreadShutdownTest::start()
{
    create();
    stage->log().clear();
    stage->thread->start(QThread::InheritPriority);
    stage->waitForLines(1);
}

/// Stops a thread with a pipe.
void ThreadShutdownTest::stop()
{
    stage->thread.reset();
    const QStringList lines = stage->log().take();
    const QStringList last{finished, PipStage::parted};
    QVERIFY2(lines.size() >= 2 && lines.last(2) == last, qPrintable(lines.join('\n')));
}

void ThreadShutdownTest::neverStarted()
{
    create();
    stage->log().clear();
    stage->thread.reset();
    QCOMPARE(stage->log().take(), QStringList{PipStage::parted});
}

void ThreadShutdownTest::justStarted()
{
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        create();
        stage->thread->start(QThread::InheritPriority);
        stop();
    }
}

void ThreadShutdownTest::waitingForAClient()
{
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        start();
        // Sometimes it waits already, sometimes it is about to.
        QTest::qSleep(round % 5);
        stop();
        PipePeer::Client client(PipePeer::settingsPipe);
        QCOMPARE(client.tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
    }
}

void ThreadShutdownTest::withoutAPipe()
{
    const PipePeer::Server owner(PipePeer::settingsPipe);
    start();
    stage->thread.reset();
    QCOMPARE(stage->log().take().constLast(), finished);
}

void ThreadShutdownTest::silentClient()
{
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        start();
        PipePeer::Client client(PipePeer::settingsPipe);
        QCOMPARE(client.connect(), DWORD{ERROR_SUCCESS});
        QTest::qSleep(round % 5);
        stop();
        const DWORD error = client.waitForParting();
        QVERIFY(error == ERROR_PIPE_NOT_CONNECTED || error == ERROR_BROKEN_PIPE);
    }
}

void ThreadShutdownTest::duringThePause()
{
    for (int round = 0; round < 10 && !QTest::currentTestFailed(); ++round) {
        start();
        QVERIFY(PipStage::serve(QByteArray(20, '\1')));
        QTest::qSleep(round * 10);
        stop();
    }
}

void ThreadShutdownTest::clientsAtThatVeryMoment()
{
    std::atomic<bool> enough = false;
    std::vector<std::thread> clients;
    for (int number = 0; number < 3; ++number) {
        clients.emplace_back([&enough, number] {
            PipePeer::Client client(PipePeer::settingsPipe);
            for (int i = 0; !enough; ++i) {
                if (client.tryConnect() != ERROR_SUCCESS) {
                    Sleep(1);
                    continue;
                }
                if ((i + number) % 3 != 0)
                    client.write(QByteArray(20, '\1'));
                if (i % 2 != 0)
                    Sleep(1);
                client.close();
            }
        });
    }
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        start();
        QTest::qSleep(round % 7);
        stop();
    }
    enough = true;
    for (std::thread& client : clients)
        client.join();
}

QUORVEL_TEST_MAIN(ThreadShutdownTest)
#include "thread_shutdown_test.moc"
