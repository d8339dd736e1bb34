#include "pip_stage.h"
#include "support/test_main.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr int rounds = 100;
constexpr qint64 longestStop = 500; // ms

} // namespace

/// Ends the thread wherever it may be, again and again: soon, and before its pipe is closed.
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
    void withItsParent();

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
        [] { qDebug() << "thread finished"; }, Qt::DirectConnection);
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
    const qint64 time = stage->stop();
    const QStringList lines = stage->log().take();
    QVERIFY2(time < longestStop, qPrintable(QString("%1 ms").arg(time)));
    QVERIFY2(lines.size() >= 2 &&
                 lines.last(2) == (QStringList{"thread finished", PipStage::parted}),
             qPrintable(lines.join('\n')));
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
}

void ThreadShutdownTest::neverStarted()
{
    for (int round = 0; round < rounds; ++round) {
        create();
        stage->log().clear();
        QVERIFY(stage->stop() < longestStop);
        QCOMPARE(stage->log().take(), QStringList{PipStage::parted});
    }
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
    }
}

void ThreadShutdownTest::withoutAPipe()
{
    const PipePeer::Server owner(PipePeer::settingsPipe);
    for (int round = 0; round < rounds; ++round) {
        start();
        const qint64 time = stage->stop();
        QVERIFY2(time < longestStop, qPrintable(QString("%1 ms").arg(time)));
        QCOMPARE(stage->log().take().constLast(), QString("thread finished"));
    }
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
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        start();
        QVERIFY(PipStage::serve(QByteArray(20, '\1')));
        QTest::qSleep(round % 100);
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
        const qint64 time = stage->stop();
        const QStringList lines = stage->log().take();
        if (time >= longestStop ||
            lines.last(2) != QStringList{"thread finished", PipStage::parted})
            QTest::qFail(qPrintable(QString("%1 ms\n%2").arg(time).arg(lines.join('\n'))), __FILE__,
                         __LINE__);
    }
    enough = true;
    for (std::thread& client : clients)
        client.join();
}

void ThreadShutdownTest::withItsParent()
{
    for (int round = 0; round < rounds; ++round) {
        auto parent = std::make_unique<QObject>();
        auto* thread = new ThreadSettingsPip(parent.get());
        QCOMPARE(thread->parent(), parent.get());
        thread->start(QThread::InheritPriority);
        stage->waitForPasses(1);
        parent.reset();
        QCOMPARE(stage->log().take().constLast(), PipStage::parted);
    }
}

QUORVEL_TEST_MAIN(ThreadShutdownTest)
#include "thread_shutdown_test.moc"
