#include "controls/knob_painter.h"

#include "controls/knob.h"

#include <QImage>
#include <QPainter>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

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

QRectF arcRectangle(const Knob& knob)
{
    const double inset = knob.arcWidth;
    return {inset, inset, knob.width() - 2 * inset, knob.height() - 2 * inset};
}

void paintArc(QPainter& painter, const Knob& knob, const QBrush& brush, int span)
{
    const Qt::PenCapStyle end = knob.roundCap ? Qt::RoundCap : Qt::SquareCap;
    painter.setPen(QPen(brush, knob.arcWidth, Qt::SolidLine, end));
    painter.drawArc(arcRectangle(knob), arcStart, span);
}

void paintTrack(QPainter& painter, const Knob& knob)
{
    if (knob.showTrack)
        paintArc(painter, knob, knob.trackColor, fullSpan);
}

/// The light falls from the widget's upper left corner. The bevel lies a little lower and further
/// right than the face above it, so that only a crescent of it shows.
void paintCap(QPainter& painter, const Knob& knob)
{
    const double diameter = arcRectangle(knob).width();
    const double side = knob.knobRatio * diameter;
    const double margin = (1 - knob.knobRatio) * diameter * 0.5;
    const auto shade = [diameter](double radius, int dark) {
        QRadialGradient gradient(0, 0, radius * diameter);
        gradient.setColorAt(0, Qt::white);
        gradient.setColorAt(1, QColor(dark, dark, dark));
        return gradient;
    };
    const auto circle = [&](const QBrush& brush, double shift, double scale) {
        const int corner = wholePixels(std::trunc(margin + shift * side) + knob.arcWidth);
        const int size = wholePixels(scale * side);
        painter.setPen(QPen(brush, 0));
        painter.setBrush(brush);
        painter.drawEllipse(corner, corner, size, size);
    };
    circle(shade(0.6, 20), 0.02, 1.0);
    circle(Qt::transparent, 0.1, 0.8); // part of the look, though it leaves no mark
    circle(shade(0.5, 30), 0.0, 1.0);
}

using Shape = void(QPainter&, const Knob&);

/// One of the knob's shapes alone; `toPixels` leads from the knob to the picture.
QPixmap pictureOf(Shape shape, const Knob& knob, QSize pixels, const QTransform& toPixels)
{
    // Smooth edges lie one over the other: with 16 bits a channel their rounding does not add up.
    QImage image(pixels, QImage::Format_RGBA64_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setTransform(toPixels);
    painter.setRenderHint(QPainter::Antialiasing);
    shape(painter, knob);
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

} // namespace

void KnobPainter::paint(QPainter& painter, const Knob& knob)
{
    const QTransform device = painter.deviceTransform();
    const QRect place = device.mapRect(QRectF(knob.rect())).toAlignedRect();
    const QTransform toPixels = device * QTransform::fromTranslate(-place.x(), -place.y());
    const Look look{knob.size(),    toPixels,        knob.arcWidth, knob.roundCap,
                    knob.showTrack, knob.trackColor, knob.knobRatio};
    if (look != kept) {
        track = pictureOf(paintTrack, knob, place.size(), toPixels);
        cap = pictureOf(paintCap, knob, place.size(), toPixels);
        kept = look;
    }
    const auto show = [&](const QPixmap& picture) {
        painter.save();
        painter.setTransform(toPixels.inverted(), true);
        painter.drawPixmap(0, 0, picture);
        painter.restore();
    };
    painter.setRenderHint(QPainter::Antialiasing);
    show(track);
    paintArc(painter, knob, knob.arcColor, valueSpan(knob));
    show(cap);
}

QRect paintKnobText(QPainter& painter, const Knob& knob)
{
    const QString text = knob.shownText(knob.value);
    painter.setFont(QFont(knob.fontFamily, knob.fontPointSize));
    painter.setPen(knob.textColor);
    const QRect area(0, 0, knob.width(), knob.height());
    const QRect place = painter.fontMetrics().boundingRect(area, Qt::AlignCenter, text);
    painter.drawText(place, Qt::AlignCenter, text);
    return place;
}
