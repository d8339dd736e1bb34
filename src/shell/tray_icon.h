#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

class MainWindow;
class Settings;

/// The icon in the notification area with its menu: the way to the main window, the settings
/// dialog, the firmware upgrade and two desktop helpers, and the only way to quit. GUI thread
/// only.
class TrayIcon : public QSystemTrayIcon
{
    Q_OBJECT

public:
    explicit TrayIcon(QObject* parent = nullptr);
    ~TrayIcon() override;

    /// Neither window is owned. A null main window is not taken over.
    void setMainWindow(MainWindow* window);
    void setSettingsWindow(Settings* window);

    /// Shows the icon and, as long as the shell has not taken it, asks for it again, for two
    /// minutes at the most.
    void appear();

    /// Shows another icon, with a tool tip; a file that does not exist changes nothing.
    void setTrayIcon(const QString& path);

    void showMainWindow();
    /// Puts the device into firmware-upgrade mode at once, without a question.
    void upgradeFirmwareAction();

public slots:
    void showSettings();
    void clickCallback(QSystemTrayIcon::ActivationReason reason);
    void openSoundPannel();
    void refreshDeviceList();

private:
    void buildMenu();

    MainWindow* mainWindow = nullptr;
    Settings* settingsWindow = nullptr;
    QMenu menu;
};
