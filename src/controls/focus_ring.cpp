#include "controls/focus_ring.h"

#include <QPainter>
#include <QWidget>

bool FocusRing::isDueOn(const QWidget& widget)
{
    return widget.hasFocus();
}

void FocusRing::paint(QPainter& painter, const QWidget& widget)
{
    // A low button has no room for more between its text and its edge.
    constexpr int lowHeight = 24;
    const qreal width = widget.height() < lowHeight ? 1 : 2;
    const qreal inset = width / 2;
    constexpr qreal radius = 4;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(widget.rect()).adjusted(inset, inset, -inset, -inset), radius,
                            radius);
}
