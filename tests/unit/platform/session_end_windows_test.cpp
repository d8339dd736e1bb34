#include "platform/session_end.h"
#include "platform/win32.h"
#include "support/test_main.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QTest>
#include <QTimer>

#include <future>
#include <optional>

using namespace std::chrono_literals;

namespace {

/// The window by which others find the program.
HWND listeningWindow()
{
    return FindWindowW(L"QuorvelDriverSessionEnd", nullptr);
}

/// What Windows sends to each window at the end of the session, from another thread. The future
/// is ready when Windows may end the process.
std::future<LRESULT> tellSessionEnds(bool really)
{
    return std::async(std::launch::async, [really] {
        const HWND window = listeningWindow();
        const LRESULT agreed = SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
        SendMessageW(window, WM_ENDSESSION, really ? TRUE : FALSE, 0);
        return agreed;
    });
}

/// Lets the filters of the application see a message to a window of Qt's. Their answer, or -1
/// when none took it.
qintptr filtered(UINT message, WPARAM wParam)
{
    MSG event = {};
    event.message = message;
    event.wParam = wParam;
    qintptr result = -2;
    const bool taken = QAbstractEventDispatcher::instance()->filterNativeEvent(
        QByteArrayLiteral("windows_generic_MSG"), &event, &result);
    return taken ? result : -1;
}

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
    /// Requests that came after the end of a loop are forgotten.
    void init() { QCoreApplication::processEvents(); }
    void sessionEndsTheLoop();
    void systemWaitsForTheTearDown();
    void sessionThatGoesOnChangesNothing();
    void blockedThreadAgreesAtOnce();
    void windowIsHiddenAndFound();
    void closingTheWindowChangesNothing();
    void windowsOfQtLeadToTheSameEnd();
};

void SessionEndTest::sessionEndsTheLoop()
{
    std::optional<SessionEnd> end(std::in_place);
    std::future<LRESULT> told;
    QTimer::singleShot(20, this, [&] { told = tellSessionEnds(true); });
    QCOMPARE(runLoop(), 0);
    end.reset();
    QCOMPARE(told.get(), LRESULT{TRUE});
}

void SessionEndTest::systemWaitsForTheTearDown()
{
    std::optional<SessionEnd> end(std::in_place);
    auto told = tellSessionEnds(true);
    QCOMPARE(runLoop(), 0);
    QCOMPARE(told.wait_for(500ms), std::future_status::timeout);
    end.reset();
    QCOMPARE(told.wait_for(5s), std::future_status::ready);
}

void SessionEndTest::sessionThatGoesOnChangesNothing()
{
    const SessionEnd end;
    std::future<LRESULT> told;
    QTimer::singleShot(0, this, [&] { told = tellSessionEnds(false); });
    QCOMPARE(runLoop(300), 7);
    QCOMPARE(told.get(), LRESULT{TRUE});
}

void SessionEndTest::blockedThreadAgreesAtOnce()
{
    const SessionEnd end;
    auto told = tellSessionEnds(false);
    QCOMPARE(told.wait_for(5s), std::future_status::ready);
    QCOMPARE(told.get(), LRESULT{TRUE});
}

void SessionEndTest::windowIsHiddenAndFound()
{
    // That of an end before this one lingers for a moment.
    QTRY_VERIFY(listeningWindow() == nullptr);
    {
        const SessionEnd end;
        const HWND window = listeningWindow();
        QVERIFY(window != nullptr);
        QVERIFY(IsWindowVisible(window) == FALSE);
        QVERIFY(GetParent(window) == nullptr);
        QCOMPARE(GetWindowTextLengthW(window), 0);
        QVERIFY(GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId());
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        QCOMPARE(process, GetCurrentProcessId());
    }
    QVERIFY(listeningWindow() == nullptr);
}

void SessionEndTest::closingTheWindowChangesNothing()
{
    const SessionEnd end;
    SendMessageW(listeningWindow(), WM_CLOSE, 0, 0);
    QVERIFY(listeningWindow() != nullptr);
    QCOMPARE(runLoop(100), 7);
}

void SessionEndTest::windowsOfQtLeadToTheSameEnd()
{
    const SessionEnd end;
    qintptr query = 0;
    qintptr goesOn = -5;
    qintptr ends = -5;
    bool ranOn = false;
    QTimer::singleShot(0, this, [&] {
        query = filtered(WM_QUERYENDSESSION, 0);
        goesOn = filtered(WM_ENDSESSION, FALSE);
        QTimer::singleShot(50, this, [&] {
            ranOn = true;
            ends = filtered(WM_ENDSESSION, TRUE);
        });
    });
    QCOMPARE(runLoop(), 0);
    QCOMPARE(query, qintptr{TRUE});
    QCOMPARE(goesOn, qintptr{0});
    QCOMPARE(ends, qintptr{0});
    QVERIFY(ranOn);
    QCOMPARE(filtered(WM_CLOSE, 0), qintptr{-1});
}

QUORVEL_TEST_MAIN(SessionEndTest)
#include "session_end_windows_test.moc"
