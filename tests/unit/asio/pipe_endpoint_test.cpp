#include "asio/pipe_endpoint.h"
#include "pipe_peer.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QTest>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace {

constexpr char untouched = '\xEE';
const QString created = QStringLiteral("Pipe created successfully.");
const QString closed = QStringLiteral("Pipe closed.");

} // namespace

class PipeEndpointTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void constructionCreatesNothing();
    void createAndClose();
    void closingTwiceIsLoggedOnce();
    void destructionCloses();
    void createAgainReplaces();
    void creationFails_data();
    void creationFails();
    void messages_data();
    void messages();
    void tooLongMessages_data();
    void tooLongMessages();
    void clientBeforeTheCall();
    void clientAfterTheCall();
    void silentClientCloses();
    void clientThatLeftHoldsThePipeUntilDropped();
    void droppingIsHarmless();
    void clientsInARow();
    void readingPartsWithTheClient();
    void closingPartsWithTheClient();
    void writing_data();
    void writing();
    void writingReachesTheReader();
    void writingToAClientThatLeaves();

private:
    bool read() { return endpoint->readMessage(buffer.data()); }
    QByteArray bufferStart(qsizetype size) const { return {buffer.data(), size}; }
    bool bufferIsUntouchedFrom(std::size_t start) const;

    QString path;
    int number = 0;
    std::array<char, PipeEndpoint::messageSize> buffer{};
    std::optional<DebugLog> log;
    std::unique_ptr<PipeEndpoint> endpoint;
    std::unique_ptr<PipePeer::Client> client;
};

/// Every test has a pipe of its own.
void PipeEndpointTest::init()
{
    path = QString(R"(\\.\pipe\QuorvelEndpoint-%1-%2)")
               .arg(QCoreApplication::applicationPid())
               .arg(++number);
    buffer.fill(untouched);
    log.emplace();
    endpoint = std::make_unique<PipeEndpoint>(path);
    client = std::make_unique<PipePeer::Client>(path);
}

void PipeEndpointTest::cleanup()
{
    client.reset();
    endpoint.reset();
    log.reset();
}

bool PipeEndpointTest::bufferIsUntouchedFrom(std::size_t start) const
{
    return std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(start), buffer.end(),
                       [](char byte) { return byte == untouched; });
}

void PipeEndpointTest::constructionCreatesNothing()
{
    QCOMPARE(client->tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
    endpoint->closePipe();
    endpoint.reset();
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::createAndClose()
{
    QVERIFY(endpoint->createPipe());
    QCOMPARE(log->take(), QStringList{created});
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    client->close();
    endpoint->closePipe();
    QCOMPARE(log->take(), QStringList{closed});
    QCOMPARE(client->tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
}

void PipeEndpointTest::closingTwiceIsLoggedOnce()
{
    QVERIFY(endpoint->createPipe());
    log->clear();
    endpoint->closePipe();
    endpoint->closePipe();
    endpoint.reset();
    QCOMPARE(log->take(), QStringList{closed});
}

void PipeEndpointTest::destructionCloses()
{
    QVERIFY(endpoint->createPipe());
    log->clear();
    endpoint.reset();
    QCOMPARE(log->take(), QStringList{closed});
    QCOMPARE(client->tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
}

void PipeEndpointTest::createAgainReplaces()
{
    QVERIFY(endpoint->createPipe());
    QVERIFY(endpoint->createPipe());
    QCOMPARE(log->take(), (QStringList{created, closed, created}));
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    PipePeer::Client other(path);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_PIPE_BUSY}); // No instance was left behind.
    endpoint->closePipe();
    QVERIFY(endpoint->createPipe()); // Works after closing as well.
}

void PipeEndpointTest::creationFails_data()
{
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QString>("error");
    QTest::newRow("not a pipe's name") << false << "123";
    QTest::newRow("taken by a server of one") << true << "231";
}

void PipeEndpointTest::creationFails()
{
    QFETCH(bool, taken);
    QFETCH(QString, error);
    std::optional<PipePeer::Server> owner;
    if (taken)
        owner.emplace(path);
    else
        endpoint = std::make_unique<PipeEndpoint>("no pipe");
    QVERIFY(!endpoint->createPipe());
    QCOMPARE(log->take(), QStringList{"Error: Could not create pipe. Error code: " + error});

    const QStringList invalid{"Error connecting to pipe. Error code: 6"};
    QVERIFY(!read());
    QCOMPARE(log->take(), invalid);
    QVERIFY(!endpoint->writeMessage("x"));
    QCOMPARE(log->take(), invalid);
    QVERIFY(bufferIsUntouchedFrom(0));
    endpoint->closePipe();
    endpoint.reset();
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::messages_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 15, 16, 19, 20, 21, 1023, 1024})
        QTest::addRow("%d bytes", size) << size;
}

