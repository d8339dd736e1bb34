#include "pipe_peer.h"
#include "platform/call_timeout.h"
#include "support/test_main.h"

#include <QTest>

#include <future>
#include <optional>

using namespace std::chrono_literals;

namespace {

constexpr DWORD succeeded = 0;
constexpr DWORD aborted = 995;

} // namespace

/// The call that waits is a write into a pipe without a buffer: it returns when the byte is read.
class CallTimeoutTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        server.emplace(pipe, 0);
        QCOMPARE(client.connect(), succeeded);
    }
    void cleanup() { server.reset(); }

    void waitingCallIsCancelled();
    void callThatBeginsTooLateIsCancelled();
    void callInTimeSucceeds();
    void laterCallIsNotCancelled();

private:
    std::future<QByteArray> readIn(DWORD milliseconds)
    {
        return std::async(std::launch::async, [this, milliseconds] {
            Sleep(milliseconds);
            return server->read().data;
        });
    }

    const QString pipe = QStringLiteral(R"(\\.\pipe\QuorvelCallTimeout)");
    std::optional<PipePeer::Server> server;
    PipePeer::Client client{pipe};
};

void CallTimeoutTest::waitingCallIsCancelled()
{
    const CallTimeout timeout(50ms);
    QCOMPARE(client.write("1"), aborted);
}

void CallTimeoutTest::callThatBeginsTooLateIsCancelled()
{
    const CallTimeout timeout(0ms);
    Sleep(50);
    QCOMPARE(client.write("1"), aborted);
    QCOMPARE(client.write("1"), aborted);
}

void CallTimeoutTest::callInTimeSucceeds()
{
    const CallTimeout timeout(60s);
    auto read = readIn(50);
    QCOMPARE(client.write("1"), succeeded);
    QCOMPARE(read.get(), QByteArray("1"));
}

void CallTimeoutTest::laterCallIsNotCancelled()
{
    {
        const CallTimeout timeout(0ms);
        QCOMPARE(client.write("1"), aborted);
    }
    auto read = readIn(50);
    QCOMPARE(client.write("2"), succeeded);
    QCOMPARE(read.get(), QByteArray("2"));
}

QUORVEL_TEST_MAIN(CallTimeoutTest)
#include "call_timeout_test.moc"
