#include "controls/window_placement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QTimerEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace {

/// Milliseconds after which a size is no passing one: the system reports sizes late, and on the way
/// to a screen of another scale some that nobody asked for.
constexpr int settleTime = 100;

bool fillsScreen(const QWidget& window)
{
    return window.isMaximized() || window.isFullScreen();
}

} // namespace

WindowPlacement::WindowPlacement(QWidget& placed)
    : QObject(&placed)
    , window(placed)
{
    // Or the toolkit would fit the window as well when it is shown, whatever size the user gave it.
    window.setAttribute(Qt::WA_Resized);
    window.installEventFilter(this);
}

bool WindowPlacement::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Show: // Not on the screen yet.
        if (!event->spontaneous() && !fillsScreen(window))
            fit();
        break;
    case QEvent::ShowToParent: // The system and QDialog have chosen its place.
        bringIntoSight();
        break;
    case QEvent::Resize:
        if (!event->spontaneous()) {
            programSize = window.size();
            if (window.testAttribute(Qt::WA_Mapped))
                bringIntoSight();
        }
        settling.start(settleTime, this);
        break;
    case QEvent::LayoutRequest:
        if (!settling.isActive())
            settling.start(settleTime, this);
        break;
    default:
        break;
    }
    return false;
}

void WindowPlacement::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != settling.timerId())
        return;
    settling.stop();
    if (!programSize.isValid() || fillsScreen(window))
        return;
    if (window.size() != programSize)
        userSize = programSize = window.size();
    else if (window.isVisible())
        fit();
}

/// What there is for windows on the window's screen, or on the main one where it is on none.
QRect WindowPlacement::sight() const
{
    const QScreen* screen =
        QGuiApplication::screenAt(window.windowHandle()->frameGeometry().center());
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    return screen->availableGeometry();
}

void WindowPlacement::fit()
{
    if (userSize.isValid())
        window.resize(
            userSize.boundedTo(sight().size().shrunkBy(window.windowHandle()->frameMargins())));
    else
        window.adjustSize();
}

void WindowPlacement::bringIntoSight()
{
    if (fillsScreen(window))
        return;
    const QRect frame = window.windowHandle()->frameGeometry();
    const QRect screen = sight();
    // What is larger than the screen keeps its title bar and its left edge.
    const QPoint place(
        std::max(screen.left(), std::min(frame.left(), screen.right() - frame.width() + 1)),
        std::max(screen.top(), std::min(frame.top(), screen.bottom() - frame.height() + 1)));
    if (place != frame.topLeft())
        window.move(place);
}
