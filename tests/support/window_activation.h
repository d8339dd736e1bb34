#pragma once

#include <QWidget>
#include <QWindow>

/// Asks for the window to be the active one, which the events to come bring about. The screenless
/// platform takes a window that was hidden and comes back for the active one still, so another one
/// has its turn before.
inline void requestActivation(QWidget& window)
{
    if (window.isActiveWindow() && window.windowHandle()->isActive())
        return;
    QWindow other;
    other.show();
    other.requestActivate();
    window.activateWindow();
}
