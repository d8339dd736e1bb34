#include "system/soak/random_user.h"

#include "system/desktop/panel_session.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <cstdio>

using namespace std::chrono_literals;

namespace {

const QString panelTitle = QStringLiteral("^Quorvel ");
const QString dialogTitle = QStringLiteral("^Settings$");
// Whatever else the panel shows, such as its boxes with a warning.
const QString boxTitle = QStringLiteral("^错误$");

void xdotool(const QStringList& words)
{
    askTool(QStringLiteral("xdotool"), words);
}

void close(const DesktopWindow& window)
{
    // One that cannot get the keyboard is not waited for.
    xdotool({QStringLiteral("windowactivate"), window.id, QStringLiteral("sleep"),
             QStringLiteral("0.1"), QStringLiteral("key"), QStringLiteral("alt+F4")});
}

QStringList moveTo(QPoint place)
{
    return {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
}

} // namespace

void RandomUser::act()
{
    // To look takes longer than to act. What has gone since is missed, as by a real user.
    if (random.chance(25)) {
        panel = Desktop::window(panelTitle);
        dialog = Desktop::window(dialogTitle);
    }
    const int way = random.below(100);
    if (way < 55 && panel)
        return onPanel(*panel);
    if (way < 80 && dialog)
        return onDialog(*dialog);
    if (way < 96)
        return onIcon();
    pressKey();
}

void RandomUser::onPanel(const DesktopWindow& window)
{
    if (random.chance(3)) {
        close(window);
        return;
    }
    if (random.chance(2)) {
        Desktop::minimise(window);
        return;
    }
    // The panel may have become another one since.
    if (window.area != knownArea || random.chance(10)) {
        const QImage picture = PanelSession::pictureOf(window);
        knobs = knobsIn(picture);
        buttons.clear();
        for (const QRect& button : buttonsIn(picture))
            buttons.append(button.center());
        knownArea = window.area;
    }
    if (!buttons.isEmpty() && random.chance(35)) {
        const QPoint place =
            window.area.topLeft() + buttons.at(random.below(static_cast<int>(buttons.size())));
        if (random.chance(80))
            Desktop::clickAgain(place);
        else
            Desktop::doubleClick(place);
        return;
    }
    onKnob(target(window));
}

QPoint RandomUser::target(const DesktopWindow& window)
{
    if (knobs.isEmpty() || random.chance(15))
        return anyPlace(window.area);
    return window.area.topLeft() + knobs.at(random.below(static_cast<int>(knobs.size())));
}

void RandomUser::onKnob(QPoint place)
{
    const int way = random.below(100);
    if (way < 45) {
        wheel(place, 6);
    } else if (way < 65) {
        drag(place, place + QPoint(random.below(61) - 30, random.below(61) - 30));
    } else if (way < 75) {
        xdotool(QStringList{QStringLiteral("keydown"), QStringLiteral("ctrl")}
                << moveTo(place) << QStringLiteral("click") << QStringLiteral("1")
                << QStringLiteral("keyup") << QStringLiteral("ctrl"));
    } else {
        Desktop::doubleClick(place);
        // Without an end the editor stays open for what comes next.
        if (random.chance(80))
            xdotool({QStringLiteral("type"), QStringLiteral("--"), anyText()});
        if (random.chance(80))
            Desktop::key(random.oneOf({"Return", "Return", "Escape", "Tab"}));
    }
}

void RandomUser::onDialog(const DesktopWindow& window)
{
    const int way = random.below(100);
    const QRect area = window.area;
    const QPoint inMiddle(area.center().x(), area.top() + random.below(area.height()));
    if (way < 55)
        wheel(inMiddle, 3);
    else if (way < 70)
        Desktop::clickAgain(inMiddle);
    else if (way < 80)
        Desktop::key(random.oneOf({"Up", "Down", "Home", "End", "Return", "space"}));
    else if (way < 90)
        Desktop::key(random.oneOf({"Escape", "Tab", "Return"}));
    else if (way < 96) {
        close(window);
    } else {
        Desktop::minimise(window);
    }
}

void RandomUser::onIcon()
{
    const auto icons = Desktop::trayIcons();
    if (!icons || icons->isEmpty())
        return;
    const QPoint icon = icons->first().center();
    const int way = random.below(100);
    if (way < 55) {
        Desktop::clickAgain(icon);
        return;
    }
    if (way < 65) {
        Desktop::doubleClick(icon);
        return;
    }
    // The menu, up to an entry that ends nothing, or left again.
    xdotool(moveTo(icon) << QStringLiteral("click") << QStringLiteral("3"));
    QThread::msleep(Target::isWindows() ? 1000 : 200);
    QStringList keys{QStringLiteral("key")};
    const int entry = way < 75   ? static_cast<int>(TrayEntry::MainWindow)
                      : way < 92 ? static_cast<int>(TrayEntry::Setup)
                                 : static_cast<int>(TrayEntry::UpgradeFirmware);
    for (int i = 0; i < entry; ++i)
        keys.append(QStringLiteral("Up"));
    xdotool(keys << (random.chance(85) ? QStringLiteral("Return") : QStringLiteral("Escape")));
}

void RandomUser::pressKey()
{
    Desktop::key(random.oneOf({"Tab", "Return", "Escape", "Up", "Down", "space", "5", "minus"}));
}

void RandomUser::wheel(QPoint place, int mostNotches)
{
    xdotool(moveTo(place) << QStringLiteral("click") << QStringLiteral("--repeat")
                          << QString::number(1 + random.below(mostNotches))
                          << QStringLiteral("--delay") << QStringLiteral("5")
                          << random.oneOf({"4", "5"}));
}

void RandomUser::drag(QPoint from, QPoint to)
{
    QStringList words = moveTo(from) << QStringLiteral("mousedown") << QStringLiteral("1");
    for (int i = 1; i <= 10; ++i)
        words += moveTo(from + (to - from) * i / 10);
    xdotool(words << QStringLiteral("mouseup") << QStringLiteral("1"));
}

QPoint RandomUser::anyPlace(const QRect& area)
{
    return area.topLeft() +
           QPoint(random.below(qMax(1, area.width())), random.below(qMax(1, area.height())));
}

QString RandomUser::anyText()
{
    if (random.chance(60))
        return QString::number(random.below(120) - 90);
    return random.oneOf({"999", "-999", "x", "12dB", "2147483648", "1.5", "-", "00007"});
}

bool RandomUser::closeEverything()
{
    // A menu or a list that is open takes the keys first. A window that the window manager takes
    // for active may still lack the keyboard under Wine, until a click into it, which at its corner
    // changes nothing.
    const auto put = [](const QString& title) {
        int looks = 0;
        const bool gone = waitUntil(
            [&] {
                const auto window = Desktop::window(title);
                if (!window)
                    return Desktop::hasNoWindow(title);
                Desktop::key(QStringLiteral("Escape"));
                if (++looks % 5 != 0)
                    close(*window);
                else
                    Desktop::clickAgain(window->area.bottomLeft() + QPoint(3, -3));
                return waitUntil([&] { return Desktop::hasNoWindow(title); }, 500ms);
            },
            patience);
        if (!gone)
            std::printf("a window stays: %s\n", qPrintable(title));
        return gone;
    };
    panel.reset();
    dialog.reset();
    // A click that was cut off may have left one down.
    xdotool({QStringLiteral("keyup"), QStringLiteral("ctrl"), QStringLiteral("keyup"),
             QStringLiteral("alt"), QStringLiteral("mouseup"), QStringLiteral("1")});
    Desktop::key(QStringLiteral("Escape"));
    return put(boxTitle) && put(dialogTitle) && put(panelTitle);
}
