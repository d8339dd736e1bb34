#include "asio/asio_reset.h"
#include "asio/pipe_endpoint.h"
#include "support/recorded_platform.h"
#include "support/test_main.h"

#include <QTest>

#include <array>

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

void noteLine(QtMsgType, const QMessageLogContext&, const QString& text)
{
    RecordedPlatform::note(text);
}

} // namespace

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
    void endpointWrites();

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
    PipeEndpoint endpoint(R"(\\.\pipe\Test)");
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
    QVERIFY(endpoint.createPipe());
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{pipeCreation, "Pipe created successfully."}));
    endpoint.dropClient();
    endpoint.cancelWait();
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"DisconnectNamedPipe 4", "CancelIoEx 4 null"}));
    std::array<char, PipeEndpoint::messageSize> buffer{};
    QVERIFY(endpoint.readMessage(buffer.data()));
    QCOMPARE(
        RecordedPlatform::takeCalls(),
        (QStringList{"ConnectNamedPipe 4 null", "ReadFile 4 1024 null", "DisconnectNamedPipe 4"}));
    endpoint.closePipe();
    const QStringList closing{"DisconnectNamedPipe 4", "CloseHandle 4", "Pipe closed."};
    QCOMPARE(RecordedPlatform::takeCalls(), closing);
    endpoint.closePipe();
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
}

void AsioCallsTest::endpointRefused()
{
    Script script;
    script.createError = 5;
    RecordedPlatform::reset(script);
    {
        PipeEndpoint endpoint(R"(\\.\pipe\Test)");
        QVERIFY(!endpoint.createPipe());
        QCOMPARE(RecordedPlatform::takeCalls(),
                 (QStringList{pipeCreation, "Error: Could not create pipe. Error code: 5"}));
        std::array<char, PipeEndpoint::messageSize> buffer{};
        QVERIFY(!endpoint.readMessage(buffer.data()));
        QCOMPARE(RecordedPlatform::takeCalls(),
                 (QStringList{"ConnectNamedPipe 18446744073709551615 null",
                              "Error connecting to pipe. Error code: 6"}));
    }
    QCOMPARE(RecordedPlatform::takeCalls(), QStringList());
}

void AsioCallsTest::endpointWrites()
{
    PipeEndpoint endpoint(R"(\\.\pipe\Test)");
    QVERIFY(endpoint.createPipe());
    RecordedPlatform::takeCalls();
    QVERIFY(endpoint.writeMessage("ab"));
    QCOMPARE(RecordedPlatform::takeCalls(),
             (QStringList{"ConnectNamedPipe 4 null", "WriteFile 4 6162 null",
                          R"(Data written to pipe: "ab")", "DisconnectNamedPipe 4"}));
}

QUORVEL_TEST_MAIN(AsioCallsTest)
#include "asio_calls_test.moc"
