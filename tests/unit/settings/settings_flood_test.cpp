#include "pipe_peer.h"
#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/rounds.h"
#include "support/test_main.h"

#include <QProcess>
#include <QTest>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <optional>
#include <thread>
#include <vector>

namespace {

constexpr int floodClients = 4;
const QString playClientsOption = QStringLiteral("--play-clients");
const QByteArray openMessage = QByteArray(16, '\0') + QByteArray("\1\0\0\0", 4);

/// What a client does once it is connected; each next one something else.
void visit(PipePeer::Client& client, unsigned way)
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

/// The whole of the process that plays the clients: they come as fast as they can until it is
/// killed. Prints how many came and how many got in.
[[noreturn]] void playClients(unsigned seed)
{
    std::atomic<int> attempts = 0;
    std::atomic<int> connections = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < floodClients; ++i) {
        threads.emplace_back([&, way = seed + i]() mutable {
            for (;;) {
                PipePeer::Client client(PipePeer::settingsPipe);
                ++attempts;
                if (client.tryConnect() != ERROR_SUCCESS)
                    continue;
                ++connections;
                visit(client, way++);
            }
        });
    }
    while (std::printf("%d %d\n", attempts.load(), connections.load()) > 0 &&
           std::fflush(stdout) == 0)
        QThread::msleep(50);
    // Nobody listens any more, and the clients have no end of their own.
    std::_Exit(0);
}

/// Those clients, as a process of their own like the real ones.
class Flood
{
public:
    Flood()
    {
        process.start(QCoreApplication::applicationFilePath(),
                      {playClientsOption, QString::number(Rounds::seed())});
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

    const int connections = Rounds::number(30);
    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

void SettingsFloodTest::init()
{
    log.emplace();
    dialog = std::make_unique<Settings>();
    // Fonts and styles are loaded for the first window of a program.
    dialog->showFromPipe();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QTest::qWait(100);
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
    const bool shown = QTest::qWaitFor([this] { return dialog->isVisible(); }, 60000);
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
        for (int i = 0; i < 50; ++i) {
            if (clients.emplace_back(PipePeer::settingsPipe).tryConnect() == ERROR_SUCCESS)
                ++connected;
            QThread::msleep(20);
        }
        clients.clear();
        over = true;
    });
    const bool ended = QTest::qWaitFor([&] { return over.load(); }, 60000);
    silent.join();
    QVERIFY(ended);
    QVERIFY(connected >= 1);
    QVERIFY(isServed());
}

void SettingsFloodTest::endWithHalfOpenClients()
{
    for (int round = 0; round < 10; ++round) {
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

int main(int argc, char** argv)
{
    if (argc == 3 && playClientsOption == QLatin1String(argv[1]))
        playClients(QByteArray(argv[2]).toUInt());
    return runTest(argc, argv, []() -> std::unique_ptr<QObject> {
        return std::make_unique<SettingsFloodTest>();
    });
}

#include "settings_flood_test.moc"
