#include "asio/thread_settings_pip.h"
#include "line_watch.h"
#include "support/debug_log.h"
#include "support/recorded_platform.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

#include <atomic>
#include <cstdio>
#include <memory>
#include <optional>

using RecordedPlatform::Cancelling;
using RecordedPlatform::Script;
Q_DECLARE_METATYPE(Script)

namespace {

constexpr qint64 longestStop = 500; // ms

const QString running = QStringLiteral("ThreadSettingsPip is running waiting Asio Info...");
const QString finished = QStringLiteral("thread finished");
const QString parted = QStringLiteral("Pipe closed.");
const QString connectAborted = QStringLiteral("Error connecting to pipe. Error code: 995");
const QString readAborted = QStringLiteral("Error reading from pipe. Error code: 995");
const QString readBroken = QStringLiteral("Error reading from pipe. Error code: 109");

Script scripted(bool threadsOpen, Cancelling byThread, Cancelling byPipe, bool silentClient)
{
    Script script;
    script.threadsOpen = threadsOpen;
    script.byThread = byThread;
    script.byPipe = byPipe;
    script.silentClient = silentClient;
    return script;
}

} // namespace

/// The thread ends in time whatever the system refuses, and only then the pipe goes.
class ThreadStopTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup();

    void ways_data();
    void ways();
    void withoutAPipe();
    void withoutAThread();
    void terminatedInItsWaitsOnly();
    void threadThatCannotEnd();

private:
    void create(const Script& script);
    void start();
    qint64 stop();

    std::optional<DebugLog> log;
    std::unique_ptr<ThreadSettingsPip> thread;
};

void ThreadStopTest::cleanup()
{
    thread.reset();
    log.reset();
}

void ThreadStopTest::create(const Script& script)
{
    RecordedPlatform::reset(script);
    thread = std::make_unique<ThreadSettingsPip>(nullptr);
    connect(
        thread.get(), &QThread::finished, thread.get(),
        [] {
            qDebug() << "thread finished";
            RecordedPlatform::note("thread finished");
        },
        Qt::DirectConnection);
}

/// Until the thread is in its first wait.
void ThreadStopTest::start()
{
    thread->start(QThread::InheritPriority);
    QTRY_VERIFY(log->lines().contains(running));
    QTest::qWait(50);
    log->clear();
}

qint64 ThreadStopTest::stop()
{
    QElapsedTimer timer;
    timer.start();
    thread.reset();
    return timer.elapsed();
}

void ThreadStopTest::ways_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<int>("soonest");
    constexpr auto works = Cancelling::works;
    constexpr auto refuses = Cancelling::refuses;
    constexpr auto pretends = Cancelling::pretends;
    const QStringList connecting{connectAborted, finished, parted};
    const QStringList reading{readAborted, finished, parted};
    const QStringList knocked{readBroken, finished, parted};
    const QStringList terminated{finished, parted};
    const auto row = [](const char* name, const Script& script, const QStringList& lines,
                        int soonest = 0) { QTest::newRow(name) << script << lines << soonest; };
    row("by its thread", scripted(true, works, refuses, false), connecting);
    row("by its thread, silent client", scripted(true, works, refuses, true), reading);
    row("no thread handle", scripted(false, works, works, false), connecting);
    row("no thread handle, silent client", scripted(false, works, works, true), reading);
    row("thread refuses", scripted(true, refuses, works, false), connecting);
    row("thread pretends", scripted(true, pretends, works, true), reading);
    row("only a client helps", scripted(false, works, refuses, false), knocked, 150);
    row("only a client helps, all pretend", scripted(true, pretends, pretends, false), knocked,
        150);
    row("nothing helps", scripted(false, works, refuses, true), terminated, 300);
    row("nothing helps, all pretend", scripted(true, pretends, pretends, true), terminated, 300);
}

