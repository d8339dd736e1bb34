#include "pipe_peer.h"
#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/patience.h"
#include "support/rounds.h"
#include "support/test_main.h"

#include <QProcess>
#include <QTest>
#include <QThread>

#include <atomic>
#include <deque>
#include <optional>
#include <thread>

namespace {

const QByteArray openMessage = QByteArray(16, '\0') + QByteArray("\1\0\0\0", 4);

/// The clients, as a process of their own like the real ones.
class Flood
{
public:
    Flood()
    {
        process.start(QCoreApplication::applicationDirPath() + "/quorvel-pipe-flood",
                      {QString::number(Rounds::seed())});
        if (!process.waitForStarted())
            qFatal("cannot start the clients");
    }
    ~Flood()
    {
        process.kill();
        process.waitForFinished();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    /// Takes up what has come since.
    void look()
    {
        unfinished += process.readAllStandardOutput();
        const qsizetype end = unfinished.lastIndexOf('\n');
        if (end < 0)
            return;
        const QList<QByteArray> counts =
            unfinished.left(end).split('\n').constLast().trimmed().split(' ');
        attempts = counts.value(0).toInt();
        connections = counts.value(1).toInt();
        unfinished.remove(0, end + 1);
    }

    int attempts = 0;
    int connections = 0;

private:
    QProcess process;
    QByteArray unfinished;
};

} // namespace

/// More clients at the settings pipe than can be served, and such that misbehave: honest clients
/// are heard again afterwards, and the end is not held up.
class SettingsFloodTest : public QObject
{
    Q_OBJECT

public:
    SettingsFloodTest() { Rounds::allowTimeFor(connections); }

private slots:
    void init();
    void cleanup();

    void manyClients();
    void silentClients();
    void endWithHalfOpenClients();

private:
    /// Connects and asks for the dialog, which must come up.
    bool isServed();

    const int connections = Rounds::number(12);
    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

void SettingsFloodTest::init()
{
    log.emplace();
    dialog = std::make_unique<Settings>();
    // Fonts and styles are loaded for the first window of a program.
    dialog->showFromPipe();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get(), patience));
}

void SettingsFloodTest::cleanup()
{
    dialog.reset();
    log.reset();
}

bool SettingsFloodTest::isServed()
{
    dialog->hide();
    PipePeer::Client client(PipePeer::settingsPipe);
    std::thread visitor([&] {
        if (client.connect() == ERROR_SUCCESS && client.write(openMessage) == ERROR_SUCCESS)
            client.waitForParting();
    });
    const bool shown = QTest::qWaitFor([this] { return dialog->isVisible(); }, patience);
    visitor.join();
    return shown;
}

void SettingsFloodTest::manyClients()
{
    {
        Flood clients;
        // Ten are served in a second.
        QVERIFY(QTest::qWaitFor(
            [&] {
                clients.look();
                return clients.connections >= connections && clients.attempts >= 1000;
            },
            60000 + connections * 1000));
    }
    QVERIFY(isServed());
}

void SettingsFloodTest::silentClients()
{
    std::atomic<int> connected = 0;
    std::atomic<bool> over = false;
    std::thread silent([&] {
        std::deque<PipePeer::Client> clients;
        if (clients.emplace_back(PipePeer::settingsPipe).connect() == ERROR_SUCCESS)
            ++connected;
        for (int i = 0; i < 50; ++i) {
            if (clients.emplace_back(PipePeer::settingsPipe).tryConnect() == ERROR_SUCCESS)
                ++connected;
            QThread::msleep(1);
        }
        clients.clear();
        over = true;
    });
    const bool ended = QTest::qWaitFor([&] { return over.load(); }, patience);
    silent.join();
    QVERIFY(ended);
    QVERIFY(connected >= 1);
    QVERIFY(isServed());
}

void SettingsFloodTest::endWithHalfOpenClients()
{
    for (int round = 0; round < 6; ++round) {
        std::optional<Flood> flood;
        PipePeer::Client silent(PipePeer::settingsPipe);
        if (round % 2 == 0)
            QCOMPARE(silent.connect(), DWORD{ERROR_SUCCESS});
        else
            flood.emplace();
        QTest::qWait(round * 10);
        dialog.reset();
        flood.reset();
        silent.close();
        QCOMPARE(log->take().constLast(), QString("Pipe closed."));
        dialog = std::make_unique<Settings>();
    }
    QVERIFY(isServed());
}

QUORVEL_TEST_MAIN(SettingsFloodTest)

#include "settings_flood_test.moc"
