#include "controls/button.h"

#include "controls/control_accessibility.h"
#include "controls/focus_ring.h"
#include "controls/keyboard_policy.h"

#include <QColor>
#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

Button::Button(const QString& text, QWidget* parent)
    : QPushButton(parent)
    , label(text)
    , glow(new QGraphicsDropShadowEffect(this))
{
    setText(text);
    setCursor(Qt::PointingHandCursor);
    KeyboardPolicy::holdControl(*this);
    light(0.01);
    glow->setEnabled(false);
}

void Button::applyStyle()
{
    const QString& background = on ? onBackground : offBackground;
    setStyleSheet(
        QStringLiteral("QPushButton {   color: %1;   background-color: %2;"
                       "   border-radius: %3px;}QPushButton:pressed {   background-color: %4;}")
            .arg(on ? onTextColor : offTextColor, background, QString::number(borderRadius),
                 background));
    glow->setEnabled(on);
    glow->setColor(QColor(glowColor));
}

void Button::setOn(bool status)
{
    change(status);
    emit pressed(status);
}

void Button::press()
{
    applyStyle();
    const bool status = !on;
    change(status);
    emit pressed(status);
    emit pressed(status);
}

void Button::setShadow(bool enable, double factor)
{
    if (enable)
        light(factor);
}

void Button::mousePressEvent(QMouseEvent* event)
{
    if (ignoreCtrlClick && event->modifiers().testFlag(Qt::ControlModifier))
        return;
    press();
}

void Button::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        press();
    else
        event->ignore();
}

void Button::leaveEvent(QEvent* event)
{
    hovered = false;
    QPushButton::leaveEvent(event);
}

void Button::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    // All styles mark the focus in a way that is hard to see here.
    option.state &= ~QStyle::State_HasFocus;
    painter.drawControl(QStyle::CE_PushButton, option);
    if (FocusRing::isDueOn(*this))
        FocusRing::paint(painter, *this);
}

void Button::light(double factor)
{
    glow->setBlurRadius(width() * factor);
    glow->setOffset(0, 0);
    glow->setColor(QColor(glowColor));
    setGraphicsEffect(glow);
}

void Button::change(bool status)
{
    const bool changed = on != status;
    on = status;
    glow->setEnabled(on);
    applyStyle();
    if (changed)
        ControlAccessibility::announce(*this);
}
