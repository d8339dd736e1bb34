#pragma once

#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"

/// The three long-lived objects of the program, made in this order, wired, and destroyed in the
/// reverse one: the dialog, which every arrival of a device needs, outlives the window that finds
/// the device. Only the tray icon is visible at first. GUI thread only.
class TopLevel
{
public:
    TopLevel();

private:
    Settings settings;
    MainWindow mainWindow;
    TrayIcon trayIcon;
};

/// Gives all windows of the application the program's icon, message boxes included.
void setApplicationIcon();
