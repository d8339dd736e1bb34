#include "platform/win32.h"
#include "support/test_main.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <bit>
#include <optional>
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

/// Long enough for another thread to get into the call it is about to make, on a busy machine too:
/// from outside a waiting call cannot be told from one about to wait.
void letOthersWait()
{
    Sleep(1000);
}

/// A handle that closes itself.
class Handle
{
public:
    explicit Handle(HANDLE opened)
        : handle(opened)
    {
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }

    operator HANDLE() const { return handle; }
    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }
    void close()
    {
        if (isOpen())
            CloseHandle(std::exchange(handle, INVALID_HANDLE_VALUE));
    }

private:
    HANDLE handle;
};

/// A thread that publishes its number, so that others can cancel what it waits in.
class WaitingThread
{
public:
    template <class Work>
    explicit WaitingThread(Work work)
        : thread([this, work] {
            number = GetCurrentThreadId();
            result = work();
            returned = true;
        })
    {
        while (number == 0)
            Sleep(1);
        handle.emplace(OpenThread(THREAD_TERMINATE, FALSE, number));
    }

    HANDLE threadHandle() const { return *handle; }

    bool hasReturned() const { return returned; }

    /// Cancels again and again until it hits the wait.
    void cancel()
    {
        while (CancelSynchronousIo(*handle) == FALSE && GetLastError() == notWaiting)
            Sleep(1);
    }

    DWORD join()
    {
        thread.join();
        return result;
    }

private:
    std::atomic<DWORD> number = 0;
    std::atomic<DWORD> result = 0;
    std::atomic<bool> returned = false;
    std::optional<Handle> handle;
    std::thread thread;
};

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
    void twoInstancesTakeTwoClients();
    void instanceLimitHolds();
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
    void largeMessageWaitsForItsReader();
    void withoutBufferAMessageWaitsForItsReader();
    void waitingReaderGetsTheLastMessage();
    void closingBreaksAWaitingWrite();
    void callsOutOfTurnAreRefused();
    void invalidHandlesAreRefused_data();
    void invalidHandlesAreRefused();
    void pipeKnowsNoDeviceRequests();
    void waitingConnectIsCancelled();
    void waitingReadIsCancelled();
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
    Handle pipe(createPipe());
    QVERIFY(pipe.isOpen());
    pipe.close();
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), notFound);
}

void PipeContractTest::serverWaitsForItsClient()
{
    const Handle pipe(createPipe());
    QElapsedTimer clock;
    clock.start();
    std::thread client([&] {
        letOthersWait();
        const Handle end(openPipe());
        writeTo(end, "hello");
    });
    const DWORD connected = connectPipe(pipe);
    const qint64 waited = clock.elapsed();
    const Reading reading = readFrom(pipe);
    client.join();
    QCOMPARE(connected, succeeded);
    QVERIFY2(waited >= 990, qPrintable(QString::number(waited)));
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray("hello"));
}

void PipeContractTest::earlyClientCountsAsConnected()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QVERIFY(client.isOpen());
    QCOMPARE(writeTo(client, "early"), succeeded);
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(readFrom(pipe).data, QByteArray("early"));
}

void PipeContractTest::earlyClientThatClosedHasNoData()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    QCOMPARE(writeTo(client, "gone"), succeeded);
    client.close();
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    QCOMPARE(connectPipe(pipe), noData);
    QCOMPARE(readFrom(pipe).data, QByteArray("gone"));
    QCOMPARE(readFrom(pipe).error, brokenPipe);
    QCOMPARE(connectPipe(pipe), noData);
    QCOMPARE(disconnectPipe(pipe), succeeded);
}

void PipeContractTest::secondClientFindsThePipeBusy()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
}

void PipeContractTest::disconnectedPipeIsBusy()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(disconnectPipe(pipe), succeeded);
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
}

void PipeContractTest::twoInstancesTakeTwoClients()
{
    const Handle first(createPipe());
    const Handle second(createPipe());
    const Handle client1(openPipe());
    const Handle client2(openPipe());
    QVERIFY(client1.isOpen() && client2.isOpen());
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    QCOMPARE(writeTo(client1, "same"), succeeded);
    QCOMPARE(writeTo(client2, "same"), succeeded);
    QCOMPARE(readFrom(first).data, QByteArray("same"));
    QCOMPARE(readFrom(second).data, QByteArray("same"));
}

void PipeContractTest::instanceLimitHolds()
{
    Handle only(createPipe(1));
    QVERIFY(only.isOpen());
    QCOMPARE(createPipe(1), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
    only.close();
    const Handle next(createPipe(1));
    QVERIFY(next.isOpen());
    // The first one's limit holds for everybody.
    QCOMPARE(createPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), busy);
}

void PipeContractTest::messagesKeepTheirBoundaries()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(writeTo(client, "one"), succeeded);
    QCOMPARE(writeTo(client, "three"), succeeded);
    QCOMPARE(readFrom(pipe).data, QByteArray("one"));
    QCOMPARE(readFrom(pipe).data, QByteArray("three"));
}

