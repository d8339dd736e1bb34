#include "platform/scoped_handle.h"
#include "platform/win32.h"
#include "support/test_main.h"
#include "support/waiting_thread.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QTest>

#include <atomic>
#include <bit>
#include <thread>

namespace {

constexpr DWORD succeeded = 0;
constexpr DWORD noFunction = 1;
constexpr DWORD notFound = 2;
constexpr DWORD invalidHandle = 6;
constexpr DWORD brokenPipe = 109;
constexpr DWORD busy = 231;
constexpr DWORD noData = 232;
constexpr DWORD pipeNotConnected = 233;
constexpr DWORD moreData = 234;
constexpr DWORD alreadyConnected = 535;
constexpr DWORD stillListening = 536;
constexpr DWORD aborted = 995;
constexpr DWORD notWaiting = 1168;

DWORD resultOf(BOOL result)
{
    return result == FALSE ? GetLastError() : succeeded;
}

DWORD connectPipe(HANDLE pipe)
{
    return resultOf(ConnectNamedPipe(pipe, nullptr));
}

DWORD disconnectPipe(HANDLE pipe)
{
    return resultOf(DisconnectNamedPipe(pipe));
}

DWORD writeTo(HANDLE pipe, const QByteArray& message)
{
    DWORD written = 0;
    const DWORD error = resultOf(WriteFile(pipe, message.constData(),
                                           static_cast<DWORD>(message.size()), &written, nullptr));
    return error == succeeded && written != static_cast<DWORD>(message.size()) ? noFunction : error;
}

struct Reading
{
    DWORD error;
    QByteArray data;
};

Reading readFrom(HANDLE pipe, DWORD room = 1024)
{
    QByteArray buffer(static_cast<int>(room), '\xEE');
    DWORD count = 77;
    const DWORD error = resultOf(ReadFile(pipe, buffer.data(), room, &count, nullptr));
    return {error, buffer.left(static_cast<int>(count))};
}

} // namespace

class PipeContractTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void absentPipeIsNotFound();
    void closedPipeIsNotFound();
    void serverWaitsForItsClient();
    void earlyClientCountsAsConnected();
    void earlyClientThatClosedHasNoData();
    void secondClientFindsThePipeBusy();
    void disconnectedPipeIsBusy();
    void onlyInstanceIsTaken();
    void messagesKeepTheirBoundaries();
    void messageAsLargeAsTheBufferIsRead();
    void largerMessageHasMoreData();
    void disconnectingDropsTheRest();
    void emptyMessageIsAMessage();
    void lastMessageOutlivesItsClient();
    void silentClientBreaksThePipe();
    void instanceServesOneClientAfterTheOther();
    void clientLearnsOfTheDisconnection();
    void clientLearnsOfTheClosing();
    void serverAnswersItsClient();
    void closingEndsAWaitingWrite();
    void callsOutOfTurnAreRefused();
    void invalidHandlesAreRefused_data();
    void invalidHandlesAreRefused();
    void waitingConnectIsCancelled();
    void waitingReadIsCancelled();
    void waitingWriteIsCancelled_data();
    void waitingWriteIsCancelled();
    void idleThreadHasNothingToCancel();
    void waitOnAPipeIsCancelledByItsHandle_data();
    void waitOnAPipeIsCancelledByItsHandle();
    void otherPipesAreNotCancelled();

private:
    HANDLE createPipe(DWORD mostInstances = PIPE_UNLIMITED_INSTANCES, DWORD bufferSize = 65536);
    HANDLE openPipe();

    std::wstring path;
    int number = 0;
};

/// Every test has a pipe of its own.
void PipeContractTest::init()
{
    path = QString(R"(\\.\pipe\QuorvelContract-%1-%2)")
               .arg(QCoreApplication::applicationPid())
               .arg(++number)
               .toStdWString();
}

HANDLE PipeContractTest::createPipe(DWORD mostInstances, DWORD bufferSize)
{
    return CreateNamedPipeW(path.c_str(), PIPE_ACCESS_DUPLEX,
                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, mostInstances,
                            bufferSize, bufferSize, 300, nullptr);
}

HANDLE PipeContractTest::openPipe()
{
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
}

void PipeContractTest::absentPipeIsNotFound()
{
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
}

