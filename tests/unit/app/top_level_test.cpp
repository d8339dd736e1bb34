#include "app/top_level.h"
#include "support/debug_log.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QImageReader>
#include <QMenu>
#include <QMessageBox>
#include <QTest>

#include <algorithm>
#include <iostream>
#include <memory>

namespace {

template <typename Widget> Widget* findTopLevel()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* found = qobject_cast<Widget*>(widget))
            return found;
    }
    return nullptr;
}

TrayIcon* findTrayIcon()
{
    const auto* menu = findTopLevel<QMenu>();
    return menu == nullptr ? nullptr : qobject_cast<TrayIcon*>(menu->actions().at(0)->parent());
}

void trigger(const char* text)
{
    for (QAction* action : findTopLevel<QMenu>()->actions()) {
        if (action->text() == QLatin1String(text))
            action->trigger();
    }
}

} // namespace

/// The three top-level objects as the program makes them, and its icon.
class TopLevelTest : public QObject
{
    Q_OBJECT

private slots:
    void start();
    void wiring();
    void orderOfTheEnd();
    void iconHasTheLargestFrame();
    void allFramesAreInTheFile();
    void applicationIconIsSharp_data();
    void applicationIconIsSharp();

private:
    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
};

void TopLevelTest::start()
{
    QGuiApplication::setQuitOnLastWindowClosed(true);
    const TopLevel topLevel;
    QVERIFY(findTopLevel<Settings>()->reinitPending);
    QVERIFY(findTopLevel<Settings>()->isHidden());
    QVERIFY(findTopLevel<MainWindow>()->isHidden());
    QVERIFY(findTrayIcon()->isVisible());
    QVERIFY(!QGuiApplication::quitOnLastWindowClosed());
}

void TopLevelTest::wiring()
{
    const DebugLog log;
    const TopLevel topLevel;
    QCOMPARE(findTopLevel<MainWindow>()->settings, findTopLevel<Settings>());
    trigger("Setup");
    QVERIFY(findTopLevel<Settings>()->isVisible());
    QVERIFY(findTopLevel<MainWindow>()->isHidden());
    trigger("Main Window");
    QVERIFY(findTopLevel<MainWindow>()->isVisible());

    simulated.control().plug(SimulatorControl::ka1);
    findTopLevel<MainWindow>()->detectDevice();
    QVERIFY(log.lines().contains("Device found with PID: 1"));
    simulated.control().reset();
}

/// The reverse of that in which they were made.
void TopLevelTest::orderOfTheEnd()
{
    DebugLog log;
    QStringList gone;
    const auto note = [&](const QObject* object, const char* name) {
        QVERIFY(object != nullptr);
        connect(object, &QObject::destroyed, this, [&gone, name] { gone.append(name); });
    };
    auto topLevel = std::make_unique<TopLevel>();
    note(findTopLevel<Settings>(), "dialog");
    note(findTopLevel<MainWindow>(), "window");
    note(findTrayIcon(), "tray icon");
    log.clear();
    topLevel.reset();
    QCOMPARE(gone, (QStringList{"tray icon", "window", "dialog"}));
    QVERIFY(log.lines().contains("Settings dialog closed and resources cleaned up."));
}

void TopLevelTest::iconHasTheLargestFrame()
{
    QCOMPARE(QPixmap(QStringLiteral(":/icon/icon.ico")).size(), QSize(256, 256));
    QCOMPARE(QPixmap(QStringLiteral(":/icon/icon.png")).size(), QSize(256, 256));
}

void TopLevelTest::allFramesAreInTheFile()
{
    // It is also the icon of the executable and of the installer.
    QImageReader reader(QStringLiteral(":/icon/icon.ico"));
    QList<int> widths;
    for (int frame = 0; frame < reader.imageCount(); ++frame) {
        QVERIFY(reader.jumpToImage(frame));
        const QImage image = reader.read();
        QCOMPARE(image.width(), image.height());
        QVERIFY(image.hasAlphaChannel());
        widths.append(image.width());
    }
    std::sort(widths.begin(), widths.end());
    QCOMPARE(widths, (QList<int>{16, 20, 24, 32, 48, 64, 128, 256}));
}

void TopLevelTest::applicationIconIsSharp_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<double>("ratio");
    for (const int size : {16, 24, 32, 48, 64}) {
        for (const double ratio : {1.0, 1.5, 2.0, 3.0})
            QTest::addRow("%d at %.1f", size, ratio) << size << ratio;
    }
}

void TopLevelTest::applicationIconIsSharp()
{
    QFETCH(int, size);
    QFETCH(double, ratio);
    QGuiApplication::setWindowIcon({});
    setApplicationIcon();
    const QMessageBox box;
    for (const QIcon& icon : {QGuiApplication::windowIcon(), box.windowIcon()}) {
        const QPixmap pixmap = icon.pixmap(QSize(size, size), ratio);
        // An icon is never drawn larger than its largest frame; as large as asked for means that
        // it was made smaller, not larger.
        const int pixels = int(size * ratio);
        QCOMPARE(pixmap.size(), QSize(pixels, pixels));
        const QImage expected =
            QImage(QStringLiteral(":/icon/icon.png"))
                .scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_ARGB32);
        const QImage found = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
        const QPoint centre(pixels / 2, pixels / 2);
        QVERIFY(qAbs(qRed(found.pixel(centre)) - qRed(expected.pixel(centre))) <= 8);
        QVERIFY(qAbs(qBlue(found.pixel(centre)) - qBlue(expected.pixel(centre))) <= 8);
    }
}

QUORVEL_TEST_MAIN(TopLevelTest)
#include "top_level_test.moc"
