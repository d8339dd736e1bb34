#include "platform/session_end.h"
#include "support/test_main.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <optional>
#include <unistd.h>

namespace {

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

volatile std::sig_atomic_t seen = 0;

/// What the loop returns; 7 when nothing has ended it in time.
int runLoop(int milliseconds = 10000)
{
    QTimer timeout;
    QObject::connect(&timeout, &QTimer::timeout, [] { QCoreApplication::exit(7); });
    timeout.start(milliseconds);
    return QApplication::exec();
}

} // namespace

class SessionEndTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { seen = 0; }
    void signalEndsTheLoop_data();
    void signalEndsTheLoop();
    void signalBeforeTheLoopCounts();
    void oneAfterTheOther();
    void signalsInARowEndOnce();
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
    const SessionEnd end;
    QTimer::singleShot(20, this, [signal] { send(signal); });
    QCOMPARE(runLoop(), 0);
}

void SessionEndTest::signalBeforeTheLoopCounts()
{
    const SessionEnd end;
    send(SIGTERM);
    QTest::qWait(20);
    QCOMPARE(runLoop(), 0);
}

void SessionEndTest::oneAfterTheOther()
{
    for (int round = 0; round < 3; ++round) {
        const SessionEnd end;
        QTimer::singleShot(0, this, [] { send(SIGTERM); });
        QCOMPARE(runLoop(), 0);
    }
}

void SessionEndTest::signalsInARowEndOnce()
{
    {
        const SessionEnd end;
        for (int i = 0; i < 10; ++i)
            send(SIGTERM);
        QCOMPARE(runLoop(), 0);
        send(SIGINT);
    }
    // Nothing of them reaches the next loop.
    QCoreApplication::processEvents();
    QCOMPARE(runLoop(100), 7);
}

void SessionEndTest::formerHandlersComeBack()
{
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
