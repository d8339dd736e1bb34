#pragma once

#include <QRect>

class Knob;
class QPainter;

/// Draws the track, the value arc and the cap of `knob`, in this order, and leaves the painter
/// antialiased and with the knob's font.
void paintKnob(QPainter& painter, const Knob& knob);

/// Prints the knob's value with its unit in the centre, in the painter's font. Returns the
/// rectangle of the text.
QRect paintKnobText(QPainter& painter, const Knob& knob);
