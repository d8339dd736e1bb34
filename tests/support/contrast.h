#pragma once

#include <QImage>
#include <QRect>

class QWidget;

/// Contrast as the Web Content Accessibility Guidelines define it: from 1, for equal colours, to
/// 21, for black on white.
namespace Contrast {

double between(QRgb one, QRgb other);

/// The widget's window, painted so large that each stroke of a letter shows its full colour.
QImage enlarged(QWidget& widget);

/// The contrast of the text in a part of the widget to what lies behind it: of the colour that
/// stands out most to the one that covers most. The picture is that of its window.
double ofText(const QImage& picture, const QWidget& widget, const QRect& part);

} // namespace Contrast