void PipeEndpointTest::messages()
{
    QFETCH(int, size);
    QByteArray message(size, '\0');
    for (int i = 0; i < size; ++i)
        message[i] = static_cast<char>(i * 7 + 1);
    QVERIFY(endpoint->createPipe());
    log->clear();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(client->write(message), DWORD{ERROR_SUCCESS});
    QVERIFY(read());
    QCOMPARE(bufferStart(size), message);
    QVERIFY(bufferIsUntouchedFrom(static_cast<std::size_t>(size)));
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::tooLongMessages_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("one byte too many") << 1025;
    QTest::newRow("far too long") << 60000;
}

void PipeEndpointTest::tooLongMessages()
{
    QFETCH(int, size);
    QVERIFY(endpoint->createPipe());
    log->clear();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(client->write(QByteArray(size, 'x')), DWORD{ERROR_SUCCESS});
    QVERIFY(!read());
    QVERIFY(bufferIsUntouchedFrom(0));
    QCOMPARE(log->take(), QStringList{"Error reading from pipe. Error code: 234"});

    // Its rest does not reach the next call.
    std::thread next([this] {
        PipePeer::Client other(path);
        other.connect();
        other.write("next");
        other.waitForParting();
    });
    const bool succeeded = read();
    next.join();
    QVERIFY(succeeded);
    QCOMPARE(bufferStart(5), QByteArray("next") + untouched);
}

void PipeEndpointTest::clientBeforeTheCall()
{
    QVERIFY(endpoint->createPipe());
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    log->clear();
    std::thread late([this] {
        Sleep(50);
        client->write("late");
    });
    const bool succeeded = read();
    late.join();
    QVERIFY(succeeded);
    QCOMPARE(bufferStart(4), QByteArray("late"));
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::clientAfterTheCall()
{
    QVERIFY(endpoint->createPipe());
    log->clear();
    std::thread late([this] {
        Sleep(50);
        client->connect();
        client->write("late");
    });
    const bool succeeded = read();
    late.join();
    QVERIFY(succeeded);
    QCOMPARE(bufferStart(4), QByteArray("late"));
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::silentClientCloses()
{
    QVERIFY(endpoint->createPipe());
    log->clear();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    std::atomic<bool> returned = false;
    bool early = false;
    std::thread leaver([&] {
        Sleep(300);
        early = returned;
        client->close();
    });
    const bool succeeded = read();
    returned = true;
    leaver.join();
    QVERIFY(!succeeded);
    QVERIFY(!early);
    QVERIFY(bufferIsUntouchedFrom(0));
    QCOMPARE(log->take(), QStringList{"Error reading from pipe. Error code: 109"});
}

void PipeEndpointTest::clientThatLeftHoldsThePipeUntilDropped()
{
    QVERIFY(endpoint->createPipe());
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    client->close();
    log->clear();
    const QString noData("Error connecting to pipe. Error code: 232");
    QVERIFY(!read());
    QVERIFY(!read());
    QCOMPARE(log->take(), (QStringList{noData, noData}));
    endpoint->dropClient();
    std::thread next([this] {
        client->connect();
        client->write("next");
        client->waitForParting();
    });
    const bool succeeded = read();
    next.join();
    QVERIFY(succeeded);
    QCOMPARE(log->take(), QStringList());
}

void PipeEndpointTest::droppingIsHarmless()
{
    endpoint->dropClient();
    QVERIFY(endpoint->createPipe());
    endpoint->dropClient();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(client->write("x"), DWORD{ERROR_SUCCESS});
    QVERIFY(read());
    endpoint->dropClient();
    QCOMPARE(log->take(), QStringList{created});
}

void PipeEndpointTest::clientsInARow()
{
    constexpr int rounds = 50;
    QVERIFY(endpoint->createPipe());
    std::thread clients([this] {
        for (int i = 0; i < rounds; ++i) {
            client->connect();
            client->write(QByteArray::number(i));
            client->waitForParting();
        }
    });
    QStringList problems;
    for (int i = 0; i < rounds; ++i) {
        const QByteArray expected = QByteArray::number(i);
        if (!read() || bufferStart(expected.size()) != expected)
            problems.append(expected);
    }
    clients.join();
    QCOMPARE(problems, QStringList());
}

void PipeEndpointTest::readingPartsWithTheClient()
{
    QVERIFY(endpoint->createPipe());
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(client->write("x"), DWORD{ERROR_SUCCESS});
    QVERIFY(read());
    QCOMPARE(client->waitForParting(), DWORD{ERROR_PIPE_NOT_CONNECTED});
    PipePeer::Client other(path);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_PIPE_BUSY}); // Until the next call waits.
}

