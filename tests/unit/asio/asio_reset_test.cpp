#include "asio/asio_reset.h"
#include "line_watch.h"
#include "pipe_peer.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QTest>

#include <optional>

namespace {

const QString opened = QStringLiteral("Pipe opened successfully.");
const QString lastLine = QStringLiteral("设置通知ASIO逻辑");

} // namespace

class AsioResetTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup() { log.reset(); }

    void noServer();
    void busyServer();
    void oneByteArrives();
    void serverLeavesEarly_data();
    void serverLeavesEarly();
    void requestsInARow();
    void driverThatNeverReads();

private:
    std::optional<DebugLog> log;
};

void AsioResetTest::noServer()
{
    sendAsioReset();
    QCOMPARE(log->take(), QStringList{"Error: Could not open pipe. Error code: 2"});
}

void AsioResetTest::busyServer()
{
    PipePeer::Server server(PipePeer::resetPipe);
    PipePeer::Client other(PipePeer::resetPipe);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_SUCCESS});
    sendAsioReset();
    QCOMPARE(log->take(), QStringList{"Error: Could not open pipe. Error code: 231"});
}

void AsioResetTest::oneByteArrives()
{
    PipePeer::Server server(PipePeer::resetPipe);
    sendAsioReset();
    QCOMPARE(log->take(), (QStringList{opened, "ASIO reset signal sent successfully.", lastLine}));
    const PipePeer::Reading reading = server.read();
    QCOMPARE(reading.error, DWORD{ERROR_SUCCESS});
    QCOMPARE(reading.data.toHex(), QByteArray("31"));
    // One message only, and the pipe is closed.
    QCOMPARE(server.read().error, DWORD{ERROR_BROKEN_PIPE});
}

void AsioResetTest::serverLeavesEarly_data()
{
    QTest::addColumn<bool>("closes");
    QTest::addColumn<QString>("error");
    QTest::newRow("closes") << true << "232";
    QTest::newRow("disconnects") << false << "233";
}

void AsioResetTest::serverLeavesEarly()
{
    QFETCH(bool, closes);
    QFETCH(QString, error);
    PipePeer::Server server(PipePeer::resetPipe);
    {
        const LineWatch watch(opened, [&] {
            QCOMPARE(server.accept(), DWORD{ERROR_SUCCESS});
            if (closes)
                server.close();
            else
                server.disconnect();
        });
        sendAsioReset();
    }
    QCOMPARE(log->take(),
             (QStringList{opened, "Error: Failed to send ASIO reset signal. Error code: " + error,
                          lastLine}));
}

void AsioResetTest::requestsInARow()
{
    for (int round = 0; round < 3; ++round) {
        PipePeer::Server server(PipePeer::resetPipe);
        sendAsioReset();
        QCOMPARE(server.read().data.toHex(), QByteArray("31"));
        QCOMPARE(server.disconnect(), DWORD{ERROR_SUCCESS});
        QCOMPARE(log->take().constLast(), lastLine);
        sendAsioReset(); // The server does not listen yet.
        QCOMPARE(log->take(), QStringList{"Error: Could not open pipe. Error code: 231"});
    }
}

void AsioResetTest::driverThatNeverReads()
{
    const PipePeer::Server server(PipePeer::resetPipe, 0);
    QElapsedTimer clock;
    clock.start();
    sendAsioReset();
    // Not a moment too soon; the clocks may differ a little.
    QVERIFY2(clock.elapsed() >= 1950, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(log->take(),
             (QStringList{opened, "Error: Failed to send ASIO reset signal. Error code: 995",
                          lastLine}));
}

QUORVEL_TEST_MAIN(AsioResetTest)
#include "asio_reset_test.moc"
