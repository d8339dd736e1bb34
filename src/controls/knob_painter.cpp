#include "controls/knob_painter.h"

#include "controls/kept_picture.h"
#include "controls/knob.h"

#include <QConicalGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Angles in the painter's sixteenths of a degree, counted anticlockwise from three o'clock: the
// arcs run clockwise from the lower left over the top to the lower right.
constexpr int arcStart = 225 * 16;
constexpr int fullSpan = -270 * 16;
constexpr int quarter = 90 * 16;
constexpr int shortWay = 30 * 16; ///< the longest that is not painted as a whole

/// Pixels around a shape that smoothing may touch.
constexpr int edge = 1;
constexpr int room = 3; ///< around a text, for wider figures

/// Truncated, and limited to the range of an int; 0 for a value that is no number.
int wholePixels(double value)
{
    constexpr double limit = std::numeric_limits<int>::max();
    return std::isnan(value) ? 0 : int(std::clamp(value, -limit, limit));
}

/// Whether a widget's pixel is a whole number of the screen's. Where it is not, a region painted in
/// ends up to a pixel of the screen beside its edge, and one to clip with has soft edges.
bool hasWholePixels(double pixelRatio)
{
    return pixelRatio == std::floor(pixelRatio);
}

int valueSpan(const Knob& knob, int value)
{
    const double above = double(value) - knob.minimum;
    const double range = double(knob.maximum) - knob.minimum;
    return -wholePixels(above * 270.0 / range * 16.0);
}

QRectF arcRectangle(const Knob& knob)
{
    const double inset = knob.arcWidth;
    return {inset, inset, knob.width() - 2 * inset, knob.height() - 2 * inset};
}

/// The largest square that no arc reaches into; null where the arcs are no part of a circle.
QRect core(const Knob& knob)
{
    const double free = arcRectangle(knob).width() / 2 - knob.arcWidth / 2.0 - edge;
    const int half = wholePixels(free / std::sqrt(2.0));
    if (knob.width() != knob.height() || half <= 0)
        return {};
    const int corner = knob.width() / 2 - half;
    return {corner, corner, 2 * half, 2 * half};
}

/// The cap of a knob, lit from the widget's upper left corner.
class Cap
{
public:
    explicit Cap(const Knob& knob)
        : diameter(arcRectangle(knob).width())
        , side(knob.knobRatio * diameter)
        , margin((1 - knob.knobRatio) * diameter * 0.5)
        , inset(knob.arcWidth)
    {
    }

    /// Whether all that shows of the knob in the area is the cap's face.
    bool covers(const QRect& area) const
    {
        const QRect face = square(0.0, 1.0);
        const double radius = face.width() / 2.0;
        const double centre = face.x() + radius;
        const auto farthest = [centre](int low, int high) {
            return std::max(centre - low, high + 1 - centre);
        };
        return std::hypot(farthest(area.left(), area.right()),
                          farthest(area.top(), area.bottom())) < radius - edge;
    }

    /// Whether any of the cap shows in the area.
    bool reaches(const QRect& area) const
    {
        const auto circleReaches = [&area](const QRect& around) {
            const double radius = around.width() / 2.0;
            const double centre = around.x() + radius;
            const auto nearest = [centre](int low, int high) {
                return std::max({low - centre, centre - (high + 1), 0.0});
            };
            return std::hypot(nearest(area.left(), area.right()),
                              nearest(area.top(), area.bottom())) < radius + edge;
        };
        return circleReaches(square(0.02, 1.0)) || circleReaches(square(0.0, 1.0));
    }

    /// The face where it covers everything.
    void paintFace(QPainter& painter) const
    {
        const QRect face = square(0.0, 1.0);
        drawKept(painter, PictureLook("face") << diameter << side, face,
                 [this, face](QPainter& target) {
                     target.setPen(Qt::NoPen);
                     target.setBrush(shade(0.5, 30));
                     target.drawEllipse(face);
                 });
    }

    void paint(QPainter& painter) const
    {
        // The bevel lies a little lower and further right than the face above it, so that only a
        // crescent of it shows.
        paintCircle(painter, square(0.02, 1.0), shade(0.6, 20));
        paintCircle(painter, square(0.0, 1.0), shade(0.5, 30));
    }

private:
    QRadialGradient shade(double radius, int dark) const
    {
        QRadialGradient gradient(0, 0, radius * diameter);
        gradient.setColorAt(0, Qt::white);
        gradient.setColorAt(1, QColor(dark, dark, dark));
        return gradient;
    }

