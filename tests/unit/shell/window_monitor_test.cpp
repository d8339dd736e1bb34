#include "controls/button.h"
#include "controls/knob.h"
#include "support/panel_table.h"
#include "support/screen_picture.h"
#include "support/test_main.h"
#include "window_stage.h"

#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qwindowsysteminterface.h>

/// The windows on a desk of monitors of different scales (monitors.json): where they move they are
/// painted anew, in that monitor's pixels.
class WindowMonitorTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void panel_data();
    void panel();
    void openEditor();
    void dialog();
    void growsIntoTheScreen();
    void hiddenWhileTheMonitorIsTakenAway();

private:
    void showPanel(std::uint32_t productId);
};

namespace {

QScreen* monitor(double scale)
{
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen->devicePixelRatio() == scale)
            return screen;
    }
    return nullptr;
}

/// As the system reports a window that was dragged there: it keeps its size in its own pixels.
void moveTo(QWidget& window, double scale)
{
    QWindow* handle = window.windowHandle();
    const QSize size = window.size();
    QWindowSystemInterface::handleWindowScreenChanged<QWindowSystemInterface::SynchronousDelivery>(
        handle, monitor(scale));
    handle->setGeometry(QRect(monitor(scale)->geometry().topLeft() + QPoint(50, 50), size));
    QCoreApplication::processEvents();
}

/// What is not as it should be on a monitor of this scale.
QString wrongAt(double scale, QWidget& window)
{
    if (window.devicePixelRatio() != scale)
        return QStringLiteral("painted for %1").arg(window.devicePixelRatio());
    const QImage screen = ScreenPicture::of(window);
    const QSize pixels(int(window.width() * scale), int(window.height() * scale));
    if (screen.size() != pixels)
        return QStringLiteral("%1 x %2 pixels").arg(screen.width()).arg(screen.height());
    return ScreenPicture::difference(screen, ScreenPicture::paintedAnew(window));
}

/// All monitors, or all but the one of this scale.
void connectMonitors(double without = 0)
{
    QFile file(QStringLiteral(QUORVEL_MONITORS));
    QVERIFY(file.open(QFile::ReadOnly));
    QJsonArray screens =
        QJsonDocument::fromJson(file.readAll())[QStringLiteral("screens")].toArray();
    for (qsizetype i = screens.size() - 1; i >= 0; --i) {
        if (screens[i][QStringLiteral("logicalDpi")].toInt() == 96 * without)
            screens.removeAt(i);
    }
    QPlatformNativeInterface* platform = QGuiApplication::platformNativeInterface();
    using SetConfiguration = void (*)(const QJsonObject&, QPlatformNativeInterface*);
    const auto set = reinterpret_cast<SetConfiguration>(
        platform->nativeResourceForIntegration("setConfiguration"));
    QVERIFY(set != nullptr);
    set({{QStringLiteral("screens"), screens}}, platform);
}

/// The monitor on which all of the window is.
const QScreen* monitorOf(const QWidget& window)
{
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (screen->availableGeometry().contains(window.frameGeometry()))
            return screen;
    }
    return nullptr;
}

} // namespace

void WindowMonitorTest::initTestCase()
{
    for (const double scale : {1.0, 1.25, 1.5, 2.0})
        QVERIFY(monitor(scale) != nullptr);
    QCOMPARE(QGuiApplication::primaryScreen(), monitor(1.0));
}

void WindowMonitorTest::init()
{
    begin();
}

void WindowMonitorTest::showPanel(std::uint32_t productId)
{
    QVERIFY(WindowStage::showPanel(productId));
    QCOMPARE(wrongAt(1.0, *window), QString());
}

void WindowMonitorTest::panel_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    for (const PanelTable::Model& model : PanelTable::models)
        QTest::newRow(model.name) << model.productId;
}

void WindowMonitorTest::panel()
{
    QFETCH(const std::uint32_t, productId);
    showPanel(productId);
    const QSize size = window->size();
    for (const double scale : {1.5, 1.0, 2.0, 1.25, 1.5, 1.0}) {
        moveTo(*window, scale);
        QCOMPARE(wrongAt(scale, *window), QString());
        QCOMPARE(window->size(), size);
        for (Knob* knob : window->findChildren<Knob*>())
            knob->setValue(knob->value == knob->maximum ? knob->minimum : knob->value + 1);
        for (Button* button : window->findChildren<Button*>())
            button->setOn(!button->on);
        QCOMPARE(wrongAt(scale, *window), QString());
    }
}

void WindowMonitorTest::openEditor()
{
    showPanel(SimulatorControl::ka1);
    Knob* knob = window->findChild<Knob*>("Dial/MicValue");
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QTest::keyClicks(knob->editor, QStringLiteral("12"));
    moveTo(*window, 1.5);
    QVERIFY(knob->editor->isVisible());
    QTest::keyClick(knob->editor, Qt::Key_Return);
    QCOMPARE(knob->value, 12);
    QCOMPARE(wrongAt(1.5, *window), QString());
}

void WindowMonitorTest::dialog()
{
    simulated.control().plug(SimulatorControl::ka1);
    QVERIFY(settings->connectDevice());
    QVERIFY(show(*settings));
    const QSize size = settings->size();
    for (const double scale : {2.0, 1.25, 1.0, 1.5}) {
        moveTo(*settings, scale);
        QCOMPARE(wrongAt(scale, *settings), QString());
        QCOMPARE(settings->size(), size);
    }
}

/// A panel comes while the window stands in the corner.
void WindowMonitorTest::growsIntoTheScreen()
{
    QVERIFY(show(*window));
    const QRect screen = monitor(1.0)->availableGeometry();
    window->windowHandle()->setPosition(screen.bottomRight() - QPoint(160, 80));
    settle();
    simulated.control().plug(SimulatorControl::ka2);
    window->detectDevice();
    settle();
    QCOMPARE(window->size(), window->sizeHint());
    QCOMPARE(monitorOf(*window), monitor(1.0));
    QCOMPARE(window->frameGeometry().bottomRight(), screen.bottomRight());
}

/// The tray and the ASIO driver bring the windows back when their monitor is gone; one that the
/// user made larger than the monitor that is left becomes smaller.
void WindowMonitorTest::hiddenWhileTheMonitorIsTakenAway()
{
    showPanel(SimulatorControl::ka2);
    settings->showFromPipe();
    QVERIFY(show(*settings));
    moveTo(*window, 2.0);
    moveTo(*settings, 2.0);
    settings->windowHandle()->resize(500, 1200);
    settle();
    QCOMPARE(monitorOf(*window), monitor(2.0));
    QCOMPARE(monitorOf(*settings), monitor(2.0));
    window->hide();
    settings->hide();
    connectMonitors(2.0);
    QCOMPARE(monitor(2.0), nullptr);
    settings->showFromPipe();
    QVERIFY(show(*window));
    QVERIFY(show(*settings));
    settle();
    QCOMPARE(monitorOf(*window), monitor(1.0));
    QCOMPARE(monitorOf(*settings), monitor(1.0));
    QCOMPARE(settings->width(), 500);
    QCOMPARE(wrongAt(1.0, *window), QString());
    connectMonitors();
}

QUORVEL_TEST_MAIN(WindowMonitorTest)

#include "window_monitor_test.moc"
