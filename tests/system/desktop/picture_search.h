#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QRect>

/// The patches of the given colours in a picture: rectangles around pixels that differ from one
/// of the colours by at most 2 in each channel and lie at most 3 pixels apart. From top to
/// bottom, then from left to right.
QList<QRect> patchesOf(const QImage& picture, const QList<QColor>& colours);

/// The middles of the knobs in a picture of a panel, found by their arcs: the large ones from left
/// to right, then the small ones.
QList<QPoint> knobsIn(const QImage& panel);

/// The buttons in a picture of a panel, found by their background: column by column from left to
/// right, each from top to bottom.
QList<QRect> buttonsIn(const QImage& panel);
