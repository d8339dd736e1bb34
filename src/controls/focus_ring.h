#pragma once

class QPainter;
class QWidget;

/// The mark of the control that the keyboard acts on.
namespace FocusRing {

/// Whether the widget wears the ring: it does wherever the focus is, which no mouse brings to it.
bool isDueOn(const QWidget& widget);

/// Paints the ring along the widget's edge, over what is there.
void paint(QPainter& painter, const QWidget& widget);

} // namespace FocusRing
