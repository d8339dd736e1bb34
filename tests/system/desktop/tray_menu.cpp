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
    if (!Desktop::click(icon.center(), Desktop::MouseButton::Right))
        return false;
    return waitUntil(
        [this] {
            const QImage now = pictureAbove();
            QThread::msleep(150);
            return now != closedPicture && now == pictureAbove();
        },
        10s);
}

bool TrayMenu::choose(TrayEntry entry)
{
    if (!reachWithKeyboard())
        return false;
    for (int i = 1; i < static_cast<int>(entry); ++i) {
        if (!Desktop::key(QStringLiteral("Up")))
            return false;
    }
    return Desktop::key(QStringLiteral("Return")) && waitUntilClosed();
}

bool TrayMenu::reachWithKeyboard() const
{
    // The keyboard may follow the menu a moment later than its picture: Up is repeated until the
    // lowest entry lights up.
    const QRect lowestEntries(icon.center().x() - 50, icon.top() - 110, 100, 110 + icon.height());
    const QImage unlit = Desktop::picture(lowestEntries);
    return waitUntil(
        [&] {
            return Desktop::key(QStringLiteral("Up")) &&
                   waitUntil([&] { return Desktop::picture(lowestEntries) != unlit; }, 2s);
        },
        10s);
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
