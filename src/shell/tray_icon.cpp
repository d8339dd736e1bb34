#include "shell/tray_icon.h"

#include "driver/driver_device.h"
#include "platform/taskbar.h"
#include "settings/settings.h"
#include "shell/desktop_helpers.h"
#include "shell/main_window.h"

#include <QAction>
#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPixmap>
#include <QTimer>

namespace {

// At login the shell may be too busy to take an icon, and tells nobody when it has the time.
constexpr int iconRetryInterval = 5000;
constexpr int maximumIconRetries = 24;

/// Brings a window to the front, or warns that there is none.
void bringUp(QWidget* window, const QString& missingText)
{
    if (window == nullptr) {
        QMessageBox::warning(nullptr, QStringLiteral("警告"), missingText);
        return;
    }
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

TrayIcon::TrayIcon(QObject* parent)
    : QSystemTrayIcon(parent)
{
    // By way of a pixmap all windows and the tray share one image.
    setIcon(QIcon(QPixmap(QStringLiteral(":/icon/icon.png"))));
    buildMenu();
    connect(this, &QSystemTrayIcon::activated, this, &TrayIcon::clickCallback);
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::buildMenu()
{
    auto* mainWindowAction = new QAction(tr("Main Window"), this);
    auto* setupAction = new QAction(tr("Setup"), this);
    auto* quitAction = new QAction(tr("Quit"), this);
    auto* upgradeAction = new QAction(tr("Upgrade Firmware"), this);
    auto* soundAction = new QAction(tr("Win Sound Pannel"), this);
    auto* refreshAction = new QAction(tr("Refresh Audio Device"), this);
    auto* versionAction = new QAction(QStringLiteral(QUORVEL_VERSION_LABEL), this);
    versionAction->setEnabled(false);

    menu.addAction(versionAction);
    menu.addAction(quitAction);
    menu.addSeparator();
    menu.addAction(setupAction);
    menu.addAction(mainWindowAction);
    menu.addAction(upgradeAction);
    menu.addAction(refreshAction);
    menu.addAction(soundAction);
    // Two at the end on purpose: room for the entries of later models.
    menu.addSeparator();
    menu.addSeparator();
    setContextMenu(&menu);

    connect(
        mainWindowAction, &QAction::triggered, mainWindowAction, [this] { showMainWindow(); },
        Qt::DirectConnection);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    connect(setupAction, &QAction::triggered, this, &TrayIcon::showSettings);
    // Not quit(): that asks the windows first, and a main window that stays in the tray would
    // refuse.
    connect(quitAction, &QAction::triggered, qApp, [] { QCoreApplication::exit(0); });
    connect(soundAction, &QAction::triggered, this, &TrayIcon::openSoundPannel);
    connect(refreshAction, &QAction::triggered, this, &TrayIcon::refreshDeviceList);
    connect(
        upgradeAction, &QAction::triggered, upgradeAction, [this] { upgradeFirmwareAction(); },
        Qt::DirectConnection);
}

void TrayIcon::appear()
{
    setVisible(true);
    auto* retry = new QTimer(this);
    connect(retry, &QTimer::timeout, this, [this, retry, left = maximumIconRetries]() mutable {
        if (left == 0 || !geometry().isEmpty()) {
            retry->stop();
            retry->deleteLater();
            return;
        }
        --left;
        announceTaskbar();
    });
    retry->start(iconRetryInterval);
}

void TrayIcon::setMainWindow(MainWindow* window)
{
    if (window != nullptr)
        mainWindow = window;
}

void TrayIcon::setSettingsWindow(Settings* window)
{
    settingsWindow = window;
}

void TrayIcon::setTrayIcon(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    if (!QFileInfo::exists(native))
        return;
    setIcon(QIcon(native));
    setToolTip(QStringLiteral("Application Tray"));
}

void TrayIcon::showMainWindow()
{
    bringUp(mainWindow, QStringLiteral("主窗口未设置，请先设置主窗口。"));
}

void TrayIcon::showSettings()
{
    bringUp(settingsWindow, QStringLiteral("设置窗口未设置，请先设置设置窗口。"));
}

void TrayIcon::clickCallback(QSystemTrayIcon::ActivationReason reason)
{
    if (reason == DoubleClick || reason == Trigger)
        showMainWindow();
}

void TrayIcon::upgradeFirmwareAction()
{
    DriverDevice device;
    if (device.open()) {
        device.upgradeFirmware();
        return;
    }
    // Names the first model whatever is attached: log readers know the line so.
    qDebug() << "Failed to create device in ka1.";
}

void TrayIcon::openSoundPannel()
{
    DesktopHelpers::openSoundPanel();
}

void TrayIcon::refreshDeviceList()
{
    DesktopHelpers::restartExplorer();
}