    QRect square(double shift, double scale) const
    {
        const int corner = wholePixels(std::trunc(margin + shift * side) + inset);
        const int size = wholePixels(scale * side);
        return {corner, corner, size, size};
    }

    static void paintCircle(QPainter& painter, const QRect& square, const QBrush& brush)
    {
        painter.setPen(QPen(brush, 0, Qt::SolidLine, Qt::RoundCap));
        painter.setBrush(brush);
        painter.drawEllipse(square);
    }

    const double diameter;
    const double side;
    const double margin;
    const double inset;
};

void paintTrack(QPainter& painter, QPen pen, const Knob& knob)
{
    pen.setColor(knob.trackColor);
    PictureLook look("track");
    look << knob.arcWidth << int(knob.roundCap) << quint64(knob.trackColor.rgba64());
    drawKept(painter, look, knob.rect(), [&](QPainter& target) {
        target.setPen(pen);
        target.drawArc(arcRectangle(knob), arcStart, fullSpan);
    });
}

void paintValue(QPainter& painter, QPen pen, const Knob& knob)
{
    QConicalGradient gradient(QPoint(knob.width() / 2, knob.height() / 2), 270);
    gradient.setColorAt(0, knob.arcColor);
    gradient.setColorAt(1, knob.arcColor);
    pen.setBrush(gradient);
    painter.setPen(pen);
    painter.drawArc(arcRectangle(knob), arcStart, valueSpan(knob, knob.value));
}

} // namespace

QRegion changedArea(const Knob& knob, int before)
{
    const int from = valueSpan(knob, before);
    const int to = valueSpan(knob, knob.value);
    const auto length = [&knob](int value) { return knob.shownText(value).size(); };
    if (core(knob).isEmpty() || std::abs(to - from) > shortWay ||
        length(knob.value) > length(before))
        return knob.rect();
    // The toolkit draws an arc by quarters of the circle, and one that has grown is not the same
    // in all of its last quarter.
    const int last = arcStart + std::max(from, to);
    const int first = std::min((last + quarter - 1) / quarter * quarter, arcStart);
    const int far = arcStart + std::min(from, to);
    const QRectF arc = arcRectangle(knob);
    QPainterPath swept;
    swept.arcMoveTo(arc, first / 16.0);
    swept.arcTo(arc, first / 16.0, (far - first) / 16.0);
    const int around = hasWholePixels(knob.devicePixelRatio()) ? edge : 2 * edge;
    // A square end reaches to its corner.
    const int reach = (knob.roundCap ? knob.arcWidth + 1 : knob.arcWidth * 3 / 2) / 2 + around;
    const QRect arcs = swept.boundingRect().toAlignedRect().adjusted(-reach, -reach, reach, reach);
    const QRect disc = arc.toAlignedRect().adjusted(reach, reach, -reach, -reach);
    // Figures need not be of the same width.
    const QRect text = knob.textRect.adjusted(-room, -around, room, around);
    return (QRegion(arcs) - QRegion(disc, QRegion::Ellipse)) + text;
}

void paintKnob(QPainter& painter, const Knob& knob, const QRegion& exposed)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(QFont(knob.fontFamily, knob.fontPointSize));

    QPen pen;
    pen.setWidth(knob.arcWidth);
    if (knob.roundCap)
        pen.setCapStyle(Qt::RoundCap);

    const Cap cap(knob);
    const bool divides = hasWholePixels(painter.deviceTransform().m11());
    const QRegion inside = exposed & core(knob);
    const bool onlyFace = divides && cap.covers(inside.boundingRect());
    const QRegion outside = onlyFace ? exposed - inside : exposed;
    if (!outside.isEmpty()) {
        if (divides)
            painter.setClipRegion(outside);
        if (knob.showTrack)
            paintTrack(painter, pen, knob);
        paintValue(painter, pen, knob);
        if (std::any_of(outside.begin(), outside.end(),
                        [&cap](const QRect& area) { return cap.reaches(area); }))
            cap.paint(painter);
    }
    if (onlyFace) {
        painter.setClipRegion(inside);
        cap.paintFace(painter);
    }
    painter.setClipping(false);
}

QRect paintKnobText(QPainter& painter, const Knob& knob)
{
    const QString text = knob.shownText(knob.value);
    painter.setPen(knob.textColor);
    const QRect area(0, 0, knob.width(), knob.height());
    const QRect place = painter.fontMetrics().boundingRect(area, Qt::AlignCenter, text);
    painter.drawText(place, Qt::AlignCenter, text);
    return place;
}