void PipeContractTest::closedPipeIsNotFound()
{
    ScopedHandle pipe(createPipe());
    QVERIFY(pipe.isValid());
    pipe.reset(nullptr);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
}

void PipeContractTest::serverWaitsForItsClient()
{
    const ScopedHandle pipe(createPipe());
    WaitingThread server([&] { return connectPipe(pipe.get()); });
    const ScopedHandle client(openPipe());
    QCOMPARE(writeTo(client.get(), "hello"), succeeded);
    const DWORD connected = server.join();
    // The client may have been faster.
    QVERIFY(connected == succeeded || connected == alreadyConnected);
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("hello"));
}

void PipeContractTest::earlyClientCountsAsConnected()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
    QCOMPARE(writeTo(client.get(), "early"), succeeded);
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("early"));
}

void PipeContractTest::earlyClientThatClosedHasNoData()
{
    const ScopedHandle pipe(createPipe());
    ScopedHandle client(openPipe());
    QCOMPARE(writeTo(client.get(), "gone"), succeeded);
    client.reset(nullptr);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    QCOMPARE(connectPipe(pipe.get()), noData);
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("gone"));
    QCOMPARE(readFrom(pipe.get()).error, brokenPipe);
    QCOMPARE(connectPipe(pipe.get()), noData);
    QCOMPARE(disconnectPipe(pipe.get()), succeeded);
}

void PipeContractTest::secondClientFindsThePipeBusy()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
}

void PipeContractTest::disconnectedPipeIsBusy()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(disconnectPipe(pipe.get()), succeeded);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
}

void PipeContractTest::onlyInstanceIsTaken()
{
    ScopedHandle only(createPipe(1));
    QVERIFY(only.isValid());
    QCOMPARE(createPipe(1), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    // Whom the attempt must not have disturbed.
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
    QCOMPARE(createPipe(1), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    only.reset(nullptr);
    const ScopedHandle next(createPipe(1));
    QVERIFY(next.isValid());
}

void PipeContractTest::messagesKeepTheirBoundaries()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(writeTo(client.get(), "one"), succeeded);
    QCOMPARE(writeTo(client.get(), "three"), succeeded);
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("one"));
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("three"));
}

void PipeContractTest::messageAsLargeAsTheBufferIsRead()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    const QByteArray message(1024, 'x');
    QCOMPARE(writeTo(client.get(), message), succeeded);
    const Reading reading = readFrom(pipe.get());
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, message);
}

void PipeContractTest::largerMessageHasMoreData()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(writeTo(client.get(), QByteArray(1024, 'x') + 'y'), succeeded);
    QCOMPARE(writeTo(client.get(), "next"), succeeded);
    Reading reading = readFrom(pipe.get());
    QCOMPARE(reading.error, moreData);
    QCOMPARE(reading.data, QByteArray(1024, 'x'));
    reading = readFrom(pipe.get());
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray("y"));
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("next"));
}

void PipeContractTest::disconnectingDropsTheRest()
{
    const ScopedHandle pipe(createPipe());
    ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(writeTo(client.get(), QByteArray(1500, 'x')), succeeded);
    QCOMPARE(writeTo(client.get(), "unread"), succeeded);
    QCOMPARE(readFrom(pipe.get()).error, moreData);
    QCOMPARE(disconnectPipe(pipe.get()), succeeded);
    client.reset(nullptr);

    std::thread other([&] {
        // Busy until the server listens again.
        HANDLE opened = openPipe();
        while (opened == INVALID_HANDLE_VALUE && GetLastError() == busy) {
            Sleep(1);
            opened = openPipe();
        }
        const ScopedHandle end(opened);
        writeTo(end.get(), "fresh");
    });
    const DWORD connected = connectPipe(pipe.get());
    const Reading reading = readFrom(pipe.get());
    other.join();
    QCOMPARE(connected, succeeded);
    QCOMPARE(reading.data, QByteArray("fresh"));
}

void PipeContractTest::emptyMessageIsAMessage()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(writeTo(client.get(), ""), succeeded);
    QCOMPARE(writeTo(client.get(), "x"), succeeded);
    const Reading reading = readFrom(pipe.get());
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray());
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("x"));
}

void PipeContractTest::lastMessageOutlivesItsClient()
{
    const ScopedHandle pipe(createPipe());
    ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(writeTo(client.get(), "last words"), succeeded);
    client.reset(nullptr);
    const Reading reading = readFrom(pipe.get());
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray("last words"));
    QCOMPARE(readFrom(pipe.get()).error, brokenPipe);
}