void PipeContractTest::messageAsLargeAsTheBufferIsRead()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    const QByteArray message(1024, 'x');
    QCOMPARE(writeTo(client, message), succeeded);
    const Reading reading = readFrom(pipe);
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, message);
}

void PipeContractTest::largerMessageHasMoreData()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(writeTo(client, QByteArray(1024, 'x') + 'y'), succeeded);
    QCOMPARE(writeTo(client, "next"), succeeded);
    Reading reading = readFrom(pipe);
    QCOMPARE(reading.error, moreData);
    QCOMPARE(reading.data, QByteArray(1024, 'x'));
    reading = readFrom(pipe);
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray("y"));
    QCOMPARE(readFrom(pipe).data, QByteArray("next"));
}

void PipeContractTest::disconnectingDropsTheRest()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(writeTo(client, QByteArray(1500, 'x')), succeeded);
    QCOMPARE(writeTo(client, "unread"), succeeded);
    QCOMPARE(readFrom(pipe).error, moreData);
    QCOMPARE(disconnectPipe(pipe), succeeded);
    client.close();

    std::thread other([&] {
        // Busy until the server listens again.
        HANDLE opened = openPipe();
        while (opened == INVALID_HANDLE_VALUE && GetLastError() == busy) {
            Sleep(1);
            opened = openPipe();
        }
        const Handle end(opened);
        writeTo(end, "fresh");
    });
    const DWORD connected = connectPipe(pipe);
    const Reading reading = readFrom(pipe);
    other.join();
    QCOMPARE(connected, succeeded);
    QCOMPARE(reading.data, QByteArray("fresh"));
}

void PipeContractTest::emptyMessageIsAMessage()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(writeTo(client, ""), succeeded);
    QCOMPARE(writeTo(client, "x"), succeeded);
    const Reading reading = readFrom(pipe);
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray());
    QCOMPARE(readFrom(pipe).data, QByteArray("x"));
}

void PipeContractTest::lastMessageOutlivesItsClient()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(writeTo(client, "last words"), succeeded);
    client.close();
    const Reading reading = readFrom(pipe);
    QCOMPARE(reading.error, succeeded);
    QCOMPARE(reading.data, QByteArray("last words"));
    QCOMPARE(readFrom(pipe).error, brokenPipe);
}

void PipeContractTest::silentClientBreaksThePipe()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    client.close();
    const Reading reading = readFrom(pipe);
    QCOMPARE(reading.error, brokenPipe);
    QCOMPARE(reading.data, QByteArray());
}

void PipeContractTest::instanceServesOneClientAfterTheOther()
{
    constexpr int rounds = 200;
    const Handle pipe(createPipe());
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
        const DWORD connected = connectPipe(pipe);
        const Reading reading = readFrom(pipe);
        if ((connected != succeeded && connected != alreadyConnected) ||
            reading.data != QByteArray::number(i))
            problems.append(QString("%1: %2 %3").arg(i).arg(connected).arg(reading.error));
        disconnectPipe(pipe);
    }
    clients.join();
    QCOMPARE(problems, QStringList());
}

void PipeContractTest::clientLearnsOfTheDisconnection()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(writeTo(pipe, "unread"), succeeded);
    QCOMPARE(disconnectPipe(pipe), succeeded);
    QCOMPARE(writeTo(client, "x"), pipeNotConnected);
    QCOMPARE(readFrom(client).error, pipeNotConnected);
}

void PipeContractTest::clientLearnsOfTheClosing()
{
    Handle pipe(createPipe());
    const Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(writeTo(pipe, "last words"), succeeded);
    pipe.close();
    QCOMPARE(writeTo(client, "x"), noData);
    QCOMPARE(readFrom(client).data, QByteArray("last words"));
    QCOMPARE(readFrom(client).error, brokenPipe);
}

void PipeContractTest::serverAnswersItsClient()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(writeTo(pipe, "answer"), succeeded);
    QCOMPARE(readFrom(client).data, QByteArray("answer"));
    client.close();
    QCOMPARE(writeTo(pipe, "x"), noData);
}

void PipeContractTest::largeMessageWaitsForItsReader()
{
    const QByteArray message(1000000, 'z');
    const Handle pipe(createPipe());
    std::atomic<bool> written = false;
    DWORD error = noFunction;
    std::thread writer([&] {
        const Handle client(openPipe());
        error = writeTo(client, message);
        written = true;
    });
    const DWORD connected = connectPipe(pipe);
    Sleep(100);
    const bool early = written;
    const Reading reading = readFrom(pipe, 2000000);
    writer.join();
    QVERIFY(connected == succeeded || connected == alreadyConnected);
    QVERIFY(!early);
    QCOMPARE(error, succeeded);
    QCOMPARE(reading.error, succeeded);
    QVERIFY(reading.data == message);
}

