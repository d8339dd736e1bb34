#include "platform/endable_wait.h"
#include "platform/event_loop_end.h"
#include "support/test_main.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <future>
#include <string>

using namespace std::chrono_literals;

namespace {

constexpr DWORD aborted = 995;

/// A pipe without a buffer whose server never reads: a byte written to it waits for ever.
class SilentPipe
{
public:
    SilentPipe()
        : server(CreateNamedPipeW(path().c_str(), PIPE_ACCESS_DUPLEX,
                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, 0, 0, 0,
                                  nullptr))
        , client(CreateFileW(path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, 0, nullptr))
    {
    }
    SilentPipe(const SilentPipe&) = delete;
    SilentPipe& operator=(const SilentPipe&) = delete;
    ~SilentPipe()
    {
        CloseHandle(client);
        CloseHandle(server);
    }

    /// The error number with which the write ended.
    DWORD write() const
    {
        DWORD written = 0;
        return WriteFile(client, "1", 1, &written, nullptr) != 0 ? 0 : GetLastError();
    }

private:
    static std::wstring path()
    {
        return QStringLiteral(R"(\\.\pipe\QuorvelSilent-%1)")
            .arg(QCoreApplication::applicationPid())
            .toStdWString();
    }

    HANDLE server;
    HANDLE client;
};

} // namespace

class EventLoopEndTest : public QObject
{
    Q_OBJECT

private slots:
    void loopReturnsZero();
    void requestBeforeTheLoopCounts();
    void requestDeliveredBeforeTheLoopIsRepeated();
    void nestedLoopsEnd();
    void busyThreadEndsWhenItIsFree();
    void waitsForTheTearDown();
    void losesPatience();
    void asksNothingAfterTheEnd();
    void markedWaitIsCancelled();
    void otherWaitsHaveTheirGrace();
    void nothingIsMarked();

private:
    /// Runs the loop and finishes; returns what the loop and the request returned.
    static std::pair<int, bool> run(EventLoopEnd& end, std::future<bool>& request);
    static std::future<bool> requestEnd(EventLoopEnd& end, std::chrono::milliseconds patience = 10s)
    {
        return std::async(std::launch::async,
                          [&end, patience] { return end.endAndWait(patience); });
    }
};

std::pair<int, bool> EventLoopEndTest::run(EventLoopEnd& end, std::future<bool>& request)
{
    const int code = QApplication::exec();
    end.finish();
    return {code, request.get()};
}

void EventLoopEndTest::loopReturnsZero()
{
    EventLoopEnd end;
    std::future<bool> request;
    QTimer::singleShot(50, this, [&] { request = requestEnd(end); });
    QCOMPARE(run(end, request), std::pair(0, true));
}

void EventLoopEndTest::requestBeforeTheLoopCounts()
{
    EventLoopEnd end;
    auto request = requestEnd(end);
    QThread::msleep(120);
    QCOMPARE(run(end, request), std::pair(0, true));
}

void EventLoopEndTest::requestDeliveredBeforeTheLoopIsRepeated()
{
    EventLoopEnd end;
    auto request = requestEnd(end);
    QThread::msleep(20);
    QCoreApplication::processEvents();
    QCOMPARE(run(end, request), std::pair(0, true));
}

void EventLoopEndTest::nestedLoopsEnd()
{
    EventLoopEnd end;
    std::future<bool> request;
    int left = 0;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, this, [&] {
            request = requestEnd(end);
            QEventLoop inner;
            inner.exec();
            ++left;
        });
        QEventLoop outer;
        outer.exec();
        ++left;
    });
    QCOMPARE(run(end, request), std::pair(0, true));
    QCOMPARE(left, 2);
}

void EventLoopEndTest::busyThreadEndsWhenItIsFree()
{
    EventLoopEnd end;
    std::future<bool> request;
    QTimer::singleShot(0, this, [&] {
        request = requestEnd(end);
        QThread::msleep(300);
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(run(end, request), std::pair(0, true));
    QVERIFY(clock.elapsed() >= 300);
    QVERIFY(clock.elapsed() < 2000);
}

void EventLoopEndTest::waitsForTheTearDown()
{
    EventLoopEnd end;
    auto request = requestEnd(end);
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(request.wait_for(300ms), std::future_status::timeout);
    end.finish();
    QCOMPARE(request.wait_for(10s), std::future_status::ready);
    QVERIFY(request.get());
}

void EventLoopEndTest::losesPatience()
{
    EventLoopEnd end;
    QElapsedTimer clock;
    clock.start();
    auto request = requestEnd(end, 300ms);
    QVERIFY(!request.get());
    QVERIFY(clock.elapsed() >= 300);
    QVERIFY(clock.elapsed() < 2000);
    QCOMPARE(QApplication::exec(), 0);
}

void EventLoopEndTest::asksNothingAfterTheEnd()
{
    EventLoopEnd end;
    end.finish();
    QVERIFY(requestEnd(end).get());
    QTimer::singleShot(200, this, [] { QCoreApplication::exit(7); });
    QCOMPARE(QApplication::exec(), 7);
}

void EventLoopEndTest::markedWaitIsCancelled()
{
    const SilentPipe pipe;
    EventLoopEnd end;
    QElapsedTimer clock;
    clock.start();
    auto request = requestEnd(end);
    DWORD error = 0;
    {
        const EndableWait wait;
        error = pipe.write();
    }
    QCOMPARE(error, aborted);
    QVERIFY(clock.elapsed() < 2000);
    QCOMPARE(run(end, request), std::pair(0, true));
}

void EventLoopEndTest::otherWaitsHaveTheirGrace()
{
    const SilentPipe pipe;
    EventLoopEnd end;
    { // Over before the request, and no mark any more.
        const EndableWait wait;
    }
    QElapsedTimer clock;
    clock.start();
    auto request = requestEnd(end);
    QCOMPARE(pipe.write(), aborted);
    QVERIFY2(clock.elapsed() >= 2900, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(run(end, request), std::pair(0, true));
}

void EventLoopEndTest::nothingIsMarked()
{
    // Neither finds anything, and neither may disturb what comes after.
    EndableWait::cancel();
    {
        const EndableWait wait;
        EndableWait::cancel();
    }
    const SilentPipe pipe;
    const EndableWait wait;
    QElapsedTimer clock;
    clock.start();
    auto later = std::async(std::launch::async, [] {
        Sleep(300);
        EndableWait::cancel();
    });
    QCOMPARE(pipe.write(), aborted);
    QVERIFY(clock.elapsed() >= 250);
    later.get();
}

QUORVEL_TEST_MAIN(EventLoopEndTest)
#include "event_loop_end_test.moc"
