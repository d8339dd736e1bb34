#include "asio/asio_reset.h"
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

/// The reset at a real pipe.
class AsioResetTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup() { log.reset(); }

    void requestsInARow();
    void driverThatNeverReads();

private:
    std::optional<DebugLog> log;
};

void AsioResetTest::requestsInARow()
{
    sendAsioReset();
    QCOMPARE(log->take(), QStringList{"Error: Could not open pipe. Error code: 2"});
    PipePeer::Server server(PipePeer::resetPipe);
    sendAsioReset();
    QCOMPARE(log->take(), (QStringList{opened, "ASIO reset signal sent successfully.", lastLine}));
    const PipePeer::Reading reading = server.read();
    QCOMPARE(reading.error, DWORD{ERROR_SUCCESS});
    QCOMPARE(reading.data.toHex(), QByteArray("31"));
    // One message only, and the pipe is closed.
    QCOMPARE(server.read().error, DWORD{ERROR_BROKEN_PIPE});
    QCOMPARE(server.disconnect(), DWORD{ERROR_SUCCESS});
    sendAsioReset(); // The server does not listen yet.
    QCOMPARE(log->take(), QStringList{"Error: Could not open pipe. Error code: 231"});
}

void AsioResetTest::driverThatNeverReads()
{
    const PipePeer::Server server(PipePeer::resetPipe, 0);
    QElapsedTimer clock;
    clock.start();
    sendAsioReset();
    const qint64 elapsed = clock.elapsed();
    QCOMPARE(log->take(),
             (QStringList{opened, "Error: Failed to send ASIO reset signal. Error code: 995",
                          lastLine}));
    // Two seconds, by clocks that may differ a little; a busy machine takes longer.
    QVERIFY2(elapsed >= 1950 && elapsed < 45000, qPrintable(QString::number(elapsed)));
}

QUORVEL_TEST_MAIN(AsioResetTest)
#include "asio_reset_test.moc"
