#include "system/desktop/tray_menu.h"

#include "system/desktop/desktop.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

namespace {

/// Of the picture above the icon. The menu hides more of it, and the icon's tool tip, which comes
/// and goes as it likes, less.
constexpr double shareOfMenu = 0.35;

/// How much of the two pictures differs, from 0 to 1.
double difference(const QImage& one, const QImage& other)
{
    if (one.size() != other.size() || one.isNull())
        return 1;
    int different = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            different += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
    }
    return double(different) / (one.width() * one.height());
}

} // namespace

bool TrayMenu::open()
{
    const auto area = Desktop::waitForTrayIcon();
    if (!area)
        return false;
    icon = *area;
    closedPicture = pictureAbove();
    return Target::actUntil(
        [this] { return Desktop::click(icon.center(), Desktop::MouseButton::Right); },
        [this] { return isOpen(); });
}

bool TrayMenu::isOpen() const
{
    const QImage now = pictureAbove();
    QThread::msleep(150);
    return shows(now) && now == pictureAbove();
}

bool TrayMenu::choose(TrayEntry entry)
{
    for (int i = 0; i < static_cast<int>(entry); ++i) {
        if (!Desktop::key(QStringLiteral("Up")))
            return false;
    }
    return shows(pictureAbove()) && Desktop::key(QStringLiteral("Return")) && waitUntilClosed();
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

bool TrayMenu::shows(const QImage& now) const
{
    return difference(now, closedPicture) > shareOfMenu;
}

bool TrayMenu::waitUntilClosed() const
{
    return waitUntil([this] { return !shows(pictureAbove()); });
}

bool chooseFromTrayMenu(TrayEntry entry)
{
    for (int i = 0; i < Target::tries(); ++i) {
        TrayMenu menu;
        if (!menu.open())
            return false;
        if (menu.choose(entry))
            return true;
    }
    return false;
}
