#pragma once

#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"
#include "support/simulated_interface.h"

#include <QString>

#include <memory>

/// The program's real windows on a simulated interface whose levels stand still, painted into
/// files of one folder. One instance at a time.
class PictureSession
{
public:
    /// The pictures go to this folder, which is made when there is none.
    explicit PictureSession(const QString& folder);

    /// A model's panel in the main window, with some of its controls in use.
    void panel(std::uint32_t productId, const char* file);
    /// The main window with a panel in a frame, which is not that of a real desktop.
    void framedWindow();
    /// The main window without a panel, and with a panel that has a status line below it.
    void status();
    void settingsDialog();
    void trayMenu();

    /// Whether every picture was written.
    bool complete() const { return allSaved; }

private:
    /// A window that has found nothing yet.
    void openWindow();
    void plug(std::uint32_t productId);
    void stopClocks();
    void save(QWidget& window, const QString& name);

    QString folder;
    bool allSaved = true;
    SimulatedInterface simulated;
    Settings settings;
    TrayIcon tray;
    std::unique_ptr<MainWindow> window;
};
