#pragma once

#include <QImage>
#include <QRect>

/// The entries of the panel's tray menu that can be chosen, counted from its lower end, which is
/// where the Up key starts.
enum class TrayEntry {
    SoundPanel = 1,
    RefreshAudioDevice,
    UpgradeFirmware,
    MainWindow,
    Setup,
    Quit,
};

/// The context menu of the icon in the notification area.
class TrayMenu
{
public:
    /// Opens the menu with a right click on the icon and waits until it stands still. A window
    /// that gets the keyboard takes the menu away, so wait for the window first; under Wine, where
    /// nothing tells that it has got it, another click is tried.
    bool open();

    /// Chooses an entry of the open menu with the arrow keys and waits until the menu is gone.
    /// False when it went before.
    bool choose(TrayEntry entry);

    /// Closes the open menu without choosing anything.
    bool close();

private:
    QImage pictureAbove() const;
    /// Whether the menu is in the picture.
    bool shows(const QImage& now) const;
    bool isOpen() const;
    bool waitUntilClosed() const;

    QRect icon;
    QImage closedPicture;
};

/// Opens the menu and chooses the entry.
bool chooseFromTrayMenu(TrayEntry entry);
