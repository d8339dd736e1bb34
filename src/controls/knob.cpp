#include "controls/knob.h"

#include "controls/knob_painter.h"

#include <QGraphicsDropShadowEffect>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

/// The event's position in whole pixels, halves rounded away from zero.
QPoint pixelPosition(const QMouseEvent& event)
{
    const QPointF position = event.position();
    return {int(std::lround(position.x())), int(std::lround(position.y()))};
}

} // namespace

Knob::Knob(QWidget* parent)
    : QWidget(parent)
    , editor(new QLineEdit(this))
{
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignCenter);
    editor->hide();
    connect(editor, &QLineEdit::editingFinished, this, &Knob::finishEdit);
}

void Knob::setValue(int v)
{
    change(v);
}

void Knob::setValueIfIdle(int v)
{
    if (!hovered)
        change(v);
}

void Knob::setShadow(bool enable, double factor)
{
    if (!enable)
        return;
    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setBlurRadius(width() * factor);
    shadow->setOffset(0, 0);
    shadow->setColor(shadowColor);
    setGraphicsEffect(shadow);
}

void Knob::finishEdit()
{
    QString text = editor->text();
    if (text.endsWith(suffix))
        text.chop(suffix.size());
    bool valid = false;
    const int typed = text.toInt(&valid);
    {
        // Hiding moves the focus on, which can finish the same input a second time.
        const QSignalBlocker once(editor);
        editor->hide();
    }
    change(qint64(valid ? typed : value) - displayOffset);
}

void Knob::mousePressEvent(QMouseEvent* event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier))
        change(minimum);
}

void Knob::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (showText && textRect.contains(pixelPosition(*event)))
        openEditor();
    else
        change(minimum);
}

void Knob::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton))
        return;
    const QPoint now = pixelPosition(*event);
    if (lastPos.y > now.y() && value < maximum)
        ++value;
    else if (lastPos.y < now.y() && value > minimum)
        --value;
    if (lastPos.x < now.x() && value < maximum)
        ++value;
    else if (lastPos.x > now.x() && value > minimum)
        --value;
    lastPos = {now.y(), now.x()};
    change(value);
}

void Knob::wheelEvent(QWheelEvent* event)
{
    const bool up = event->angleDelta().y() > 0;
    if (up && value < maximum)
        ++value;
    else if (!up && value > minimum)
        --value;
    change(value);
    event->accept();
}

void Knob::enterEvent(QEnterEvent*)
{
    hovered = true;
}

void Knob::leaveEvent(QEvent*)
{
    hovered = false;
}

void Knob::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintKnob(painter, *this);
    if (showText)
        textRect = paintKnobText(painter, *this);
}

void Knob::change(qint64 candidate)
{
    const qint64 limited = std::max<qint64>(std::min<qint64>(candidate, maximum), minimum);
    value = int(limited);
    // Painted on return to the event loop, so the order does not show; a receiver of the signal
    // may well delete the knob.
    update();
    emit valueChangedSig(value);
}

void Knob::openEditor()
{
    editor->setText(QString::number(qint64(value) + displayOffset));

    QPalette colors = editor->palette();
    colors.setColor(QPalette::Base, QColor(QStringLiteral("#1b1e23")));
    colors.setColor(QPalette::Text, textColor);
    colors.setColor(QPalette::Highlight, trackColor);
    colors.setColor(QPalette::HighlightedText, textColor);
    editor->setPalette(colors);
    editor->setFont(QFont(fontFamily, fontPointSize));

    const int dx = int(0.025 * textRect.width());
    const int dy = int(0.025 * textRect.height());
    editor->setGeometry(textRect.adjusted(dx, dy, -dx, -dy));
    editor->show();
    editor->setFocus(Qt::OtherFocusReason);
    editor->selectAll();
}
