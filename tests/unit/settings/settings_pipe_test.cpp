#include "line_watch.h"
#include "pipe_peer.h"
#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/patience.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QPushButton>
#include <QSemaphore>
#include <QTest>

#include <memory>
#include <optional>

namespace {

const QString running = QStringLiteral("ThreadSettingsPip is running waiting Asio Info...");
const QString shown = QStringLiteral("Received signal from pipe thread to show settings window.");

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

/// The dialog with its thread at a real pipe.
class SettingsPipeTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup();

    void requestOpensTheDialog_data();
    void requestOpensTheDialog();
    void requestKeepsThePlace();
    void requestOpensThroughThePipe();
    void dialogHidesBeforeAnyPipeWork();
    void threadThatCannotEndStaysBehind();

private:
    /// A dialog whose thread waits for clients; the lines up to there are forgotten.
    void create();
    bool isWritten(const QString& line);

    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

void SettingsPipeTest::cleanup()
{
    dialog.reset();
    log.reset();
}

void SettingsPipeTest::create()
{
    dialog = std::make_unique<Settings>();
    QVERIFY(isWritten(running));
    log->clear();
}

bool SettingsPipeTest::isWritten(const QString& line)
{
    return QTest::qWaitFor([&] { return log->lines().contains(line); }, patience);
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
    QVERIFY(QTest::qWaitForWindowActive(&other, patience));
    log->clear();
    const RaiseCounter raises(*dialog);

    dialog->showFromPipe();
    QCOMPARE(ownLines(log->take()), QStringList{shown});
    QCOMPARE(raises.count, 1);
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), patience));
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isMinimized());
    QCOMPARE(dialog->windowState() & ~Qt::WindowActive, after);
    QVERIFY(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(dialog->windowType(), Qt::Dialog);

    // Once it is shown so, nothing but the request itself brings it to the front.
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other, patience));
    dialog->showFromPipe();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), patience));
    QCOMPARE(raises.count, 2);
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

void SettingsPipeTest::requestOpensThroughThePipe()
{
    create();
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.connect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(client.write(QByteArray(20, '\1')), DWORD{ERROR_SUCCESS});
    QVERIFY(isWritten(shown));
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), patience));
}

void SettingsPipeTest::dialogHidesBeforeAnyPipeWork()
{
    create();
    dialog->show();
    std::optional<bool> visible;
    {
        const LineWatch watch("Error: Could not open pipe. Error code: 2",
                              [&] { visible = dialog->isVisible(); });
        QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
    }
    QCOMPARE(visible, std::optional(false));
}

void SettingsPipeTest::threadThatCannotEndStaysBehind()
{
    QSemaphore busy;
    QSemaphore goesOn;
    const LineWatch watch(running, [&] {
        busy.release();
        goesOn.acquire();
    });
    dialog = std::make_unique<Settings>();
    const QPointer<QThread> thread = dialog->findChild<QThread*>();
    QVERIFY(busy.tryAcquire(1, patience));
    log->clear();
    QElapsedTimer clock;
    clock.start();
    dialog.reset();
    const qint64 elapsed = clock.elapsed();
    QCOMPARE(ownLines(log->take()),
             QStringList{"Settings dialog closed and resources cleaned up."});
    QVERIFY(thread != nullptr);
    QVERIFY(thread->parent() == nullptr);
    QVERIFY(thread->isRunning());
    goesOn.release();
    delete thread;
    QCOMPARE(log->take().constLast(), QString("Pipe closed."));
    // Two seconds, by clocks that may differ a little; a busy machine takes longer.
    QVERIFY2(elapsed >= 1950 && elapsed < patience, qPrintable(QString::number(elapsed)));
}

QUORVEL_TEST_MAIN(SettingsPipeTest)
#include "settings_pipe_test.moc"
