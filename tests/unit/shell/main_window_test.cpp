#include "panels/ka1.h"
#include "support/background_lines.h"
#include "support/test_main.h"
#include "support/trace_text.h"
#include "window_stage.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

/// The window's states, with the passing of time replaced by calls of its two slots where the
/// pace itself is not the matter.
class MainWindowTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init();
    void construction();
    void detectionPace();
    void waitingWhenNoDevice();
    void productIdZeroChangesNothing();
    void unknownDevice();
    void connected();
    void models_data();
    void models();
    void titleBytes_data();
    void titleBytes();
    void settingsConnectFails();
    void firmwareReadFails();
    void twoFailedReadsAreForgiven();
    void lost();
    void replugWithinOnePeriod();
    void firstFailureAfterALossIsTheLast();
    void anotherModelUnderTheSameHandleGoesUnnoticed();
    void closeWithoutTray();
    void repeatedArrivalsLeakNoHandle();

private:
    QTimer* timer(int index) const
    {
        return window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly).value(index);
    }
    QTimer* detectTimer() const { return timer(0); }
    QTimer* pidTimer() const { return timer(1); }
    QLayout* base() const { return window->centralWidget()->layout(); }
    QStringList shown() const;
    void flushDeletions();
    void arrive();
    void lose();
    QStringList takeLog();
};

void MainWindowTest::init()
{
    begin();
    log->clear();
}

/// What the base layout holds, from top to bottom: texts of labels, class names of panels.
QStringList MainWindowTest::shown() const
{
    QStringList result;
    for (int i = 0; i < base()->count(); ++i) {
        const QWidget* widget = base()->itemAt(i)->widget();
        const auto* label = qobject_cast<const QLabel*>(widget);
        result.append(label != nullptr ? label->text()
                                       : QString::fromLatin1(widget->metaObject()->className()));
    }
    return result;
}

void MainWindowTest::flushDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void MainWindowTest::arrive()
{
    simulated.control().plug(SimulatorControl::ka1);
    window->detectDevice();
    QCOMPARE(shown(), QStringList{"ka1"});
    takeLog();
}

void MainWindowTest::lose()
{
    simulated.control().unplug();
    while (pidTimer()->isActive())
        window->checkDevicePid();
    flushDeletions();
}

QStringList MainWindowTest::takeLog()
{
    return withoutBackground(log->take());
}

