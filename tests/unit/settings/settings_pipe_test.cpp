#include "line_watch.h"
#include "pipe_peer.h"
#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace {

const QString running = QStringLiteral("ThreadSettingsPip is running waiting Asio Info...");
const QString openLine = QStringLiteral("Open Window Signal from ASIO.");
const QString shown = QStringLiteral("Received signal from pipe thread to show settings window.");
const QString opened = QStringLiteral("Pipe opened successfully.");

const QByteArray openMessage("\1\0\0\0\2\0\0\0\3\0\0\0\4\0\0\0\1\0\0\0", 20);

/// The lines without those of the clock and of a window system that knows no order of windows.
QStringList ownLines(QStringList lines)
{
    lines.removeAll(QStringLiteral("Failed to read meter data from driver."));
    lines.removeIf([](const QString& line) {
        return line.startsWith(QLatin1String("warning: This plugin does not support "));
    });
    return lines;
}

/// Counts how often a window is raised.
class RaiseCounter : public QObject
{
public:
    explicit RaiseCounter(QWidget& window) { window.installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::ZOrderChange)
            ++count;
        return false;
    }
};

} // namespace

class SettingsPipeTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup();

    void constructionStartsTheThread();
    void requestOpensTheDialog_data();
    void requestOpensTheDialog();
    void requestActivatesAVisibleDialog();
    void requestKeepsThePlace();
    void requestsInARow();
    void requestOpensThroughThePipe();
    void otherMessagesLeaveTheDialog_data();
    void otherMessagesLeaveTheDialog();
    void okSendsTheReset();
    void okWithoutServer_data();
    void okWithoutServer();
    void okWithAServerThatLeaves();
    void dialogHidesBeforeAnyPipeWork_data();
    void dialogHidesBeforeAnyPipeWork();
    void destruction();
    void destructionAmongClients();
    void threadThatCannotEndStaysBehind();

private:
    /// Connects, sends and waits until the dialog's thread parts.
    static bool serve(const QByteArray& message);
    void create();
    void clickOk();
    /// Waits for the line, and takes all lines there are.
    QStringList waitForLine(const QString& line);

    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

void SettingsPipeTest::cleanup()
{
    dialog.reset();
    log.reset();
}

bool SettingsPipeTest::serve(const QByteArray& message)
{
    PipePeer::Client client(PipePeer::settingsPipe);
    return client.connect() == ERROR_SUCCESS && client.write(message) == ERROR_SUCCESS &&
           client.waitForParting() == ERROR_PIPE_NOT_CONNECTED;
}

/// A dialog whose thread waits for clients; the lines up to there are forgotten.
void SettingsPipeTest::create()
{
    dialog = std::make_unique<Settings>();
    waitForLine(running);
}

void SettingsPipeTest::clickOk()
{
    QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
}

QStringList SettingsPipeTest::waitForLine(const QString& line)
{
    if (!QTest::qWaitFor([&] { return log->lines().contains(line); }, 10000))
        qWarning() << "gave up waiting";
    return ownLines(log->take());
}

