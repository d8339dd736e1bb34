#include "asio/thread_settings_pip.h"
#include "pipe_peer.h"
#include "support/debug_log.h"
#include "support/patience.h"
#include "support/test_main.h"

#include <QMetaMethod>
#include <QTest>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace {

constexpr int rounds = 5;

const QString running = QStringLiteral("ThreadSettingsPip is running waiting Asio Info...");
const QString nothing = QStringLiteral("No data received from pipe.");
const QString openLine = QStringLiteral("Open Window Signal from ASIO.");
const QString finished = QStringLiteral("thread finished");
const QString closed = QStringLiteral("Pipe closed.");

const QByteArray openMessage("\1\0\0\0\2\0\0\0\xFF\xFF\xFF\xFF\4\3\2\1\0\0\0\x80", 20);
const QStringList openLines{"Received data from pipe: 1 2 4294967295 16909060 2147483648", openLine,
                            running};

/// Where the thread is when it has to end.
enum class Place { notStarted, justStarted, connecting, reading, pausing };

} // namespace
Q_DECLARE_METATYPE(Place)

/// The thread at a real pipe, and its end wherever it may be, before its pipe is closed.
class ThreadSettingsPipTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void metaObject();
    void construction();
    void messages();
    void clientGoneBeforeTheFirstPass();
    void silentClient();
    void pipeCouldNotBeCreated();
    void end_data();
    void end();
    void endAmongClients();

private:
    void create();
    void start();
    QStringList stop();
    static bool serve(const QByteArray& message);
    /// Waits until so many `running` lines have come since the last call; all lines until then.
    QStringList passes(qsizetype count = 1);

    std::optional<DebugLog> log;
    std::unique_ptr<ThreadSettingsPip> thread;
    QList<int> values;
};

void ThreadSettingsPipTest::init()
{
    log.emplace();
    create();
}

void ThreadSettingsPipTest::cleanup()
{
    thread.reset();
    log.reset();
}

void ThreadSettingsPipTest::create()
{
    thread.reset();
    QCoreApplication::sendPostedEvents();
    values.clear();
    log->clear();
    thread = std::make_unique<ThreadSettingsPip>(nullptr);
    connect(thread.get(), &ThreadSettingsPip::progressUpdated, this,
            [this](int value) { values.append(value); });
    // Written by the thread itself as its last act.
    connect(
        thread.get(), &QThread::finished, thread.get(), [] { qDebug("thread finished"); },
        Qt::DirectConnection);
}

/// The lines up to there are forgotten.
void ThreadSettingsPipTest::start()
{
    log->clear();
    thread->start(QThread::InheritPriority);
}

/// Ends a thread that was started; its lines from then on but the last two.
QStringList ThreadSettingsPipTest::stop()
{
    log->clear();
    thread.reset();
    QStringList lines = log->take();
    const QStringList last = lines.mid(lines.size() - 2);
    lines = lines.mid(0, lines.size() - 2);
    return last == QStringList{finished, closed} ? lines : QStringList{"wrong end"} + lines + last;
}

/// Connects, sends and waits until the thread parts.
bool ThreadSettingsPipTest::serve(const QByteArray& message)
{
    PipePeer::Client client(PipePeer::settingsPipe);
    return client.connect() == ERROR_SUCCESS && client.write(message) == ERROR_SUCCESS &&
           client.waitForParting() == ERROR_PIPE_NOT_CONNECTED;
}

QStringList ThreadSettingsPipTest::passes(qsizetype count)
{
    const bool came =
        QTest::qWaitFor([&] { return log->lines().count(running) >= count; }, patience);
    QStringList lines = log->take();
    if (!came)
        lines.append("gave up waiting");
    return lines;
}

void ThreadSettingsPipTest::metaObject()
{
    const QMetaObject& meta = ThreadSettingsPip::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.methodSignature(), QByteArray("progressUpdated(int)"));
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void ThreadSettingsPipTest::construction()
{
    QCOMPARE(log->take(),
             (QStringList{"Pipe created successfully.", "ThreadSettingsPip initialized."}));
    QVERIFY(!thread->isRunning());
}

/// One client after the other, without what an earlier one has left behind; what they ask for
/// comes queued.
void ThreadSettingsPipTest::messages()
{
    start();
    QCOMPARE(passes(), QStringList{running});
    QVERIFY(serve(QByteArray(1024, '\xFF')));
    const QString highest = "4294967295";
    QCOMPARE(passes(),
             (QStringList{"Received data from pipe: " + QStringList(5, highest).join(u' '),
                          openLine, running}));
    QVERIFY(serve(QByteArray(19, '\0')));
    QCOMPARE(passes(), (QStringList{"Received data from pipe: 0 0 0 0 0", running}));
    QVERIFY(serve(QByteArray(1025, '\1')));
    QCOMPARE(passes(), (QStringList{"Error reading from pipe. Error code: 234", nothing, running}));
    QVERIFY(serve(openMessage));
    QCOMPARE(passes(), openLines);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(values, (QList<int>{1, 1}));
}

