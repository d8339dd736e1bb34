#pragma once

#include "shell/kept_connections.h"

#include <QMainWindow>

#include <cstdint>
#include <memory>

class DriverDevice;
class QLabel;
class QTimer;
class QVBoxLayout;
class Settings;
struct DeviceModel;

/// The one top-level window: finds out which interface is attached, shows that model's panel,
/// and removes it when the device stops answering. Starts hidden; the tray icon shows it. GUI
/// thread only.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Looks for a device and builds its panel; runs every second while there is none.
    void detectDevice();
    /// Watches the device while its panel is shown; the third failed read in a row removes it.
    void checkDevicePid();

    /// The settings dialog, which is connected and refreshed with each arrival. Not owned; must be
    /// set before the event loop runs.
    Settings* settings = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showStatus(const QString& text);
    void clearLayout();
    void watchDevice();
    void showPanel(const DeviceModel& model);
    void setFirmwareTitle(const DeviceModel& model, const std::uint8_t* version);

    std::uint32_t devicePid = 0;
    QVBoxLayout* baseLayout = nullptr;
    QTimer* detectTimer = nullptr;
    QTimer* pidTimer = nullptr;
    std::unique_ptr<DriverDevice> meterDevice;
    QLabel* statusLabel = nullptr;
    std::uint32_t errorCount = 0;
    KeptConnections unreleasedDevices; ///< of arrivals that did not get as far as a titled panel
};
