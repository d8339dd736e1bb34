#include "support/test_main.h"
#include "window_stage.h"

#include <QLabel>
#include <QPointer>
#include <QTest>
#include <QVBoxLayout>

/// How the window looks and closes; what it does with a device is held by the random sequences.
class MainWindowTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void construction();
    void statusTextsLookAlike();
    void panelIsInTheMiddle();
    void anotherModelUnderTheSameHandleGoesUnnoticed();
    void closeWithoutTray();

private:
    QLayout* base() const { return window->centralWidget()->layout(); }
};

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
}

void MainWindowTest::statusTextsLookAlike()
{
    const auto check = [this](const char* text) {
        const auto* label = qobject_cast<QLabel*>(base()->itemAt(base()->count() - 1)->widget());
        QVERIFY(label != nullptr);
        QCOMPARE(label->text(), QString(text));
        QCOMPARE(label->styleSheet(), QString("font-size: 12px; color: white;"));
        QCOMPARE(label->alignment(), Qt::AlignCenter);
    };
    check("声卡未连接！");
    simulated.control().plug(7);
    window->detectDevice();
    check("未知设备，请检查连接！");
    simulated.control().plug(SimulatorControl::ka1);
    simulated.control().fail(0xFFDC20A0, 1, 31);
    window->detectDevice();
    check("获取固件版本失败，请检查连接！");
    window->detectDevice();
    simulated.control().unplug();
    for (int read = 0; read < 3; ++read)
        window->checkDevicePid();
    check("声卡未连接！");
    // What comes back is set up again, whatever the settings file says meanwhile.
    QVERIFY(settings->reinitPending);
}

void MainWindowTest::panelIsInTheMiddle()
{
    simulated.control().plug(SimulatorControl::ka1);
    window->detectDevice();
    QCOMPARE(base()->count(), 1);
    QCOMPARE(base()->itemAt(0)->widget()->parentWidget(), window->centralWidget());
}

void MainWindowTest::anotherModelUnderTheSameHandleGoesUnnoticed()
{
    simulated.control().plug(SimulatorControl::ka1);
    window->detectDevice();
    log->clear();
    simulated.control().answerShort(0xFFDC2084, 1, 0);
    window->checkDevicePid();
    QCOMPARE(log->take(), QStringList());
    QCOMPARE(base()->itemAt(0)->widget()->metaObject()->className(), "ka1");
}

void MainWindowTest::closeWithoutTray()
{
    // There is no tray on the off-screen platform: the close goes through and must not delete.
    QVERIFY(show(*window));
    const QPointer<MainWindow> alive(window.get());
    QVERIFY(window->close());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!alive.isNull());
    QVERIFY(!window->isVisible());
    window->show();
    QVERIFY(window->isVisible());
}

QUORVEL_TEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