void PipeContractTest::silentClientBreaksThePipe()
{
    const ScopedHandle pipe(createPipe());
    ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    client.reset(nullptr);
    const Reading reading = readFrom(pipe.get());
    QCOMPARE(reading.error, brokenPipe);
    QCOMPARE(reading.data, QByteArray());
}

void PipeContractTest::instanceServesOneClientAfterTheOther()
{
    constexpr int rounds = 200;
    const ScopedHandle pipe(createPipe());
    std::thread clients([&] {
        for (int i = 0; i < rounds; ++i) {
            HANDLE end = openPipe();
            while (end == INVALID_HANDLE_VALUE) {
                Sleep(1);
                end = openPipe();
            }
            writeTo(end, QByteArray::number(i));
            readFrom(end); // Until the server parts.
            CloseHandle(end);
        }
    });
    QStringList problems;
    for (int i = 0; i < rounds; ++i) {
        const DWORD connected = connectPipe(pipe.get());
        const Reading reading = readFrom(pipe.get());
        if ((connected != succeeded && connected != alreadyConnected) ||
            reading.data != QByteArray::number(i))
            problems.append(QString("%1: %2 %3").arg(i).arg(connected).arg(reading.error));
        disconnectPipe(pipe.get());
    }
    clients.join();
    QCOMPARE(problems, QStringList());
}

void PipeContractTest::clientLearnsOfTheDisconnection()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(writeTo(pipe.get(), "unread"), succeeded);
    QCOMPARE(disconnectPipe(pipe.get()), succeeded);
    QCOMPARE(writeTo(client.get(), "x"), pipeNotConnected);
    QCOMPARE(readFrom(client.get()).error, pipeNotConnected);
}

void PipeContractTest::clientLearnsOfTheClosing()
{
    ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(writeTo(pipe.get(), "last words"), succeeded);
    pipe.reset(nullptr);
    QCOMPARE(writeTo(client.get(), "x"), noData);
    QCOMPARE(readFrom(client.get()).data, QByteArray("last words"));
    QCOMPARE(readFrom(client.get()).error, brokenPipe);
}

void PipeContractTest::serverAnswersItsClient()
{
    const ScopedHandle pipe(createPipe());
    ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(writeTo(pipe.get(), "answer"), succeeded);
    QCOMPARE(readFrom(client.get()).data, QByteArray("answer"));
    client.reset(nullptr);
    QCOMPARE(writeTo(pipe.get(), "x"), noData);
}

void PipeContractTest::closingEndsAWaitingWrite()
{
    ScopedHandle pipe(createPipe(PIPE_UNLIMITED_INSTANCES, 0));
    const ScopedHandle client(openPipe());
    WaitingThread writer([&] { return writeTo(client.get(), "never read"); });
    pipe.reset(nullptr);
    const DWORD error = writer.join();
    // The server may have been faster.
    QVERIFY(error == brokenPipe || error == noData);
}

void PipeContractTest::callsOutOfTurnAreRefused()
{
    const ScopedHandle pipe(createPipe());
    QCOMPARE(readFrom(pipe.get()).error, stillListening);
    QCOMPARE(writeTo(pipe.get(), "x"), stillListening);
    ScopedHandle client(openPipe());
    QCOMPARE(connectPipe(client.get()), noFunction);
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
    QCOMPARE(disconnectPipe(pipe.get()), succeeded);
    QCOMPARE(disconnectPipe(pipe.get()), pipeNotConnected);
    QCOMPARE(readFrom(pipe.get()).error, pipeNotConnected);
    QCOMPARE(writeTo(pipe.get(), "x"), pipeNotConnected);
}

void PipeContractTest::invalidHandlesAreRefused_data()
{
    QTest::addColumn<quintptr>("value");
    QTest::newRow("null") << quintptr{0};
    QTest::newRow("all bits") << ~quintptr{0};
    QTest::newRow("garbage") << quintptr{0x7ABCDE0};
}

