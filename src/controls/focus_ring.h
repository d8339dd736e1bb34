#pragma once

class QPainter;
class QWidget;

/// The mark of the control that the keyboard acts on.
namespace FocusRing {

/// Whether the widget has the focus and its window's user has used the keyboard since it was
/// shown: a mouse alone never brings the ring up.
bool isDueOn(const QWidget& widget);

/// From now on the ring is due in the widget's window.
void bringUp(QWidget& widget);

/// Paints the ring along the widget's edge, over what is there.
void paint(QPainter& painter, const QWidget& widget);

} // namespace FocusRing
