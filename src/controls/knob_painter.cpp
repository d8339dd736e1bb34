#include "controls/knob_painter.h"

#include "controls/knob.h"

#include <QConicalGradient>
#include <QPainter>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Angles in the painter's sixteenths of a degree, counted anticlockwise from three o'clock: the
// arcs run clockwise from the lower left over the top to the lower right.
constexpr int arcStart = 225 * 16;
constexpr int fullSpan = -270 * 16;

/// Truncated, and limited to the range of an int; 0 for a value that is no number.
int wholePixels(double value)
{
    constexpr double limit = std::numeric_limits<int>::max();
    return std::isnan(value) ? 0 : int(std::clamp(value, -limit, limit));
}

int valueSpan(const Knob& knob)
{
    const double above = double(knob.value) - knob.minimum;
    const double range = double(knob.maximum) - knob.minimum;
    return -wholePixels(above * 270.0 / range * 16.0);
}

/// The cap of a knob whose arc rectangle is `diameter` wide.
class Cap
{
public:
    Cap(QPainter& target, QPen& reusedPen, const Knob& knob, double arcDiameter)
        : painter(target)
        , pen(reusedPen)
        , diameter(arcDiameter)
        , side(knob.knobRatio * arcDiameter)
        , margin((1 - knob.knobRatio) * arcDiameter * 0.5)
        , inset(knob.arcWidth)
    {
        pen.setWidth(0);
    }

    void paint()
    {
        // Lit from the widget's upper left corner. The bevel lies a little lower and further
        // right than the cap above it, so that only a crescent of it shows.
        shade(0.6, 20);
        circle(0.02, 1.0);
        pen.setColor(Qt::transparent);
        painter.setPen(pen);
        painter.setBrush(QColor(Qt::transparent));
        circle(0.1, 0.8);
        shade(0.5, 30);
        circle(0.0, 1.0);
    }

private:
    void shade(double radius, int dark)
    {
        QRadialGradient gradient(0, 0, radius * diameter);
        gradient.setColorAt(0, Qt::white);
        gradient.setColorAt(1, QColor(dark, dark, dark));
        pen.setBrush(gradient);
        painter.setPen(pen);
        painter.setBrush(gradient);
    }

    void circle(double shift, double scale)
    {
        const int corner = wholePixels(std::trunc(margin + shift * side) + inset);
        const int size = wholePixels(scale * side);
        painter.drawEllipse(corner, corner, size, size);
    }

    QPainter& painter;
    QPen& pen;
    const double diameter;
    const double side;
    const double margin;
    const double inset;
};

} // namespace

void paintKnob(QPainter& painter, const Knob& knob)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(QFont(knob.fontFamily, knob.fontPointSize));
    painter.setPen(Qt::NoPen);

    QPen pen;
    pen.setWidth(knob.arcWidth);
    if (knob.roundCap)
        pen.setCapStyle(Qt::RoundCap);

    const double inset = knob.arcWidth;
    const QRectF arc(inset, inset, knob.width() - 2 * inset, knob.height() - 2 * inset);
    if (knob.showTrack) {
        pen.setColor(knob.trackColor);
        painter.setPen(pen);
        painter.drawArc(arc, arcStart, fullSpan);
    }

    const QPoint centre(knob.width() / 2, knob.height() / 2);
    QConicalGradient gradient(centre, 270);
    gradient.setColorAt(0, knob.arcColor);
    gradient.setColorAt(1, knob.arcColor);
    pen.setBrush(gradient);
    painter.setPen(pen);
    painter.drawArc(arc, arcStart, valueSpan(knob));

    Cap(painter, pen, knob, arc.width()).paint();
}

QRect paintKnobText(QPainter& painter, const Knob& knob)
{
    const QString text = knob.shownText();
    painter.setPen(knob.textColor);
    const QRect area(0, 0, knob.width(), knob.height());
    const QRect place = painter.fontMetrics().boundingRect(area, Qt::AlignCenter, text);
    painter.drawText(place, Qt::AlignCenter, text);
    return place;
}
