#include "system/desktop/tray_menu.h"

#include "system/desktop/desktop.h"
#include "system/desktop/wait_until.h"

bool TrayMenu::open()
{
    const auto area = Desktop::waitForTrayIcon();
    if (!area)
        return false;
    icon = *area;
    closedPicture = pictureAbove();
    return Desktop::click(icon.center(), Desktop::MouseButton::Right) && waitUntilOpen();
}

bool TrayMenu::waitUntilOpen() const
{
    return waitUntil([this] {
        const QImage now = pictureAbove();
        QThread::msleep(150);
        return now != closedPicture && now == pictureAbove();
    });
}

bool TrayMenu::choose(TrayEntry entry)
{
    for (int i = 0; i < static_cast<int>(entry); ++i) {
        if (!Desktop::key(QStringLiteral("Up")))
            return false;
    }
    return Desktop::key(QStringLiteral("Return")) && waitUntilClosed();
}

bool TrayMenu::close()
{
    return Desktop::key(QStringLiteral("Escape")) && waitUntilClosed();
}

QImage TrayMenu::pictureAbove() const
{
    // The menu opens over this part of the screen, far from where windows are placed.
    return Desktop::picture(QRect(icon.center().x() - 50, icon.top() - 110, 100, 100));
}

bool TrayMenu::waitUntilClosed() const
{
    return waitUntil([this] { return pictureAbove() == closedPicture; });
}

bool chooseFromTrayMenu(TrayEntry entry)
{
    TrayMenu menu;
    return menu.open() && menu.choose(entry);
}
