#pragma once

#include "controls/knob.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QWidget>

/// A shown, active window with a knob of 120 x 120 pixels and a button that takes the focus,
/// as in a panel. Mouse positions are those of the knob.
class KnobStage
{
public:
    KnobStage();

    /// Shows the window and waits until it is active and painted.
    bool show();

    void press(QPoint position, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void move(QPoint position);
    void release(QPoint position);
    void doubleClick(QPoint position);

    /// Sends one wheel event with this angle delta; true if the knob accepted it.
    bool wheel(QPoint angleDelta);

    /// The values announced since the last call, in order.
    QList<int> announced();

    QWidget window;
    Knob knob;
    QPushButton neighbour;

private:
    QPoint inWindow(QPoint position) const;

    QSignalSpy spy;
};
