#include "controls/keyboard_policy.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QWidget>

namespace {

class WindowFilter : public QObject
{
public:
    explicit WindowFilter(QWidget& watched)
        : QObject(&watched)
        , window(watched)
    {
        window.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        const bool comesUp = event->type() == QEvent::Show && !event->spontaneous();
        // Left to itself, the toolkit would now choose the first control.
        const bool choosesFocus =
            event->type() == QEvent::WindowActivate && window.focusWidget() == nullptr;
        if (comesUp || choosesFocus)
            window.setFocus(Qt::OtherFocusReason);
        // A dialog would press its button.
        return event->type() == QEvent::KeyPress &&
               KeyboardPolicy::isEnter(static_cast<const QKeyEvent&>(*event));
    }

private:
    QWidget& window;
};

class ControlFilter : public QObject
{
public:
    explicit ControlFilter(QWidget& watched)
        : QObject(&watched)
        , control(watched)
        , isButton(qobject_cast<QAbstractButton*>(&watched) != nullptr)
    {
        control.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusOut)
            held = 0;
        if (event->type() != QEvent::KeyPress || isOwn(static_cast<const QKeyEvent&>(*event)))
            return false;
        event->ignore();
        return true;
    }

private:
    /// What is not goes on to the window: Tab, too, is always heard there.
    bool isOwn(const QKeyEvent& event)
    {
        constexpr Qt::KeyboardModifiers others =
            Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier;
        const int key = event.key();
        // What a child of the control has no use for comes by here as well.
        if (!control.hasFocus())
            return false;
        if (!event.isAutoRepeat())
            held = key;
        // By arrows the toolkit's buttons pass the focus on.
        const bool known = !isButton || key == Qt::Key_Space || KeyboardPolicy::isEnter(event);
        return known && key == held && (event.modifiers() & others) == Qt::NoModifier;
    }

    QWidget& control;
    bool isButton;
    int held = 0; ///< the key whose first press arrived here
};

} // namespace

void KeyboardPolicy::holdWindow(QWidget& window)
{
    new WindowFilter(window);
}

void KeyboardPolicy::holdControl(QWidget& control)
{
    control.setFocusPolicy(Qt::TabFocus);
    new ControlFilter(control);
}

bool KeyboardPolicy::isEnter(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}
