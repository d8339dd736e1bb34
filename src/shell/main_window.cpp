#include "shell/main_window.h"

#include "controls/keyboard_policy.h"
#include "controls/window_placement.h"
#include "driver/driver_device.h"
#include "panels/ka1.h"
#include "panels/ka2.h"
#include "panels/ks.h"
#include "settings/settings.h"

#include <QCloseEvent>
#include <QDebug>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

/// What the window knows of a model.
struct DeviceModel
{
    std::uint32_t productId;
    const char* title;
    const char* added; ///< debug line when the panel is in the window
    QWidget* (*makePanel)();
};

namespace {

constexpr int detectInterval = 1000;
constexpr int watchInterval = 400;
constexpr std::uint32_t toleratedErrors = 2;
constexpr std::size_t firmwareLength = 10;

template <typename Model> QWidget* makePanel()
{
    return new Model;
}

constexpr std::array deviceModels{
    DeviceModel{1, "Quorvel KA1 - FW: %1%2%3%4%5%6%7%8%9%10", "Adding ka1 widget to layout.",
                makePanel<ka1>},
    DeviceModel{2, "Quorvel KA2 - FW: %1%2%3%4%5%6%7%8%9%10", "Adding ka2 widget to layout.",
                makePanel<ka2>},
    DeviceModel{15, "Quorvel KS - FW: %1%2%3%4%5%6%7%8%9%10", "Adding ks widget to layout.",
                makePanel<ks>},
};

const DeviceModel* findModel(std::uint32_t productId)
{
    const auto found = std::find_if(
        deviceModels.begin(), deviceModels.end(),
        [productId](const DeviceModel& model) { return model.productId == productId; });
    return found == deviceModels.end() ? nullptr : &*found;
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    auto* central = new QWidget(this);
    setCentralWidget(central);
    setWindowFlags(Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    KeyboardPolicy::holdWindow(*this);

    detectTimer = new QTimer(this);
    connect(detectTimer, &QTimer::timeout, this, &MainWindow::detectDevice);
    detectTimer->start(detectInterval);
    pidTimer = new QTimer(this);
    connect(pidTimer, &QTimer::timeout, this, &MainWindow::checkDevicePid);
    pidTimer->setInterval(watchInterval);

    setWindowTitle(QStringLiteral("Quorvel Driver"));
    setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
    setAttribute(Qt::WA_DeleteOnClose, true);
    const QPixmap icon(QStringLiteral(":/icon/icon.png"));
    if (!icon.isNull())
        setWindowIcon(QIcon(icon));

    baseLayout = new QVBoxLayout(central);
    baseLayout->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    showStatus(QStringLiteral("声卡未连接！"));
    new WindowPlacement(*this);
}

MainWindow::~MainWindow() = default;

void MainWindow::showStatus(const QString& text)
{
    statusLabel = new QLabel(text, this);
    statusLabel->setAlignment(Qt::AlignCenter);
    statusLabel->setStyleSheet(QStringLiteral("font-size: 12px; color: white;"));
    baseLayout->addWidget(statusLabel);
}

void MainWindow::clearLayout()
{
    while (QLayoutItem* item = baseLayout->takeAt(0)) {
        if (QWidget* widget = item->widget())
            widget->deleteLater();
        delete item;
    }
}

void MainWindow::watchDevice()
{
    // A connection held from an earlier attempt is not released with the change.
    if (meterDevice)
        unreleasedDevices.keep(std::move(meterDevice));
    meterDevice = std::make_unique<DriverDevice>();
    meterDevice->open();
    pidTimer->start();
}

void MainWindow::detectDevice()
{
    auto device = std::make_unique<DriverDevice>();
    device->open();
    device->getDevicePid(devicePid);
    qDebug() << "Device PID:" << devicePid;
    if (devicePid == 0)
        return;

    clearLayout();
    const DeviceModel* model = findModel(devicePid);
    if (model == nullptr) {
        qDebug() << "Unknown device PID:" << devicePid;
        showStatus(QStringLiteral("未知设备，请检查连接！"));
        unreleasedDevices.keep(std::move(device));
        return;
    }
    if (!settings->connectDevice()) {
        qDebug() << "Failed to connect to driver in settings window.";
        watchDevice();
        unreleasedDevices.keep(std::move(device));
        return;
    }
    settings->refreshFromDevice();
    showPanel(*model);

    std::array<std::uint8_t, firmwareLength> version{};
    if (!device->getFirmwareVersion(version.data(), firmwareLength)) {
        qDebug() << "Failed to get firmware version.";
        showStatus(QStringLiteral("获取固件版本失败，请检查连接！"));
        unreleasedDevices.keep(std::move(device));
        return;
    }
    setFirmwareTitle(*model, version.data());
    qDebug() << "Device found with PID:" << devicePid;
    detectTimer->stop();
    watchDevice();
}

void MainWindow::showPanel(const DeviceModel& model)
{
    QWidget* panel = model.makePanel();
    panel->setParent(this);
    baseLayout->addWidget(panel);
    qDebug() << model.added;
    update();
}

void MainWindow::setFirmwareTitle(const DeviceModel& model, const std::uint8_t* version)
{
    QString title = QLatin1String(model.title);
    for (std::size_t k = 0; k < firmwareLength; ++k)
        title = title.arg(QChar(version[k]));
    setWindowTitle(title);
}

void MainWindow::checkDevicePid()
{
    if (meterDevice->getDevicePid(devicePid)) {
        errorCount = 0;
        return;
    }
    ++errorCount;
    qDebug() << "Error reading device PID from driver, error count:" << errorCount;
    if (errorCount <= toleratedErrors)
        return;
    pidTimer->stop();
    meterDevice.reset();
    qDebug() << "Meter driver handle deleted.";
    devicePid = 0;
    settings->reinitPending = true;
    clearLayout();
    qDebug() << "Cleared all widgets from base layout.";
    detectTimer->start();
    showStatus(tr("声卡未连接！"));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        hide();
        event->ignore();
        return;
    }
    // The window belongs to the entry routine, which destroys it: a close that goes through must
    // not delete it as well.
    setAttribute(Qt::WA_DeleteOnClose, false);
}
