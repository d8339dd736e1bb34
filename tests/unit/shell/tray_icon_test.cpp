#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"
#include "support/patience.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QMetaMethod>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <iostream>

namespace {

/// Counts the events of one type that reach a widget.
class EventCount : public QObject
{
public:
    explicit EventCount(QEvent::Type counted)
        : type(counted)
    {
    }

    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == type ? 1 : 0;
        return false;
    }

private:
    const QEvent::Type type;
};

} // namespace

class TrayIconTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { simulated.control().reset(); }
    void menu();
    void slotOrder();
    void quitOnLastWindowClosedIsOff();
    void icon();
    void bringsToTheFront_data();
    void bringsToTheFront();
    void mainWindowEntryShowsAMinimisedWindow();
    void missingWindowsWarn_data();
    void missingWindowsWarn();
    void nullMainWindowIsNotTakenOver();
    void quitWhileWindowsAreOpen();
    void trayIconFile();

private:
    static QAction* entry(const TrayIcon& tray, const char* text);

    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
};

QAction* TrayIconTest::entry(const TrayIcon& tray, const char* text)
{
    const auto actions = tray.contextMenu()->actions();
    for (QAction* action : actions) {
        if (action->text() == QLatin1String(text))
            return action;
    }
    qFatal("no menu entry %s", text);
}

void TrayIconTest::menu()
{
    const TrayIcon tray;
    QStringList entries;
    for (const QAction* action : tray.contextMenu()->actions()) {
        entries.append(action->isSeparator() ? "-" : action->text());
        QCOMPARE(action->isEnabled(), action->text() != "V20251009");
        QVERIFY(action->isSeparator() || action->parent() == &tray);
    }
    QCOMPARE(entries,
             (QStringList{"V20251009", "Quit", "-", "Setup", "Main Window", "Upgrade Firmware",
                          "Refresh Audio Device", "Win Sound Pannel", "-", "-"}));
}

void TrayIconTest::slotOrder()
{
    const QMetaObject& meta = TrayIcon::staticMetaObject;
    QStringList own;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        own.append(QString::fromLatin1(meta.method(i).name()));
    QCOMPARE(own, (QStringList{"showSettings", "clickCallback", "openSoundPannel",
                               "refreshDeviceList"}));
}

void TrayIconTest::quitOnLastWindowClosedIsOff()
{
    QGuiApplication::setQuitOnLastWindowClosed(true);
    const TrayIcon tray;
    QVERIFY(!QGuiApplication::quitOnLastWindowClosed());
    QVERIFY(!tray.isVisible());
    QVERIFY(!tray.icon().isNull());
}

void TrayIconTest::icon()
{
    const TrayIcon tray;
    const QImage expected = QPixmap(QStringLiteral(":/icon/icon.png")).toImage();
    QVERIFY(!expected.isNull());
    QCOMPARE(tray.icon().pixmap(expected.size(), 1).toImage(), expected);
}

void TrayIconTest::bringsToTheFront_data()
{
    QTest::addColumn<bool>("visible");
    QTest::newRow("Main Window, hidden") << false;
    QTest::newRow("Main Window, covered") << true;
    QTest::newRow("Setup, hidden") << false;
    QTest::newRow("Setup, covered") << true;
}

void TrayIconTest::bringsToTheFront()
{
    QFETCH(bool, visible);
    const QString text = QString(QTest::currentDataTag()).section(u',', 0, 0);
    Settings settings;
    MainWindow window;
    TrayIcon tray;
    tray.setMainWindow(&window);
    tray.setSettingsWindow(&settings);
    QWidget* wanted = text == "Setup" ? static_cast<QWidget*>(&settings) : &window;
    wanted->setVisible(visible);
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other, patience));

    EventCount raised(QEvent::ZOrderChange);
    wanted->installEventFilter(&raised);
    entry(tray, qPrintable(text))->trigger();
    QVERIFY(wanted->isVisible());
    QCOMPARE(raised.count, 1);
    QVERIFY(QTest::qWaitForWindowActive(wanted, patience));
}

void TrayIconTest::mainWindowEntryShowsAMinimisedWindow()
{
    MainWindow window;
    TrayIcon tray;
    tray.setMainWindow(&window);
    window.showMinimized();
    window.hide();
    entry(tray, "Main Window")->trigger();
    QVERIFY(window.isVisible());
    QVERIFY2(window.isMinimized(), "shown as it was, without being restored");
}

void TrayIconTest::missingWindowsWarn_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("Main Window") << "主窗口未设置，请先设置主窗口。";
    QTest::newRow("Setup") << "设置窗口未设置，请先设置设置窗口。";
}

void TrayIconTest::missingWindowsWarn()
{
    QFETCH(QString, text);
    TrayIcon tray;
    QString title;
    QString message;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon kind = QMessageBox::NoIcon;
    QTimer::singleShot(0, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        title = box->windowTitle();
        message = box->text();
        buttons = box->standardButtons();
        kind = box->icon();
        QVERIFY(box->isModal());
        QVERIFY(box->parent() == nullptr);
        QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    });
    entry(tray, QTest::currentDataTag())->trigger();
    QCOMPARE(title, QString("警告"));
    QCOMPARE(message, text);
    QCOMPARE(buttons, QMessageBox::Ok);
    QCOMPARE(kind, QMessageBox::Warning);
}

void TrayIconTest::nullMainWindowIsNotTakenOver()
{
    MainWindow window;
    TrayIcon tray;
    tray.setMainWindow(&window);
    tray.setMainWindow(nullptr);
    tray.showMainWindow();
    QVERIFY(window.isVisible());
}

void TrayIconTest::quitWhileWindowsAreOpen()
{
    Settings settings;
    MainWindow window;
    window.settings = &settings;
    TrayIcon tray;
    settings.show();
    window.show();
    bool timedOut = false;
    QTimer::singleShot(patience, this, [&timedOut] {
        timedOut = true;
        QCoreApplication::exit(1);
    });
    QTimer::singleShot(0, this, [&tray] { entry(tray, "Quit")->trigger(); });
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(!timedOut);
}

void TrayIconTest::trayIconFile()
{
    TrayIcon tray;
    tray.setTrayIcon("/nowhere/icon.png");
    QCOMPARE(tray.toolTip(), QString());
    tray.setTrayIcon(QCoreApplication::applicationFilePath());
    QCOMPARE(tray.toolTip(), QString("Application Tray"));
}

QUORVEL_TEST_MAIN(TrayIconTest)
#include "tray_icon_test.moc"
