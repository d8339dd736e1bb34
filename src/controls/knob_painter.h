#pragma once

#include <QRect>
#include <QRegion>

class Knob;
class QPainter;

/// What looks different when the knob's value is no longer `before`, and a little around it.
QRegion changedArea(const Knob& knob, int before);

/// Draws the track, the value arc and the cap of `knob`, in this order, where they show in
/// `exposed`, and leaves the painter antialiased, with the knob's font and without a clip.
void paintKnob(QPainter& painter, const Knob& knob, const QRegion& exposed);

/// Prints the knob's value with its unit in the centre, in the painter's font. Returns the
/// rectangle of the text.
QRect paintKnobText(QPainter& painter, const Knob& knob);
