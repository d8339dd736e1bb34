#include "asio/asio_reset.h"
#include "asio/pipe_endpoint.h"
#include "asio/thread_settings_pip.h"
#include "support/recorded_platform.h"
#include "support/test_main.h"

#include <QSemaphore>
#include <QTest>

#include <array>
#include <atomic>
#include <ctime>
#include <memory>
#include <sys/syscall.h>
#include <unistd.h>

using RecordedPlatform::Script;

namespace {

const QString resetOpen =
    QStringLiteral(R"(CreateFileW \\.\pipe\QuorvelPannelToASIO C0000000 0 null 3 0 null)");
const QString opened = QStringLiteral("Pipe opened successfully.");
/// Its time-out cancels what this thread waits in.
const QString threadOpen = QStringLiteral("OpenThread 1 0 self");
const QString byteWritten = QStringLiteral("WriteFile 4 31 null");
const QString threadClosed = QStringLiteral("CloseHandle 8");
const QString sent = QStringLiteral("ASIO reset signal sent successfully.");
const QString lastLine = QStringLiteral("设置通知ASIO逻辑");
const QString pipeCreation =
    QStringLiteral(R"(CreateNamedPipeW \\.\pipe\Test 3 6 255 65536 65536 300 null)");

const QStringList pipeCreated{pipeCreation, "Pipe created successfully."};
const QStringList pipeClosed{"DisconnectNamedPipe 4", "CloseHandle 4", "Pipe closed."};

/// While it is set, a pause is noted among the calls and lasts until the test lets it end.
std::atomic<bool> holdsPauses = false;
QSemaphore pauseBegun;
QSemaphore pauseEnds;

void noteLine(QtMsgType, const QMessageLogContext&, const QString& text)
{
    RecordedPlatform::note(text);
}

} // namespace

/// In place of the C library's, which QThread::msleep() calls.
extern "C" int nanosleep(const timespec* length, timespec* rest)
{
    if (!holdsPauses)
        return static_cast<int>(::syscall(SYS_nanosleep, length, rest));
    RecordedPlatform::note("pause " +
                           QString::number(length->tv_sec * 1000 + length->tv_nsec / 1000000));
    pauseBegun.release();
    pauseEnds.acquire();
    return 0;
}

/// Every call that leaves this room, with all of its arguments, in order with the debug lines.
class AsioCallsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void reset();
    void resetRefused();
    void resetNotWritten();
    void endpoint();
    void endpointRefused();
    void endpointReads_data();
    void endpointReads();
    void endpointWrites_data();
    void endpointWrites();
    void threadPauses_data();
    void threadPauses();

private:
    QtMessageHandler previous = nullptr;
};

void AsioCallsTest::init()
{
    RecordedPlatform::reset();
    previous = qInstallMessageHandler(noteLine);
}

void AsioCallsTest::cleanup()
{
    qInstallMessageHandler(previous);
}

void AsioCallsTest::reset()
{
    sendAsioReset();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{resetOpen, opened, threadOpen, byteWritten, threadClosed, sent,
                          "CloseHandle 4", lastLine}));
}

void AsioCallsTest::resetRefused()
{
    Script script;
    script.openErrors = {5};
    RecordedPlatform::reset(script);
    sendAsioReset();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{resetOpen, "Error: Could not open pipe. Error code: 5"}));
}

void AsioCallsTest::resetNotWritten()
{
    Script script;
    script.writeError = 232;
    RecordedPlatform::reset(script);
    sendAsioReset();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{resetOpen, opened, threadOpen, byteWritten, threadClosed,
                          "Error: Failed to send ASIO reset signal. Error code: 232",
                          "CloseHandle 4", lastLine}));
}

void AsioCallsTest::endpoint()
{
    auto endpoint = std::make_unique<PipeEndpoint>(R"(\\.\pipe\Test)");
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
    QVERIFY(endpoint->createPipe());
    QCOMPARE(RecordedPlatform::takeCalls(), pipeCreated);
    endpoint->dropClient();
    endpoint->cancelWait();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"DisconnectNamedPipe 4", "CancelIoEx 4 null"}));
    // In place of the one before.
    QVERIFY(endpoint->createPipe());
    QCOMPARE(RecordedPlatform::takeCalls(), pipeClosed + pipeCreated);
    endpoint->closePipe();
    endpoint->closePipe();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"DisconnectNamedPipe 8", "CloseHandle 8", "Pipe closed."}));
    QVERIFY(endpoint->createPipe());
    RecordedPlatform::takeCalls();
    endpoint.reset();
    QCOMPARE(RecordedPlatform::takeCalls().constLast(), QString("Pipe closed."));
}

