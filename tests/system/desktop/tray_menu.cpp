#include "system/desktop/tray_menu.h"

#include "system/desktop/desktop.h"
#include "system/desktop/wait_until.h"

using namespace std::chrono_literals;

bool TrayMenu::open()
{
    const auto area = Desktop::waitForTrayIcon();
    if (!area)
        return false;
    icon = *area;
    closedPicture = pictureAbove();
    // A window that was just shown takes the keyboard, and with it the menu away.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (!Desktop::click(icon.center(), Desktop::MouseButton::Right))
            return false;
        if (waitUntilOpen())
            return true;
    }
    return false;
}

bool TrayMenu::waitUntilOpen() const
{
    return waitUntil(
        [this] {
            const QImage now = pictureAbove();
            QThread::msleep(150);
            return now != closedPicture && now == pictureAbove();
        },
        5s);
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
    return waitUntil([this] { return pictureAbove() == closedPicture; }, 10s);
}

bool chooseFromTrayMenu(TrayEntry entry)
{
    TrayMenu menu;
    return menu.open() && menu.choose(entry);
}