void PipeContractTest::invalidHandlesAreRefused()
{
    QFETCH(quintptr, value);
    const auto handle = std::bit_cast<HANDLE>(value);
    QCOMPARE(connectPipe(handle), invalidHandle);
    QCOMPARE(disconnectPipe(handle), invalidHandle);
    QCOMPARE(readFrom(handle).error, invalidHandle);
    QCOMPARE(writeTo(handle, "x"), invalidHandle);
    QCOMPARE(resultOf(CancelSynchronousIo(handle)), invalidHandle);
    // There all bits mean the process itself to Windows.
    if (handle != INVALID_HANDLE_VALUE)
        QCOMPARE(resultOf(CancelIoEx(handle, nullptr)), invalidHandle);
}

void PipeContractTest::waitingConnectIsCancelled()
{
    const ScopedHandle pipe(createPipe());
    WaitingThread thread([&] { return connectPipe(pipe.get()); });
    thread.cancel();
    QCOMPARE(thread.join(), aborted);

    // The instance listens on.
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
    QCOMPARE(connectPipe(pipe.get()), alreadyConnected);
}

void PipeContractTest::waitingReadIsCancelled()
{
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(openPipe());
    WaitingThread thread([&] { return readFrom(pipe.get()).error; });
    thread.cancel();
    QCOMPARE(thread.join(), aborted);
    QCOMPARE(writeTo(client.get(), "still there"), succeeded);
    QCOMPARE(readFrom(pipe.get()).data, QByteArray("still there"));
}

void PipeContractTest::waitingWriteIsCancelled_data()
{
    QTest::addColumn<DWORD>("bufferSize");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("without a buffer") << DWORD{0} << QByteArray("never read");
    QTest::newRow("larger than the buffer") << DWORD{65536} << QByteArray(100000, 'z');
}

/// That it can be cancelled shows that it waits.
void PipeContractTest::waitingWriteIsCancelled()
{
    QFETCH(DWORD, bufferSize);
    QFETCH(QByteArray, message);
    const ScopedHandle pipe(createPipe(PIPE_UNLIMITED_INSTANCES, bufferSize));
    const ScopedHandle client(openPipe());
    for (const auto& [writing, reading] :
         {std::pair(client.get(), pipe.get()), std::pair(pipe.get(), client.get())}) {
        WaitingThread cancelled([&, end = writing] { return writeTo(end, message); });
        cancelled.cancel();
        QCOMPARE(cancelled.join(), aborted);
        // What was cancelled does not arrive.
        message.back() = '!';
        WaitingThread writer([&, end = writing] { return writeTo(end, message); });
        const Reading arrived = readFrom(reading, 200000);
        QCOMPARE(writer.join(), succeeded);
        QCOMPARE(arrived.error, succeeded);
        QVERIFY(arrived.data == message);
    }
}

void PipeContractTest::idleThreadHasNothingToCancel()
{
    std::atomic<bool> leave = false;
    WaitingThread thread([&] {
        while (!leave)
            std::this_thread::yield();
        return succeeded;
    });
    const DWORD error = resultOf(CancelSynchronousIo(thread.threadHandle()));
    leave = true;
    thread.join();
    QCOMPARE(error, notWaiting);
}

void PipeContractTest::waitOnAPipeIsCancelledByItsHandle_data()
{
    QTest::addColumn<bool>("hasClient");
    QTest::newRow("for a client") << false;
    QTest::newRow("for a message") << true;
}

void PipeContractTest::waitOnAPipeIsCancelledByItsHandle()
{
    QFETCH(bool, hasClient);
    const ScopedHandle pipe(createPipe());
    const ScopedHandle client(hasClient ? openPipe() : nullptr);
    WaitingThread thread(
        [&] { return hasClient ? readFrom(pipe.get()).error : connectPipe(pipe.get()); });
    thread.cancelOn(pipe.get());
    QCOMPARE(thread.join(), aborted);
}

void PipeContractTest::otherPipesAreNotCancelled()
{
    const ScopedHandle pipe(createPipe());
    WaitingThread thread([&] { return connectPipe(pipe.get()); });
    const std::wstring name = path;
    init();
    const ScopedHandle other(createPipe());
    WaitingThread cancelled([&] { return connectPipe(other.get()); });
    cancelled.cancelOn(other.get());
    QCOMPARE(cancelled.join(), aborted);
    path = name;
    const ScopedHandle client(openPipe());
    const DWORD connected = thread.join();
    QVERIFY(connected == succeeded || connected == alreadyConnected);
}

QUORVEL_TEST_MAIN(PipeContractTest)
#include "pipe_contract_test.moc"