void AsioCallsTest::endpointRefused()
{
    Script script;
    script.createError = 5;
    RecordedPlatform::reset(script);
    const QStringList notConnected{"ConnectNamedPipe 18446744073709551615 null",
                                   "Error connecting to pipe. Error code: 6"};
    {
        PipeEndpoint endpoint(R"(\\.\pipe\Test)");
        QVERIFY(!endpoint.createPipe());
        QCOMPARE(RecordedPlatform::takeCalls(),
                 (QStringList{pipeCreation, "Error: Could not create pipe. Error code: 5"}));
        std::array<char, PipeEndpoint::messageSize> buffer{};
        QVERIFY(!endpoint.readMessage(buffer.data()));
        QCOMPARE(RecordedPlatform::takeCalls(), notConnected);
        QVERIFY(!endpoint.writeMessage("x"));
        QCOMPARE(RecordedPlatform::takeCalls(), notConnected);
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
}

void AsioCallsTest::endpointReads_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<std::uint32_t>("error");
    QTest::newRow("a message") << QByteArray("a\0b", 3) << 0U;
    QTest::newRow("nothing in it") << QByteArray() << 0U;
    QTest::newRow("as long as may be") << QByteArray(1024, 'x') << 0U;
    QTest::newRow("too long") << QByteArray(1025, 'x') << 234U;
    QTest::newRow("none") << QByteArray() << 109U;
}

/// The message gets into the buffer, and nothing else does.
void AsioCallsTest::endpointReads()
{
    QFETCH(const QByteArray, message);
    QFETCH(const std::uint32_t, error);
    Script script;
    script.message = message;
    script.readError = error;
    RecordedPlatform::reset(script);
    PipeEndpoint endpoint(R"(\\.\pipe\Test)");
    QVERIFY(endpoint.createPipe());
    RecordedPlatform::takeCalls();
    QByteArray buffer(PipeEndpoint::messageSize, '\xEE');
    QByteArray expected = buffer;
    QStringList calls{"ConnectNamedPipe 4 null", "ReadFile 4 1024 null"};
    if (error == 0)
        expected.replace(0, message.size(), message);
    else
        calls.append("Error reading from pipe. Error code: " + QString::number(error));
    QCOMPARE(endpoint.readMessage(buffer.data()), error == 0);
    QCOMPARE(buffer, expected);
    QCOMPARE(RecordedPlatform::takeCalls(), calls + QStringList{"DisconnectNamedPipe 4"});
}

void AsioCallsTest::endpointWrites_data()
{
    QTest::addColumn<std::uint32_t>("error");
    QTest::addColumn<QString>("line");
    QTest::newRow("taken") << 0U << R"(Data written to pipe: "1\x00\xFF")";
    QTest::newRow("client leaves") << 109U << "Error writing to pipe. Error code: 109";
}

void AsioCallsTest::endpointWrites()
{
    QFETCH(const std::uint32_t, error);
    QFETCH(const QString, line);
    Script script;
    script.writeError = error;
    RecordedPlatform::reset(script);
    PipeEndpoint endpoint(R"(\\.\pipe\Test)");
    QVERIFY(endpoint.createPipe());
    RecordedPlatform::takeCalls();
    QCOMPARE(endpoint.writeMessage(QByteArray("1\0\xFF", 3)), error == 0);
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"ConnectNamedPipe 4 null", "WriteFile 4 3100ff null", line,
                          "DisconnectNamedPipe 4"}));
}

void AsioCallsTest::threadPauses_data()
{
    QTest::addColumn<std::uint32_t>("createError");
    QTest::addColumn<QStringList>("pass");
    const QString running = "ThreadSettingsPip is running waiting Asio Info...";
    const QString pause = "pause 100";
    QTest::newRow("after a client") << 0U
                                    << QStringList{running,
                                                   "ConnectNamedPipe 4 null",
                                                   "ReadFile 4 1024 null",
                                                   "DisconnectNamedPipe 4",
                                                   "Received data from pipe: 0 0 0 0 0",
                                                   pause};
    QTest::newRow("without a pipe") << 5U
                                    << QStringList{running,
                                                   "ConnectNamedPipe 18446744073709551615 null",
                                                   "Error connecting to pipe. Error code: 6",
                                                   "No data received from pipe.",
                                                   "DisconnectNamedPipe 18446744073709551615",
                                                   pause};
}

void AsioCallsTest::threadPauses()
{
    QFETCH(const std::uint32_t, createError);
    QFETCH(const QStringList, pass);
    Script script;
    script.createError = createError;
    RecordedPlatform::reset(script);
    ThreadSettingsPip thread(nullptr);
    RecordedPlatform::takeCalls();
    holdsPauses = true;
    thread.start();
    for (int round = 0; round < 3; ++round) {
        const bool begun = pauseBegun.tryAcquire(1, 45000);
        const QStringList calls = RecordedPlatform::takeCalls();
        holdsPauses = round < 2;
        pauseEnds.release();
        QVERIFY(begun);
        QCOMPARE(calls, pass);
    }
}

QUORVEL_TEST_MAIN(AsioCallsTest)
#include "asio_calls_test.moc"