void SettingsPipeTest::constructionStartsTheThread()
{
    dialog = std::make_unique<Settings>();
    QCOMPARE(waitForLine(running),
             (QStringList{"Settings dialog created.", "Pipe created successfully.",
                          "ThreadSettingsPip initialized.", running}));
    const auto threads = dialog->findChildren<QThread*>(Qt::FindDirectChildrenOnly);
    QCOMPARE(threads.size(), 1);
    QVERIFY(threads[0]->inherits("ThreadSettingsPip"));
    QVERIFY(threads[0]->isRunning());
    QVERIFY(!dialog->isVisible());
    QVERIFY(!dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

void SettingsPipeTest::requestOpensTheDialog_data()
{
    QTest::addColumn<bool>("visible");
    QTest::addColumn<Qt::WindowStates>("before");
    QTest::addColumn<Qt::WindowStates>("after");
    const Qt::WindowStates normal = Qt::WindowNoState;
    QTest::newRow("hidden") << false << normal << normal;
    QTest::newRow("visible") << true << normal << normal;
    QTest::newRow("minimised") << true << Qt::WindowStates(Qt::WindowMinimized) << normal;
    QTest::newRow("hidden while minimised")
        << false << Qt::WindowStates(Qt::WindowMinimized) << normal;
    QTest::newRow("maximised") << true << Qt::WindowStates(Qt::WindowMaximized)
                               << Qt::WindowStates(Qt::WindowMaximized);
}

void SettingsPipeTest::requestOpensTheDialog()
{
    QFETCH(bool, visible);
    QFETCH(Qt::WindowStates, before);
    QFETCH(Qt::WindowStates, after);
    create();
    dialog->setWindowState(before);
    dialog->setVisible(visible);
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    log->clear();
    const RaiseCounter raises(*dialog);

    dialog->showFromPipe();
    QCOMPARE(ownLines(log->take()), QStringList{shown});
    QCOMPARE(raises.count, 1);
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isMinimized());
    QCOMPARE(dialog->windowState() & ~Qt::WindowActive, after);
    QVERIFY(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(dialog->windowType(), Qt::Dialog);
}

void SettingsPipeTest::requestActivatesAVisibleDialog()
{
    create();
    dialog->showFromPipe();
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    const RaiseCounter raises(*dialog);
    dialog->showFromPipe();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QCOMPARE(raises.count, 1);
}

void SettingsPipeTest::requestKeepsThePlace()
{
    create();
    dialog->show();
    dialog->move(123, 87);
    dialog->showFromPipe();
    QCOMPARE(dialog->pos(), QPoint(123, 87));
    dialog->hide();
    dialog->showFromPipe();
    QCOMPARE(dialog->pos(), QPoint(123, 87));
}

void SettingsPipeTest::requestsInARow()
{
    create();
    for (int round = 0; round < 3; ++round) {
        dialog->showFromPipe();
        QVERIFY(dialog->isVisible());
        dialog->showFromPipe();
        QVERIFY(dialog->isVisible());
        dialog->hide();
    }
    QCOMPARE(ownLines(log->take()), QStringList(6, shown));
}

void SettingsPipeTest::requestOpensThroughThePipe()
{
    create();
    QVERIFY(serve(openMessage));
    QStringList lines = waitForLine(shown);
    QCOMPARE(lines.mid(0, 2), (QStringList{"Received data from pipe: 1 2 3 4 1", openLine}));
    lines.removeAll(running); // The thread goes on meanwhile.
    QCOMPARE(lines.size(), 3);
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QVERIFY(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

void SettingsPipeTest::otherMessagesLeaveTheDialog_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("open field zero") << openMessage.left(16) + QByteArray(4, '\0')
                                     << QStringList{"Received data from pipe: 1 2 3 4 0", running};
    QTest::newRow("16 bytes") << openMessage.left(16)
                              << QStringList{"Received data from pipe: 1 2 3 4 0", running};
    QTest::newRow("too long") << QByteArray(1025, '\1')
                              << QStringList{"Error reading from pipe. Error code: 234",
                                             "No data received from pipe.", running};
}

void SettingsPipeTest::otherMessagesLeaveTheDialog()
{
    QFETCH(QByteArray, message);
    QFETCH(QStringList, lines);
    create();
    QVERIFY(serve(message));
    QCOMPARE(waitForLine(running), lines);
    QVERIFY(!dialog->isVisible());
}

void SettingsPipeTest::okSendsTheReset()
{
    create();
    PipePeer::Server server(PipePeer::resetPipe);
    dialog->showFromPipe();
    log->clear();
    clickOk();
    QVERIFY(!dialog->isVisible());
    QCOMPARE(ownLines(log->take()),
             (QStringList{opened, "ASIO reset signal sent successfully.", "设置通知ASIO逻辑"}));
    QCOMPARE(server.read().data.toHex(), QByteArray("31"));
    QCOMPARE(server.read().error, DWORD{ERROR_BROKEN_PIPE});
}

void SettingsPipeTest::okWithoutServer_data()
{
    QTest::addColumn<bool>("busy");
    QTest::addColumn<QString>("error");
    QTest::newRow("absent") << false << "2";
    QTest::newRow("busy") << true << "231";
}

void SettingsPipeTest::okWithoutServer()
{
    QFETCH(bool, busy);
    QFETCH(QString, error);
    create();
    std::optional<PipePeer::Server> server;
    PipePeer::Client other(PipePeer::resetPipe);
    if (busy) {
        server.emplace(PipePeer::resetPipe);
        QCOMPARE(other.tryConnect(), DWORD{ERROR_SUCCESS});
    }
    dialog->show();
    log->clear();
    clickOk();
    QVERIFY(!dialog->isVisible());
    QCOMPARE(ownLines(log->take()),
             QStringList{"Error: Could not open pipe. Error code: " + error});
}

void SettingsPipeTest::okWithAServerThatLeaves()
{
    create();
    PipePeer::Server server(PipePeer::resetPipe);
    dialog->show();
    log->clear();
    {
        const LineWatch watch(opened, [&] {
            server.accept();
            server.close();
        });
        clickOk();
    }
    QVERIFY(!dialog->isVisible());
    QCOMPARE(ownLines(log->take()),
             (QStringList{opened, "Error: Failed to send ASIO reset signal. Error code: 232",
                          "设置通知ASIO逻辑"}));
}

void SettingsPipeTest::dialogHidesBeforeAnyPipeWork_data()
{
    QTest::addColumn<bool>("served");
    QTest::addColumn<QString>("firstLine");
    QTest::newRow("opened") << true << opened;
    QTest::newRow("absent") << false << "Error: Could not open pipe. Error code: 2";
}

void SettingsPipeTest::dialogHidesBeforeAnyPipeWork()
{
    QFETCH(bool, served);
    QFETCH(QString, firstLine);
    create();
    std::optional<PipePeer::Server> server;
    if (served)
        server.emplace(PipePeer::resetPipe);
    dialog->show();
    int seen = 0;
    bool visible = true;
    {
        const LineWatch watch(firstLine, [&] {
            ++seen;
            visible = dialog->isVisible();
        });
        clickOk();
    }
    QCOMPARE(seen, 1);
    QVERIFY(!visible);
}

void SettingsPipeTest::destruction()
{
    create();
    log->clear();
    dialog.reset();
    const QStringList lines = log->take();
    QCOMPARE(lines.constFirst(), QString("Settings dialog closed and resources cleaned up."));
    QCOMPARE(lines.constLast(), QString("Pipe closed."));
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
}

void SettingsPipeTest::destructionAmongClients()
{
    std::atomic<bool> enough = false;
    std::thread clients([&] {
        while (!enough) {
            PipePeer::Client client(PipePeer::settingsPipe);
            if (client.tryConnect() == ERROR_SUCCESS)
                client.write(openMessage);
            Sleep(1);
        }
    });
    QStringList late;
    for (int round = 0; round < 30; ++round) {
        dialog = std::make_unique<Settings>();
        QTest::qWait(round * 5);
        dialog.reset();
        log->clear();
        QCoreApplication::processEvents();
        late += ownLines(log->take()); // Requests that outlived the dialog->
    }
    enough = true;
    clients.join();
    QCOMPARE(late, QStringList());
}

void SettingsPipeTest::threadThatCannotEndStaysBehind()
{
    std::atomic<bool> busy = false;
    std::atomic<bool> goesOn = false;
    const LineWatch watch(running, [&] {
        busy = true;
        while (!goesOn)
            QThread::msleep(1);
    });
    dialog = std::make_unique<Settings>();
    const QPointer<QThread> thread = dialog->findChild<QThread*>();
    QTRY_VERIFY_WITH_TIMEOUT(busy, 30000);
    log->clear();
    QElapsedTimer clock;
    clock.start();
    dialog.reset();
    QVERIFY2(clock.elapsed() >= 1950, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(ownLines(log->take()),
             QStringList{"Settings dialog closed and resources cleaned up."});
    QVERIFY(thread != nullptr);
    QVERIFY(thread->parent() == nullptr);
    QVERIFY(thread->isRunning());
    goesOn = true;
    delete thread;
    QCOMPARE(log->take().constLast(), QString("Pipe closed."));
}

QUORVEL_TEST_MAIN(SettingsPipeTest)
#include "settings_pipe_test.moc"
