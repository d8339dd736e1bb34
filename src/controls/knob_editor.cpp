#include "controls/knob_editor.h"

#include <QKeyEvent>

KnobEditor::KnobEditor(QWidget* parent)
    : QLineEdit(parent)
{
    setFrame(false);
    setAlignment(Qt::AlignCenter);
    hide();
}

void KnobEditor::keyPressEvent(QKeyEvent* event)
{
    QLineEdit::keyPressEvent(event);
    event->accept();
}
