#pragma once

#include <QColor>
#include <QPixmap>
#include <QRect>
#include <QSize>
#include <QTransform>

class Knob;
class QPainter;

/// Paints one knob, and keeps pictures of what its value does not change: the track, which lies
/// below the value's arc, and the cap, which lies above it. They are made in the pixels of the
/// device, and anew as soon as they would look different. GUI thread only.
class KnobPainter
{
public:
    /// Draws track, arc and cap, and leaves the painter antialiased.
    void paint(QPainter& painter, const Knob& knob);

private:
    /// All that the pictures depend on.
    struct Look
    {
        QSize size;
        QTransform toPixels; ///< the scale, and how far within one of its pixels the knob begins
        int arcWidth = 0;
        bool roundCap = false;
        bool showTrack = false;
        QColor trackColor;
        double knobRatio = 0;

        bool operator==(const Look&) const = default;
    };

    Look kept; ///< what the pictures were made for
    QPixmap track;
    QPixmap cap;
};

/// Prints the knob's value with its unit in the centre, in the knob's font. Returns the rectangle
/// of the text.
QRect paintKnobText(QPainter& painter, const Knob& knob);