void ThreadSettingsPipTest::clientGoneBeforeTheFirstPass()
{
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.tryConnect(), DWORD{ERROR_SUCCESS});
    client.close();
    start();
    QCOMPARE(passes(2),
             (QStringList{running, "Error connecting to pipe. Error code: 232", nothing, running}));
    QVERIFY(serve(openMessage));
    QCOMPARE(passes(), openLines);
}

/// It has the pipe for itself until it speaks.
void ThreadSettingsPipTest::silentClient()
{
    start();
    QCOMPARE(passes(), QStringList{running});
    PipePeer::Client silent(PipePeer::settingsPipe);
    QCOMPARE(silent.connect(), DWORD{ERROR_SUCCESS});
    PipePeer::Client other(PipePeer::settingsPipe);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_PIPE_BUSY});
    QCOMPARE(log->take(), QStringList());
    QCOMPARE(silent.write(openMessage), DWORD{ERROR_SUCCESS});
    QCOMPARE(passes(), openLines);
}

void ThreadSettingsPipTest::pipeCouldNotBeCreated()
{
    thread.reset();
    const PipePeer::Server owner(PipePeer::settingsPipe);
    create();
    QCOMPARE(log->take(), (QStringList{"Error: Could not create pipe. Error code: 231",
                                       "Failed to create named pipe in ThreadSettingsPip."}));
    start();
    QCOMPARE(passes(2).mid(0, 4),
             (QStringList{running, "Error connecting to pipe. Error code: 6", nothing, running}));
    thread.reset();
    QCOMPARE(log->take().constLast(), finished); // There is no pipe to close.
}

void ThreadSettingsPipTest::end_data()
{
    QTest::addColumn<Place>("place");
    QTest::newRow("not started") << Place::notStarted;
    QTest::newRow("just started") << Place::justStarted;
    QTest::newRow("waiting for a client") << Place::connecting;
    QTest::newRow("waiting for a message") << Place::reading;
    QTest::newRow("between two clients") << Place::pausing;
}

/// Sometimes it waits already, sometimes it is about to.
void ThreadSettingsPipTest::end()
{
    QFETCH(const Place, place);
    if (place == Place::notStarted) {
        log->clear();
        thread.reset();
        QCOMPARE(log->take(), QStringList{closed});
        return;
    }
    for (int round = 0; round < rounds; ++round) {
        create();
        PipePeer::Client client(PipePeer::settingsPipe);
        start();
        if (place != Place::justStarted) {
            QCOMPARE(passes(), QStringList{running});
            QTest::qSleep(round % 5);
        }
        if (place == Place::reading)
            QCOMPARE(client.connect(), DWORD{ERROR_SUCCESS});
        if (place == Place::pausing)
            QVERIFY(serve(openMessage));
        const QStringList lines = stop();
        QVERIFY2(!lines.contains("wrong end"), qPrintable(lines.join('\n')));
        if (place == Place::connecting || place == Place::reading) {
            QCOMPARE(lines.size(), 1);
            QVERIFY2(lines[0].endsWith(" Error code: 995"), qPrintable(lines[0]));
        }
        PipePeer::Client late(PipePeer::settingsPipe);
        QCOMPARE(late.tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
    }
}

void ThreadSettingsPipTest::endAmongClients()
{
    std::atomic<bool> enough = false;
    std::vector<std::thread> clients;
    for (int number = 0; number < 3; ++number) {
        clients.emplace_back([&enough, number] {
            PipePeer::Client client(PipePeer::settingsPipe);
            for (int i = 0; !enough; ++i) {
                if (client.tryConnect() != ERROR_SUCCESS) {
                    Sleep(1);
                    continue;
                }
                if ((i + number) % 3 != 0)
                    client.write(openMessage);
                if (i % 2 != 0)
                    Sleep(1);
                client.close();
            }
        });
    }
    QStringList wrong;
    for (int round = 0; round < rounds; ++round) {
        create();
        start();
        passes();
        QTest::qSleep(round % 7);
        const QStringList lines = stop();
        if (lines.contains("wrong end"))
            wrong += lines;
    }
    enough = true;
    for (std::thread& client : clients)
        client.join();
    QCOMPARE(wrong, QStringList());
}

QUORVEL_TEST_MAIN(ThreadSettingsPipTest)
#include "thread_settings_pip_test.moc"
