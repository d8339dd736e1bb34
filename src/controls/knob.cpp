#include "controls/knob.h"

#include "controls/control_accessibility.h"
#include "controls/focus_ring.h"
#include "controls/keyboard_policy.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
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

/// Whether the object is the editor or something that it opened, such as its context menu.
bool belongsTo(const QLineEdit* editor, const QObject* object)
{
    while (object != nullptr && object != editor)
        object = object->parent();
    return object != nullptr;
}

} // namespace

Knob::Knob(QWidget* parent)
    : QWidget(parent)
    , editor(new QLineEdit(this))
{
    KeyboardPolicy::holdControl(*this);
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignCenter);
    // What is to be hidden Windows keeps from input methods; nothing else switches them off.
    editor->setInputMethodHints(Qt::ImhHiddenText);
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

qint64 Knob::shownValue(int v) const
{
    // Zero reads as zero on every scale.
    return v == 0 ? 0 : qint64(v) + displayOffset;
}

QString Knob::shownText(int v) const
{
    return QString::number(shownValue(v)) + suffix;
}

void Knob::setShownValue(int shown)
{
    qint64 target = qint64(shown) - displayOffset;
    // Beside the zero may be a gap, which a step of one must get across.
    if (shown > shownValue(value))
        target = std::max<qint64>(target, qint64(value) + 1);
    else if (shown < shownValue(value))
        target = std::min<qint64>(target, qint64(value) - 1);
    change(target);
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
    const int number = typedNumber().value_or(value);
    closeEditor();
    change(qint64(number) - displayOffset);
}

void Knob::mousePressEvent(QMouseEvent* event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier))
        change(minimum);
}

void Knob::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (showText && textRect.contains(pixelPosition(*event)))
        openEditor(window());
    else
        change(minimum);
}

void Knob::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton))
        return;
    const QPoint now = pixelPosition(*event);
    int next = value;
    if (lastPos.y > now.y() && next < maximum)
        ++next;
    else if (lastPos.y < now.y() && next > minimum)
        --next;
    if (lastPos.x < now.x() && next < maximum)
        ++next;
    else if (lastPos.x > now.x() && next > minimum)
        --next;
    lastPos = {now.y(), now.x()};
    change(next);
}

void Knob::wheelEvent(QWheelEvent* event)
{
    const bool up = event->angleDelta().y() > 0;
    int next = value;
    if (up && next < maximum)
        ++next;
    else if (!up && next > minimum)
        --next;
    change(next);
    event->accept();
}

void Knob::keyPressEvent(QKeyEvent* event)
{
    if (const std::optional<qint64> target = valueAfter(event->key()))
        change(*target);
    else if (KeyboardPolicy::isEnter(*event) && showText)
        openEditor(this);
    else
        event->ignore();
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
    knobPainter.paint(painter, *this);
    if (showText)
        textRect = paintKnobText(painter, *this);
    if (FocusRing::isDueOn(*this))
        FocusRing::paint(painter, *this);
}

bool Knob::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // The window hears of a click before the widget in it does, and tells it only then.
        if (watched->isWidgetType() && !belongsTo(editor, watched)) {
            dropTextWithoutNumber();
            finishEdit();
        }
        return false;
    case QEvent::FocusOut:
        // The editor then finishes by itself.
        if (watched == editor && !belongsTo(editor, QApplication::activePopupWidget()))
            dropTextWithoutNumber();
        return false;
    case QEvent::KeyPress:
        return watched == editor && endsEditing(static_cast<const QKeyEvent&>(*event));
    default:
        return false;
    }
}

void Knob::change(qint64 candidate)
{
    const qint64 limited = std::max<qint64>(std::min<qint64>(candidate, maximum), minimum);
    const bool changed = value != limited;
    value = int(limited);
    if (changed)
        ControlAccessibility::announce(*this);
    // Painted on return to the event loop, so the order does not show.
    update();
    if (isEditing() && !editor->isModified()) {
        // At once, because the editor covers the text.
        repaint();
        fillEditor();
    }
    emit valueChangedSig(value);
}

std::optional<qint64> Knob::valueAfter(int key) const
{
    constexpr qint64 page = 5;
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Right:
        return qint64(value) + 1;
    case Qt::Key_Down:
    case Qt::Key_Left:
        return qint64(value) - 1;
    case Qt::Key_PageUp:
        return value + page;
    case Qt::Key_PageDown:
        return value - page;
    case Qt::Key_Home:
        return minimum;
    case Qt::Key_End:
        return maximum;
    default:
        return std::nullopt;
    }
}

void Knob::openEditor(QWidget* returnTo)
{
    focusAfterwards = returnTo;
    // No palette: below a window with a style sheet the background would not take it.
    const QString text = textColor.name();
    editor->setStyleSheet(QStringLiteral("QLineEdit { border: none; color: %1; background: #1b1e23;"
                                         " selection-color: %1; selection-background-color: %2; }")
                              .arg(text, trackColor.name()));
    editor->setFont(QFont(fontFamily, fontPointSize));
    editor->setAccessibleName(accessibleName());
    editor->show();
    editor->setFocus(Qt::OtherFocusReason);
    fillEditor();
    qApp->installEventFilter(this);
}

void Knob::fillEditor()
{
    editor->setText(QString::number(qint64(value) + displayOffset));
    const int dx = int(0.025 * textRect.width());
    const int dy = int(0.025 * textRect.height());
    editor->setGeometry(textRect.adjusted(dx, dy, -dx, -dy));
    editor->selectAll();
}

void Knob::closeEditor()
{
    qApp->removeEventFilter(this);
    // Hiding moves the focus on, which would finish the same input a second time.
    const QSignalBlocker once(editor);
    if (window()->focusWidget() == editor)
        focusAfterwards->setFocus(Qt::OtherFocusReason);
    editor->hide();
}

bool Knob::isEditing() const
{
    return !editor->isHidden();
}

bool Knob::endsEditing(const QKeyEvent& key)
{
    const bool commits = KeyboardPolicy::isEnter(key);
    if (!commits && key.key() != Qt::Key_Escape)
        return false;
    // A first press ends the editing, so a repeat has come from elsewhere.
    if (!key.isAutoRepeat())
        commits ? finishEdit() : closeEditor();
    return true;
}

void Knob::dropTextWithoutNumber()
{
    if (!typedNumber())
        fillEditor();
}

std::optional<int> Knob::typedNumber() const
{
    // In this form full-width digits are digits.
    QString text = editor->text().normalized(QString::NormalizationForm_KC);
    if (text.endsWith(suffix))
        text.chop(suffix.size());
    bool valid = false;
    const int number = text.toInt(&valid);
    return valid ? std::optional(number) : std::nullopt;
}
