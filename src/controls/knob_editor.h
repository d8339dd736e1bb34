#pragma once

#include <QLineEdit>

/// The field in which a knob's value is typed. Keys that a line of text has no use for end here:
/// the knob below would take them for its own.
class KnobEditor : public QLineEdit
{
    Q_OBJECT

public:
    explicit KnobEditor(QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
