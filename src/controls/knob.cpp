#include "controls/knob.h"

#include "controls/control_accessibility.h"
#include "controls/focus_ring.h"
#include "controls/knob_editor.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
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
    , editor(new KnobEditor(this))
{
    setFocusPolicy(Qt::TabFocus);
    connect(editor, &QLineEdit::editingFinished, this, &Knob::finishEdit);
}

Knob::~Knob()
{
    // Destroyed by a receiver of the typed value: the editor still has to return from that signal.
    if (finishing) {
        editor->disconnect(this);
        editor->setParent(nullptr);
        editor->deleteLater();
    }
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
    QString text = editor->text();
    if (text.endsWith(suffix))
        text.chop(suffix.size());
    bool valid = false;
    const int typed = text.toInt(&valid);
    closeEditor();
    const QPointer<Knob> alive(this);
    finishing = true;
    change(qint64(valid ? typed : value) - displayOffset);
    if (alive)
        finishing = false;
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
    constexpr Qt::KeyboardModifiers others =
        Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const std::optional<qint64> target =
        (event->modifiers() & others) == Qt::NoModifier ? valueAfter(event->key()) : std::nullopt;
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!target && !(enters && showText)) {
        QWidget::keyPressEvent(event);
        return;
    }
    FocusRing::bringUp(*this);
    if (target)
        change(*target);
    else
        openEditor();
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
    bool ended = false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // The window hears of a click before the widget in it does, and tells it only then.
        ended = watched->isWidgetType() && !belongsTo(editor, watched);
        break;
    case QEvent::KeyPress:
        if (watched == editor && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            closeEditor();
            return true;
        }
        break;
    default:
        break;
    }
    if (!ended)
        return false;
    // Whoever is told of the value may delete the widget that was clicked, this knob included.
    const QPointer<QObject> receiver(watched);
    finishEdit();
    return receiver.isNull();
}

void Knob::change(qint64 candidate)
{
    const qint64 limited = std::max<qint64>(std::min<qint64>(candidate, maximum), minimum);
    const bool changed = value != limited;
    value = int(limited);
    if (changed)
        ControlAccessibility::announce(*this);
    // Painted on return to the event loop, so the order does not show; a receiver of the signal
    // may well delete the knob.
    update();
    if (isEditing() && value != editedValue) {
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

void Knob::openEditor()
{
    // No palette: below a window with a style sheet the background would not take it.
    const QString text = textColor.name();
    editor->setStyleSheet(QStringLiteral("QLineEdit { border: none; color: %1; background: #1b1e23;"
                                         " selection-color: %1; selection-background-color: %2; }")
                              .arg(text, trackColor.name()));
    editor->setFont(QFont(fontFamily, fontPointSize));

    if (!isEditing())
        focusBefore = window()->focusWidget();
    editor->show();
    editor->setFocus(Qt::OtherFocusReason);
    fillEditor();
    qApp->installEventFilter(this);
}

void Knob::fillEditor()
{
    editedValue = value;
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
    if (window()->focusWidget() == editor) {
        // Left to itself, the toolkit would pass the focus on to the next control.
        if (focusBefore)
            focusBefore->setFocus(Qt::OtherFocusReason);
        else
            editor->clearFocus();
    }
    editor->hide();
}

bool Knob::isEditing() const
{
    return !editor->isHidden();
}
