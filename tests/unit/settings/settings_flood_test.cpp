#include "pipe_peer.h"
#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/event_loop_probe.h"
#include "support/rounds.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <atomic>
#include <deque>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int floodClients = 4;
constexpr qint64 longestEnd = 1000; // ms
const QByteArray openMessage = QByteArray(16, '\0') + QByteArray("\1\0\0\0", 4);

/// Milliseconds. Where a busy machine's part in it cannot be told, only a blocked loop is.
double longestGap()
{
    return EventLoopProbe::leavesOutQueueing() ? 50 : 1000;
}

/// Clients that come as fast as they can, each in another way, until told to stop.
class Flood
{
public:
    explicit Flood(unsigned seed)
    {
        for (unsigned i = 0; i < floodClients; ++i)
            threads.emplace_back([this, number = seed + i] { run(number); });
    }
    ~Flood()
    {
        enough = true;
        for (std::thread& thread : threads)
            thread.join();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    std::atomic<int> attempts = 0;
    std::atomic<int> connections = 0;

private:
    void run(unsigned way)
    {
        while (!enough) {
            PipePeer::Client client(PipePeer::settingsPipe);
            ++attempts;
            if (client.tryConnect() != ERROR_SUCCESS)
                continue;
            ++connections;
            visit(client, way++);
        }
    }

    static void visit(PipePeer::Client& client, unsigned way)
    {
        switch (way % 6) {
        case 0: // Waits until it has been heard.
            client.write(openMessage);
            client.waitForParting();
            break;
        case 1: // Writes and vanishes.
            client.write(openMessage);
            break;
        case 2: // Never writes.
            QThread::msleep(20);
            break;
        case 3: // Vanishes at once.
            break;
        case 4: // More than is read.
            client.write(QByteArray(1025, '\1'));
            break;
        default: // As many messages as are taken.
            for (int i = 0; i < 20 && client.write(QByteArray(i, '\1')) == ERROR_SUCCESS; ++i) {
            }
            break;
        }
    }

    std::atomic<bool> enough = false;
    std::vector<std::thread> threads;
};

} // namespace

/// More clients at the settings pipe than can be served, and such that misbehave: the dialog's
/// event loop goes on, honest clients are heard again, and the end is not held up.
class SettingsFloodTest : public QObject
{
    Q_OBJECT

public:
    SettingsFloodTest() { Rounds::allowTimeFor(connections); }

private slots:
    void init();
    void cleanup();

    void probeSeesABlockedLoop();
    void manyClients();
    void silentClients();
    void endWithHalfOpenClients();

private:
    /// Connects and asks for the dialog, which must come up.
    bool isServed();

    const int connections = Rounds::number(30);
    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
    QString figures;
};

void SettingsFloodTest::init()
{
    log.emplace();
    dialog = std::make_unique<Settings>();
    // Fonts and styles are loaded for the first window of a program.
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QTest::qWait(100);
}

void SettingsFloodTest::cleanup()
{
    dialog.reset();
    log.reset();
    // The stream belongs to the test only now.
    if (!figures.isEmpty())
        qInfo("%s", qPrintable(std::exchange(figures, {})));
}

bool SettingsFloodTest::isServed()
{
    dialog->hide();
    PipePeer::Client client(PipePeer::settingsPipe);
    std::thread visitor([&] {
        if (client.connect() == ERROR_SUCCESS && client.write(openMessage) == ERROR_SUCCESS)
            client.waitForParting();
    });
    const bool shown = QTest::qWaitFor([this] { return dialog->isVisible(); }, 10000);
    visitor.join();
    return shown;
}

void SettingsFloodTest::probeSeesABlockedLoop()
{
    {
        EventLoopProbe probe;
        QTimer::singleShot(20, this, [] { QThread::msleep(120); });
        QTest::qWait(200);
        QVERIFY2(probe.longestGap() >= 110, qPrintable(QString::number(probe.longestGap())));
    }
    EventLoopProbe probe;
    QTimer::singleShot(20, this, [] {
        QElapsedTimer clock;
        clock.start();
        while (!clock.hasExpired(400)) {
        }
    });
    QTest::qWait(500);
    // Other programs may have had most of that time.
    QVERIFY2(probe.longestGap() >= 40, qPrintable(QString::number(probe.longestGap())));
}

void SettingsFloodTest::manyClients()
{
    EventLoopProbe probe;
    QElapsedTimer clock;
    clock.start();
    int attempts = 0;
    int served = 0;
    {
        const Flood flood(Rounds::seed());
        // Ten are served in a second.
        QVERIFY(QTest::qWaitFor(
            [&] { return flood.connections >= connections && flood.attempts >= 1000; },
            60000 + connections * 1000));
        attempts = flood.attempts;
        served = flood.connections;
        // So that clients in the middle of a visit can leave.
        QTest::qWait(200);
    }
    QVERIFY(isServed());
    figures = QStringLiteral("%1 attempts, %2 connections in %3 ms, longest gap %4 ms")
                  .arg(attempts)
                  .arg(served)
                  .arg(clock.elapsed())
                  .arg(probe.longestGap());
    QVERIFY2(probe.longestGap() < longestGap(), qPrintable(QString::number(probe.longestGap())));
}

void SettingsFloodTest::silentClients()
{
    EventLoopProbe probe;
    {
        std::deque<PipePeer::Client> clients;
        int connected = 0;
        for (int i = 0; i < 50; ++i) {
            connected +=
                clients.emplace_back(PipePeer::settingsPipe).tryConnect() == ERROR_SUCCESS ? 1 : 0;
            QTest::qWait(20);
        }
        QVERIFY(connected >= 1);
    }
    QVERIFY(isServed());
    figures = QStringLiteral("longest gap %1 ms").arg(probe.longestGap());
    QVERIFY2(probe.longestGap() < longestGap(), qPrintable(QString::number(probe.longestGap())));
}

void SettingsFloodTest::endWithHalfOpenClients()
{
    qint64 longest = 0;
    for (int round = 0; round < 10; ++round) {
        std::optional<Flood> flood;
        PipePeer::Client silent(PipePeer::settingsPipe);
        if (round % 2 == 0)
            QCOMPARE(silent.connect(), DWORD{ERROR_SUCCESS});
        else
            flood.emplace(Rounds::seed());
        QTest::qWait(round * 10);
        QElapsedTimer clock;
        clock.start();
        dialog.reset();
        longest = qMax(longest, clock.elapsed());
        flood.reset();
        silent.close();
        QVERIFY2(longest < longestEnd, qPrintable(QString::number(longest)));
        QCOMPARE(log->take().constLast(), QString("Pipe closed."));
        dialog = std::make_unique<Settings>();
    }
    figures = QStringLiteral("longest end %1 ms").arg(longest);
    QVERIFY(isServed());
}

QUORVEL_TEST_MAIN(SettingsFloodTest)
#include "settings_flood_test.moc"
