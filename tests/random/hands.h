#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>

#include <vector>

/// A user's hands on a window that is shown: real events through the window system's door, which
/// finds out itself what they hit.
namespace Hands {

/// A user's window is the active one before it is touched.
void activate(QWidget& window);

void click(QWidget& target, QPoint position);
void doubleClick(QWidget& target, QPoint position);
/// Pressed at the first position, moved to the others, released there.
void drag(QWidget& target, const std::vector<QPoint>& positions, Qt::KeyboardModifiers modifiers);
void wheel(QWidget& target, QPoint position, QPoint angleDelta);

/// Keys go to whatever has the focus in the window.
void type(QWidget& window, const QString& text);
void key(QWidget& window, Qt::Key key);

} // namespace Hands