void PipeContractTest::withoutBufferAMessageWaitsForItsReader()
{
    const Handle pipe(createPipe(PIPE_UNLIMITED_INSTANCES, 0));
    const Handle client(openPipe());
    for (int round = 0; round < 2; ++round) {
        std::atomic<bool> written = false;
        WaitingThread writer([&] {
            const DWORD error = writeTo(client, "1");
            written = true;
            return error;
        });
        Sleep(300);
        const bool early = written;
        const Reading reading = readFrom(pipe);
        QCOMPARE(writer.join(), succeeded);
        QVERIFY(!early);
        QCOMPARE(reading.error, succeeded);
        QCOMPARE(reading.data, QByteArray("1"));
    }
}

void PipeContractTest::waitingReaderGetsTheLastMessage()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    WaitingThread reader([&] {
        const Reading reading = readFrom(client);
        return reading.data == "last words" ? reading.error : noFunction;
    });
    letOthersWait();
    QCOMPARE(writeTo(pipe, "last words"), succeeded);
    QCOMPARE(disconnectPipe(pipe), succeeded);
    QCOMPARE(reader.join(), succeeded);
    QCOMPARE(readFrom(client).error, pipeNotConnected);
}

void PipeContractTest::closingBreaksAWaitingWrite()
{
    const Handle pipe(createPipe());
    Handle client(openPipe());
    WaitingThread writer([&] { return writeTo(pipe, QByteArray(1000000, 'z')); });
    letOthersWait();
    client.close();
    QCOMPARE(writer.join(), brokenPipe);
}

void PipeContractTest::callsOutOfTurnAreRefused()
{
    const Handle pipe(createPipe());
    QCOMPARE(readFrom(pipe).error, stillListening);
    QCOMPARE(writeTo(pipe, "x"), stillListening);
    Handle client(openPipe());
    QCOMPARE(connectPipe(client), noFunction);
    QCOMPARE(connectPipe(pipe), alreadyConnected);
    QCOMPARE(disconnectPipe(pipe), succeeded);
    QCOMPARE(disconnectPipe(pipe), pipeNotConnected);
    QCOMPARE(readFrom(pipe).error, pipeNotConnected);
    QCOMPARE(writeTo(pipe, "x"), pipeNotConnected);
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

void PipeContractTest::pipeKnowsNoDeviceRequests()
{
    const Handle pipe(createPipe());
    std::uint32_t value = 7;
    DWORD returned = 0;
    QVERIFY(DeviceIoControl(pipe, 0xFFDC2084, nullptr, 0, &value, sizeof value, &returned,
                            nullptr) == FALSE);
    QCOMPARE(value, 7u);
    QVERIFY(resultOf(CancelSynchronousIo(pipe)) != succeeded);
}

void PipeContractTest::waitingConnectIsCancelled()
{
    const Handle pipe(createPipe());
    WaitingThread thread([&] { return connectPipe(pipe); });
    thread.cancel();
    QCOMPARE(thread.join(), aborted);

    // The instance listens on.
    const Handle client(openPipe());
    QVERIFY(client.isOpen());
    QCOMPARE(connectPipe(pipe), alreadyConnected);
}

void PipeContractTest::waitingReadIsCancelled()
{
    const Handle pipe(createPipe());
    const Handle client(openPipe());
    WaitingThread thread([&] { return readFrom(pipe).error; });
    thread.cancel();
    QCOMPARE(thread.join(), aborted);
    QCOMPARE(writeTo(client, "still there"), succeeded);
    QCOMPARE(readFrom(pipe).data, QByteArray("still there"));
}

void PipeContractTest::waitingWriteIsCancelled()
{
    const Handle pipe(createPipe(PIPE_UNLIMITED_INSTANCES, 0));
    const Handle client(openPipe());
    WaitingThread thread([&] { return writeTo(client, "never read"); });
    thread.cancel();
    QCOMPARE(thread.join(), aborted);
    // What was cancelled does not arrive.
    WaitingThread writer([&] { return writeTo(client, "read"); });
    QCOMPARE(readFrom(pipe).data, QByteArray("read"));
    QCOMPARE(writer.join(), succeeded);
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
    const Handle pipe(createPipe());
    const Handle client(hasClient ? openPipe() : INVALID_HANDLE_VALUE);
    WaitingThread thread([&] { return hasClient ? readFrom(pipe).error : connectPipe(pipe); });
    while (!thread.hasReturned()) {
        CancelIoEx(pipe, nullptr);
        Sleep(1);
    }
    QCOMPARE(thread.join(), aborted);
}

void PipeContractTest::otherPipesAreNotCancelled()
{
    const Handle pipe(createPipe());
    const Handle other(createPipe());
    WaitingThread thread([&] { return connectPipe(pipe); });
    Sleep(300);
    CancelIoEx(other, nullptr);
    Sleep(100);
    const bool returned = thread.hasReturned();
    thread.cancel();
    QCOMPARE(thread.join(), aborted);
    QVERIFY(!returned);
}

QUORVEL_TEST_MAIN(PipeContractTest)
#include "pipe_contract_test.moc"
