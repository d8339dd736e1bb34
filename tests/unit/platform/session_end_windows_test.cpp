#include "pipe_peer.h"
#include "platform/call_timeout.h"
#include "platform/session_end.h"
#include "support/test_main.h"

#include <QApplication>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <future>

using namespace std::chrono_literals;

namespace {

/// The window by which others find the program.
HWND listeningWindow()
{
    return FindWindowW(L"QuorvelDriverSessionEnd", nullptr);
}

/// A window of this thread that knows nothing of the session, as those of Qt.
class OtherWindow
{
public:
    OtherWindow() = default;
    OtherWindow(const OtherWindow&) = delete;
    OtherWindow& operator=(const OtherWindow&) = delete;
    ~OtherWindow() { DestroyWindow(window); }

    HWND handle() const { return window; }

private:
    HWND window =
        CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
};

/// What Windows sends to each window at the end of the session, from another thread.
std::future<LRESULT> tellSessionEnds(bool really)
{
    return std::async(std::launch::async, [really] {
        const HWND window = listeningWindow();
        const LRESULT agreed = SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
        SendMessageW(window, WM_ENDSESSION, really ? TRUE : FALSE, 0);
        return agreed;
    });
}

/// What the loop returns; 7 when nothing has ended it in time.
int runLoop(int milliseconds = 30000)
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
    /// Requests that came after the end of a loop are forgotten.
    void init() { QCoreApplication::processEvents(); }

    void sessionEndsTheLoop();
    void requestBeforeTheLoopCounts();
    void sessionThatGoesOnChangesNothing();
    void postedMessagesCount_data();
    void postedMessagesCount();
    void queryCancelsNothing();
    void windowIsHiddenAndFound();
    void windowTrustsNobody();
};

void SessionEndTest::sessionEndsTheLoop()
{
    std::atomic<int> requests = 0;
    int left = 0;
    const SessionEnd end([&] { ++requests; });
    std::future<int> requestsAtTheAnswer;
    QTimer::singleShot(0, this, [&] {
        requestsAtTheAnswer = std::async(std::launch::async, [&] {
            return tellSessionEnds(true).get() == TRUE ? requests.load() : -1;
        });
        QEventLoop().exec();
        ++left;
    });
    QCOMPARE(runLoop(), 0);
    QCOMPARE(left, 1);
    QCOMPARE(requestsAtTheAnswer.get(), 1);
}

void SessionEndTest::requestBeforeTheLoopCounts()
{
    const SessionEnd end;
    SendMessageW(listeningWindow(), WM_ENDSESSION, TRUE, 0);
    QCOMPARE(runLoop(), 0);
}

void SessionEndTest::sessionThatGoesOnChangesNothing()
{
    const SessionEnd end([] { QFAIL("asked to end"); });
    std::future<LRESULT> told;
    QTimer::singleShot(0, this, [&] { told = tellSessionEnds(false); });
    QCOMPARE(runLoop(300), 7);
    QCOMPARE(told.get(), LRESULT{TRUE});
}

void SessionEndTest::postedMessagesCount_data()
{
    QTest::addColumn<bool>("toAnotherWindow");
    QTest::newRow("to the hidden window") << false;
    QTest::newRow("to another one") << true;
}

void SessionEndTest::postedMessagesCount()
{
    QFETCH(bool, toAnotherWindow);
    const SessionEnd end;
    const OtherWindow other;
    const HWND window = toAnotherWindow ? other.handle() : listeningWindow();
    QVERIFY(PostMessageW(window, WM_QUERYENDSESSION, 0, 0) != FALSE);
    QVERIFY(PostMessageW(window, WM_ENDSESSION, FALSE, 0) != FALSE);
    QCOMPARE(runLoop(100), 7);
    QVERIFY(PostMessageW(window, WM_ENDSESSION, TRUE, 0) != FALSE);
    QCOMPARE(runLoop(), 0);
}

void SessionEndTest::queryCancelsNothing()
{
    const QString pipe = QStringLiteral(R"(\\.\pipe\QuorvelSessionEnd)");
    PipePeer::Server server(pipe, 0);
    PipePeer::Client client(pipe);
    QCOMPARE(client.connect(), DWORD{ERROR_SUCCESS});
    const SessionEnd end;
    auto reader = std::async(std::launch::async, [&] {
        DWORD_PTR answer = 0;
        SendMessageTimeoutW(listeningWindow(), WM_QUERYENDSESSION, 0, 0, SMTO_NORMAL, 500, &answer);
        return server.read().data;
    });
    {
        const CallTimeout timeout(60s);
        QCOMPARE(client.write("1"), DWORD{ERROR_SUCCESS});
    }
    QCOMPARE(reader.get(), QByteArray("1"));
}

void SessionEndTest::windowIsHiddenAndFound()
{
    {
        const SessionEnd end;
        const HWND window = listeningWindow();
        QVERIFY(window != nullptr);
        QVERIFY(IsWindowVisible(window) == FALSE);
        QVERIFY(GetParent(window) == nullptr);
        QCOMPARE(GetWindowTextLengthW(window), 0);
        DWORD process = 0;
        QCOMPARE(GetWindowThreadProcessId(window, &process), GetCurrentThreadId());
        QCOMPARE(process, GetCurrentProcessId());
    }
    QVERIFY(listeningWindow() == nullptr);
}

void SessionEndTest::windowTrustsNobody()
{
    const SessionEnd end;
    const HWND window = listeningWindow();
    SetWindowLongPtrW(window, GWLP_USERDATA, 1);
    SendMessageW(window, WM_CLOSE, 0, 0);
    QCOMPARE(runLoop(100), 7);
    QCOMPARE(listeningWindow(), window);
    SendMessageW(window, WM_ENDSESSION, TRUE, 0);
    QCOMPARE(runLoop(), 0);
}

QUORVEL_TEST_MAIN(SessionEndTest)
#include "session_end_windows_test.moc"