void PipeEndpointTest::closingPartsWithTheClient()
{
    QVERIFY(endpoint->createPipe());
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    endpoint->closePipe();
    QCOMPARE(client->waitForParting(), DWORD{ERROR_PIPE_NOT_CONNECTED});
}

void PipeEndpointTest::writing_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("line");
    QTest::newRow("text") << QByteArray("reset") << R"(Data written to pipe: "reset")";
    QTest::newRow("bytes") << QByteArray("1\0\xFF", 3) << R"(Data written to pipe: "1\x00\xFF")";
    QTest::newRow("empty") << QByteArray() << R"(Data written to pipe: "")";
}

void PipeEndpointTest::writing()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, line);
    QVERIFY(endpoint->createPipe());
    log->clear();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    QVERIFY(endpoint->writeMessage(message));
    QCOMPARE(log->take(), QStringList{line});
    QCOMPARE(client->waitForParting(), DWORD{ERROR_PIPE_NOT_CONNECTED});
}

void PipeEndpointTest::writingReachesTheReader()
{
    // Larger than the pipe's buffer, so that it is only written when somebody reads.
    const QByteArray message(100000, 'z');
    QVERIFY(endpoint->createPipe());
    PipePeer::Reading reading;
    std::thread reader([&] {
        client->connect();
        reading = client->read();
    });
    const bool succeeded = endpoint->writeMessage(message);
    reader.join();
    QVERIFY(succeeded);
    QCOMPARE(reading.error, DWORD{ERROR_SUCCESS});
    QVERIFY(reading.data == message);
}

void PipeEndpointTest::writingToAClientThatLeaves()
{
    QVERIFY(endpoint->createPipe());
    log->clear();
    QCOMPARE(client->tryConnect(), DWORD{ERROR_SUCCESS});
    std::thread leaver([this] {
        Sleep(300);
        client->close();
    });
    const bool succeeded = endpoint->writeMessage(QByteArray(100000, 'z'));
    leaver.join();
    QVERIFY(!succeeded);
    QCOMPARE(log->take(), QStringList{"Error writing to pipe. Error code: 109"});
    std::thread next([this] {
        client->connect();
        client->write("next");
        client->waitForParting();
    });
    const bool served = read();
    next.join();
    QVERIFY(served);
}

QUORVEL_TEST_MAIN(PipeEndpointTest)
#include "pipe_endpoint_test.moc"