void MainWindowTest::construction()
{
    QCOMPARE(window->windowTitle(), QString("Quorvel Driver"));
    QVERIFY(!window->isVisible());
    QCOMPARE(window->windowFlags(), Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                        Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    const QImage icon = QPixmap(QStringLiteral(":/icon/icon.png")).toImage();
    QVERIFY(!icon.isNull());
    QCOMPARE(window->windowIcon().pixmap(icon.size(), 1).toImage(), icon);
    QCOMPARE(window->styleSheet(), QString("QMainWindow { background-color: #2c313c; }"));
    QVERIFY(window->testAttribute(Qt::WA_DeleteOnClose));
    QCOMPARE(base()->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QCOMPARE(shown(), QStringList{"声卡未连接！"});
    const auto* label = qobject_cast<QLabel*>(base()->itemAt(0)->widget());
    QCOMPARE(label->styleSheet(), QString("font-size: 12px; color: white;"));
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QCOMPARE(detectTimer()->interval(), 1000);
    QVERIFY(detectTimer()->isActive());
    QCOMPARE(pidTimer()->interval(), 400);
    QVERIFY(!pidTimer()->isActive());
}

void MainWindowTest::detectionPace()
{
    QTest::qWait(2500);
    QCOMPARE(takeLog(), (QStringList{"Device PID: 0", "Device PID: 0"}));
}

void MainWindowTest::waitingWhenNoDevice()
{
    window->detectDevice();
    QCOMPARE(takeLog(), QStringList{"Device PID: 0"});
    QCOMPARE(shown(), QStringList{"声卡未连接！"});
    QVERIFY(detectTimer()->isActive());
}

void MainWindowTest::productIdZeroChangesNothing()
{
    simulated.control().plug(7);
    window->detectDevice();
    simulated.control().unplug();
    simulated.control().plug(0);
    takeLog();
    window->detectDevice();
    QCOMPARE(takeLog(), QStringList{"Device PID: 0"});
    QCOMPARE(shown(), QStringList{"未知设备，请检查连接！"});
}

void MainWindowTest::unknownDevice()
{
    simulated.control().plug(3);
    window->detectDevice();
    QCOMPARE(takeLog(), (QStringList{"Device PID: 3", "Unknown device PID: 3"}));
    QCOMPARE(shown(), QStringList{"未知设备，请检查连接！"});
    QCOMPARE(base()->itemAt(0)->widget()->styleSheet(), QString("font-size: 12px; color: white;"));
    QVERIFY(detectTimer()->isActive());
    QVERIFY(!pidTimer()->isActive());
    QCOMPARE(window->windowTitle(), QString("Quorvel Driver"));
    // The connection of the attempt is held, also by the next one.
    QCOMPARE(simulated.settledHandles(1), 1);
    window->detectDevice();
    flushDeletions();
    QCOMPARE(simulated.settledHandles(2), 2);
    QCOMPARE(window->findChildren<QLabel*>().size(), 1);
}

void MainWindowTest::connected()
{
    simulated.control().plug(SimulatorControl::ka1);
    simulated.control().setFirmware({'V', '1', '.', '2', '3', 'b', 'e', 't', 'a', '!'});
    window->detectDevice();
    const QStringList lines = takeLog();
    QCOMPARE(lines.constFirst(), QString("Device PID: 1"));
    QCOMPARE(lines.mid(lines.size() - 2),
             (QStringList{"Adding ka1 widget to layout.", "Device found with PID: 1"}));
    QCOMPARE(lines.count("加载控件状态完成"), 1);
    QVERIFY(lines.indexOf("加载控件状态完成") < lines.indexOf("Mic Instr Button Clicked"));
    QCOMPARE(shown(), QStringList{"ka1"});
    QCOMPARE(window->windowTitle(), QString("Quorvel KA1 - FW: V1.23beta!"));
    QVERIFY(!detectTimer()->isActive());
    QVERIFY(pidTimer()->isActive());
    // The dialog's, the panel's and the watching one.
    QCOMPARE(simulated.settledHandles(3), 3);
    const QStringList trace = simulated.takeTrace();
    QCOMPARE(trace.constFirst(), TraceText::request(1, 0xFFDC2084, 4));
    QVERIFY(trace.contains(TraceText::firmwareRequest(1)));
}

void MainWindowTest::models_data()
{
    QTest::addColumn<int>("productId");
    QTest::addColumn<QString>("name");
    QTest::newRow("ka1") << 1 << "KA1";
    QTest::newRow("ka2") << 2 << "KA2";
    QTest::newRow("ks") << 15 << "KS";
}

void MainWindowTest::models()
{
    QFETCH(int, productId);
    QFETCH(QString, name);
    const QString panel = QTest::currentDataTag();
    simulated.control().setFirmware({'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'});
    simulated.control().plug(static_cast<std::uint32_t>(productId));
    window->detectDevice();
    const QStringList lines = takeLog();
    QCOMPARE(lines.constFirst(), QString("Device PID: %1").arg(productId));
    QCOMPARE(lines.mid(lines.size() - 2),
             (QStringList{QString("Adding %1 widget to layout.").arg(panel),
                          QString("Device found with PID: %1").arg(productId)}));
    QCOMPARE(shown(), QStringList{panel});
    QCOMPARE(window->windowTitle(), QString("Quorvel %1 - FW: 0123456789").arg(name));
    QCOMPARE(base()->itemAt(0)->widget()->parentWidget(), window->centralWidget());
}

void MainWindowTest::titleBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("five characters and five zeros")
        << QByteArray("1.0.7\0\0\0\0\0", 10) << "1.0.7" + QString(5, QChar(0));
    QTest::newRow("all zero") << QByteArray(10, '\0') << QString(10, QChar(0));
    QTest::newRow("above 127") << QByteArray("\xff\x80\xe9zzzzzzz", 10)
                               << QStringLiteral("\u00ff\u0080\u00e9zzzzzzz");
    QTest::newRow("digits") << QByteArray("9876543210") << "9876543210";
}

void MainWindowTest::titleBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    std::array<std::uint8_t, 10> version{};
    std::copy(bytes.cbegin(), bytes.cend(), version.begin());
    simulated.control().setFirmware(version);
    simulated.control().plug(SimulatorControl::ka1);
    window->detectDevice();
    QCOMPARE(window->windowTitle(), "Quorvel KA1 - FW: " + text);
}

void MainWindowTest::settingsConnectFails()
{
    // The device answers the detection and is gone for the dialog: the product id stays from the
    // attempt before.
    simulated.control().plug(SimulatorControl::ka1);
    simulated.control().fail(0xFFDC20A0, 1, 31);
    window->detectDevice();
    flushDeletions();
    takeLog();
    simulated.control().unplug();
    window->detectDevice();
    QCOMPARE(takeLog(), (QStringList{"Device PID: 1", "Failed to create device in ka1.",
                                     "Failed to connect to driver in settings window."}));
    QCOMPARE(shown(), QStringList());
    QVERIFY(detectTimer()->isActive());
    QVERIFY(pidTimer()->isActive());
    // The connection of the first attempt is still held.
    flushDeletions();
    QCOMPARE(simulated.settledHandles(1), 1);
    for (int read = 0; read < 3; ++read)
        window->checkDevicePid();
    QCOMPARE(shown(), QStringList{"声卡未连接！"});
    arrive();
}

