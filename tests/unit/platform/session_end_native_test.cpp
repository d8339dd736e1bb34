#include "platform/session_end.h"
#include "support/test_main.h"

#include <QApplication>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <optional>
#include <set>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// While it is set, the first read of each descriptor is interrupted.
std::optional<std::set<int>> interruptedReads;

void send(int signal)
{
    ::kill(::getpid(), signal);
}

void (*handlerOf(int signal))(int)
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

/// Sets a handler and puts the one before back.
class Handler
{
public:
    Handler(int number, void (*handler)(int))
        : signal(number)
        , before(std::signal(number, handler))
    {
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    ~Handler() { std::signal(signal, before); }

private:
    int signal;
    void (*before)(int);
};

/// What the loop returns; 7 when nothing has ended it in time.
int runLoop(int milliseconds = 30000)
{
    QTimer timeout;
    QObject::connect(&timeout, &QTimer::timeout, [] { QCoreApplication::exit(7); });
    timeout.start(milliseconds);
    return QApplication::exec();
}

} // namespace

/// In place of the C library's, for this program and the libraries that it links.
extern "C" ssize_t read(int descriptor, void* buffer, std::size_t size)
{
    if (interruptedReads && interruptedReads->insert(descriptor).second) {
        errno = EINTR;
        return -1;
    }
    return ::syscall(SYS_read, descriptor, buffer, size);
}

class SessionEndTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { interruptedReads.reset(); }

    void signalEndsTheLoop_data();
    void signalEndsTheLoop();
    void nestedLoopsEnd();
    void signalBeforeTheLoopCounts();
    void nothingReachesTheNextLoop();
    void interruptedReadIsNoRequest();
    void formerHandlersComeBack();
    void ignoredSignalStaysIgnored();
};

void SessionEndTest::signalEndsTheLoop_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGINT") << SIGINT;
}

void SessionEndTest::signalEndsTheLoop()
{
    QFETCH(int, signal);
    int requests = 0;
    const SessionEnd end([&] { ++requests; });
    QTimer::singleShot(0, this, [signal] { send(signal); });
    QCOMPARE(runLoop(), 0);
    QCOMPARE(requests, 1);
}

void SessionEndTest::nestedLoopsEnd()
{
    const SessionEnd end;
    int left = 0;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, this, [&] {
            send(SIGTERM);
            QEventLoop().exec();
            ++left;
        });
        QEventLoop().exec();
        ++left;
    });
    QCOMPARE(runLoop(), 0);
    QCOMPARE(left, 2);
}

void SessionEndTest::signalBeforeTheLoopCounts()
{
    const SessionEnd end;
    send(SIGTERM);
    QCOMPARE(runLoop(), 0);
}

void SessionEndTest::nothingReachesTheNextLoop()
{
    {
        const SessionEnd end;
        send(SIGTERM);
        QCOMPARE(runLoop(), 0);
        send(SIGINT);
    }
    QCOMPARE(runLoop(100), 7);
}

void SessionEndTest::interruptedReadIsNoRequest()
{
    interruptedReads.emplace();
    int requests = 0;
    const SessionEnd end([&] { ++requests; });
    QCOMPARE(runLoop(100), 7);
    QCOMPARE(requests, 0);
    send(SIGTERM);
    QCOMPARE(runLoop(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(requests, 1);
}

void SessionEndTest::formerHandlersComeBack()
{
    static volatile std::sig_atomic_t seen = 0;
    const auto note = [](int) { seen = 1; };
    const Handler handler(SIGTERM, note);
    std::optional<SessionEnd> end(std::in_place);
    QVERIFY(handlerOf(SIGTERM) != note);
    end.reset();
    send(SIGTERM);
    QCOMPARE(int(seen), 1);
}

void SessionEndTest::ignoredSignalStaysIgnored()
{
    const Handler handler(SIGHUP, SIG_IGN);
    const SessionEnd end;
    QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    send(SIGHUP);
    QCOMPARE(runLoop(100), 7);
}

QUORVEL_TEST_MAIN(SessionEndTest)
#include "session_end_native_test.moc"
