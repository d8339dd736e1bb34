#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// A window of some program on the display. The rectangle is the client area, in screen pixels.
struct DesktopWindow
{
    QString id;
    QRect area;
};

/// Hands and eyes of a user: real mouse and keyboard input on the X display that DISPLAY names,
/// and pictures of it. Needs the commands xdotool, xprop and xwininfo and a QGuiApplication on that
/// display. The functions that act return false when the command for it failed.
class Desktop
{
public:
    enum class MouseButton { Left = 1, Middle = 2, Right = 3 };

    /// Visible windows whose title matches the (extended, case-insensitive) regular expression;
    /// nothing when the display could not be asked.
    static std::optional<QList<DesktopWindow>> windows(const QString& titlePattern);

    /// The numbers of all visible windows of the panel, whatever their titles: menus, boxes and
    /// open lists as well; nothing when the display could not be asked.
    static std::optional<QStringList> panelWindows();

    /// The first such window; nothing when there is none or the display could not be asked.
    static std::optional<DesktopWindow> window(const QString& titlePattern);

    /// Whether there is none. False also when the display could not be asked.
    static bool hasNoWindow(const QString& titlePattern);

    /// The first such window, waited for until it is there and has the keyboard, which a window
    /// manager gives to every new window a moment after it is seen.
    static std::optional<DesktopWindow> waitForWindow(const QString& titlePattern);

    /// Waits until no such window is visible.
    static bool waitForNoWindow(const QString& titlePattern);

    /// The icons in the notification area, in screen pixels; nothing when the display could not be
    /// asked.
    static std::optional<QList<QRect>> trayIcons();

    /// The first icon, waited for.
    static std::optional<QRect> waitForTrayIcon();

    /// Ends the program that holds the notification area, which takes all icons with it; the
    /// display starts it anew.
    static bool restartNotificationArea();

    /// Comes at least half a second after the last one, so that two clicks never become a double
    /// click.
    static bool click(QPoint place, MouseButton button = MouseButton::Left);
    /// Clicks at once. This is the second click of a double click when the first was not longer
    /// ago than the program takes for one.
    static bool clickAgain(QPoint place);
    static bool controlClick(QPoint place);
    static bool doubleClick(QPoint place);
    /// Turns the wheel over the place: notches above 0 away from the user.
    static bool wheel(QPoint place, int notches);
    /// Moves the pointer with the left button held, pixel by pixel. `taken` tells after each that
    /// the program has noticed it, lest two moves become one; false ends the drag.
    static bool drag(QPoint from, QPoint to, const std::function<bool()>& taken);
    /// Presses and releases a key, named as in X ("Return", "alt+F4").
    static bool key(const QString& name);
    static bool type(const QString& text);
    /// Puts the window in front and gives it the keyboard.
    static bool activate(const DesktopWindow& window);
    static bool minimise(const DesktopWindow& window);
    static bool isMinimised(const DesktopWindow& window);

    /// What is on the screen.
    static QImage picture(QRect area);
};