void MainWindowTest::firmwareReadFails()
{
    simulated.control().plug(SimulatorControl::ka1);
    simulated.control().fail(0xFFDC20A0, 1, 31);
    window->detectDevice();
    QCOMPARE(takeLog().constLast(), QString("Failed to get firmware version."));
    QCOMPARE(shown(), (QStringList{"ka1", "获取固件版本失败，请检查连接！"}));
    QCOMPARE(base()->itemAt(1)->widget()->styleSheet(), QString("font-size: 12px; color: white;"));
    QCOMPARE(window->windowTitle(), QString("Quorvel Driver"));
    QVERIFY(detectTimer()->isActive());
    QVERIFY(!pidTimer()->isActive());
    // The dialog's, the panel's and the one of the attempt.
    QCOMPARE(simulated.settledHandles(3), 3);
    window->detectDevice();
    QCOMPARE(shown(), QStringList{"ka1"});
    flushDeletions();
    // The watching one came on top.
    QCOMPARE(simulated.settledHandles(4), 4);
    QCOMPARE(window->findChildren<ka1*>().size(), 1);
    QVERIFY(!detectTimer()->isActive());
}

void MainWindowTest::twoFailedReadsAreForgiven()
{
    arrive();
    simulated.control().fail(0xFFDC2084, 2, 31);
    window->checkDevicePid();
    window->checkDevicePid();
    QCOMPARE(takeLog(), (QStringList{"Error reading device PID from driver, error count: 1",
                                     "Error reading device PID from driver, error count: 2"}));
    window->checkDevicePid();
    QCOMPARE(takeLog(), QStringList());
    simulated.control().fail(0xFFDC2084, 1, 31);
    window->checkDevicePid();
    QCOMPARE(takeLog(), QStringList{"Error reading device PID from driver, error count: 1"});
    QCOMPARE(shown(), QStringList{"ka1"});
}

void MainWindowTest::lost()
{
    arrive();
    settings->reinitPending = false;
    lose();
    QCOMPARE(takeLog(), (QStringList{"Error reading device PID from driver, error count: 1",
                                     "Error reading device PID from driver, error count: 2",
                                     "Error reading device PID from driver, error count: 3",
                                     "Meter driver handle deleted.",
                                     "Cleared all widgets from base layout."}));
    QCOMPARE(shown(), QStringList{"声卡未连接！"});
    QVERIFY(settings->reinitPending);
    QVERIFY(detectTimer()->isActive());
    QCOMPARE(detectTimer()->interval(), 1000);
    QVERIFY(!pidTimer()->isActive());
    QVERIFY(window->findChildren<ka1*>().isEmpty());
    QVERIFY(window->windowTitle().startsWith("Quorvel KA1"));
    window->detectDevice();
    QCOMPARE(takeLog(), QStringList{"Device PID: 0"});
}

void MainWindowTest::replugWithinOnePeriod()
{
    simulated.control().plug(SimulatorControl::ka1);
    QTRY_COMPARE_WITH_TIMEOUT(shown(), QStringList{"ka1"}, 1500);
    QElapsedTimer clock;
    clock.start();
    simulated.control().unplug();
    QTRY_COMPARE_WITH_TIMEOUT(shown(), QStringList{"声卡未连接！"}, 2000);
    QVERIFY2(clock.elapsed() >= 750, qPrintable(QString::number(clock.elapsed())));
    simulated.control().plug(SimulatorControl::ka1, 5);
    QTRY_COMPARE_WITH_TIMEOUT(shown(), QStringList{"ka1"}, 1500);
}

void MainWindowTest::firstFailureAfterALossIsTheLast()
{
    // The count of failures starts anew only with a successful read.
    arrive();
    lose();
    arrive();
    simulated.control().unplug();
    window->checkDevicePid();
    QCOMPARE(takeLog().constFirst(),
             QString("Error reading device PID from driver, error count: 4"));
    QCOMPARE(shown(), QStringList{"声卡未连接！"});
}

void MainWindowTest::anotherModelUnderTheSameHandleGoesUnnoticed()
{
    arrive();
    simulated.control().answerShort(0xFFDC2084, 1, 0);
    window->checkDevicePid();
    QCOMPARE(takeLog(), QStringList());
    QCOMPARE(shown(), QStringList{"ka1"});
}

void MainWindowTest::closeWithoutTray()
{
    // There is no tray on the off-screen platform: the close goes through and must not delete.
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QPointer<MainWindow> alive(window.get());
    QVERIFY(window->close());
    flushDeletions();
    QVERIFY(!alive.isNull());
    QVERIFY(!window->isVisible());
    window->show();
    QVERIFY(window->isVisible());
}

void MainWindowTest::repeatedArrivalsLeakNoHandle()
{
    arrive();
    // The dialog's, the panel's and the watching one.
    constexpr int inUse = 3;
    QCOMPARE(simulated.settledHandles(inUse), inUse);
    for (int cycle = 0; cycle < 50; ++cycle) {
        lose();
        simulated.control().plug(SimulatorControl::ka1);
        window->detectDevice();
        flushDeletions();
    }
    QCOMPARE(simulated.settledHandles(inUse), inUse);
}

QUORVEL_TEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