void ThreadStopTest::ways()
{
    QFETCH(Script, script);
    QFETCH(QStringList, lines);
    QFETCH(int, soonest);
    create(script);
    start();
    const qint64 time = stop();
    QVERIFY2(time < longestStop, qPrintable(QString("%1 ms").arg(time)));
    // The rude ways have to wait for the gentle ones.
    QVERIFY2(time >= soonest, qPrintable(QString("%1 ms").arg(time)));
    QCOMPARE(log->take(), lines);

    const QStringList calls = RecordedPlatform::takeCalls();
    QCOMPARE(calls.count("CloseHandle 4"), 1);
    QVERIFY(calls.indexOf("CloseHandle 4") > calls.indexOf(finished));
    QCOMPARE(calls.filter("OpenThread"), QStringList{"OpenThread 1 0 self"});
    QCOMPARE(calls.contains("CloseHandle 8"), script.threadsOpen || lines.contains(readBroken));
    QVERIFY(!calls.contains("CloseHandle 0"));
    if (calls.join(u'\n').contains("CancelIoEx"))
        QVERIFY(calls.contains("CancelIoEx 4 null"));
    const QStringList knocks = calls.filter("CreateFileW");
    QCOMPARE(knocks.isEmpty(), soonest == 0);
    for (const QString& knock : knocks)
        QCOMPARE(knock, R"(CreateFileW \\.\pipe\QuorvelASIOToPannel C0000000 0 null 3 0 null)");
}

void ThreadStopTest::withoutAPipe()
{
    Script script = scripted(false, Cancelling::refuses, Cancelling::refuses, false);
    script.createError = 5;
    create(script);
    start();
    const qint64 time = stop();
    QVERIFY2(time < longestStop, qPrintable(QString("%1 ms").arg(time)));
    QCOMPARE(log->take().constLast(), finished);
    // The pipe of that name is somebody else's.
    QCOMPARE(RecordedPlatform::takeCalls().filter("CreateFileW"), QStringList());
}

void ThreadStopTest::withoutAThread()
{
    create({});
    thread->setStackSize(1); // The system makes no thread with so little.
    thread->start();
    QVERIFY(!thread->isRunning());
    log->clear();
    const qint64 time = stop();
    QVERIFY2(time < longestStop, qPrintable(QString("%1 ms").arg(time)));
    QCOMPARE(log->take(), QStringList{parted});
}

void ThreadStopTest::terminatedInItsWaitsOnly()
{
    create({});
    std::atomic<bool> busy = false;
    std::atomic<bool> goOn = false;
    {
        // Whoever writes a line may hold a lock that the rest of the program needs.
        const LineWatch watch(running, [&] {
            busy = true;
            while (!goOn)
                QTest::qSleep(1);
            RecordedPlatform::note("line written");
        });
        thread->start(QThread::InheritPriority);
        QTRY_VERIFY(busy);
        thread->terminate();
        QTest::qWait(50);
        goOn = true;
        QTRY_VERIFY(thread->isFinished());
    }
    const QStringList calls = RecordedPlatform::takeCalls();
    QVERIFY(calls.contains("line written"));
    QVERIFY(!calls.contains("ConnectNamedPipe 4 null"));
}

void ThreadStopTest::threadThatCannotEnd()
{
    constexpr const char* isChild = "QUORVEL_TEST_CHILD";
    if (qEnvironmentVariableIsSet(isChild)) {
        create({});
        std::atomic<bool> busy = false;
        const LineWatch watch(running, [&] {
            busy = true;
            for (;;)
                QTest::qSleep(1000);
        });
        thread->start(QThread::InheritPriority);
        QTRY_VERIFY(busy);
        std::puts("stops");
        std::fflush(stdout);
        stop();
        QFAIL("goes on");
    }
    QProcess child;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(isChild, "1");
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {"threadThatCannotEnd"});
    QVERIFY(child.waitForStarted(30000));
    QTRY_VERIFY_WITH_TIMEOUT(child.bytesAvailable() != 0 && child.peek(4096).contains("stops"),
                             30000);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(child.waitForFinished(30000));
    // What the process itself takes to go comes on top.
    QVERIFY2(clock.elapsed() < 2 * longestStop, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    QVERIFY(!child.readAllStandardOutput().contains("threadThatCannotEnd()"));
}

QUORVEL_TEST_MAIN(ThreadStopTest)
#include "thread_stop_test.moc"
