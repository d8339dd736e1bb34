#include "controls/control_accessibility.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "controls/read_out.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

/// Numbers are those on the knob, with its offset.
class KnobInterface final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit KnobInterface(Knob* widget)
        : QAccessibleWidget(widget, QAccessible::Slider)
    {
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? knob().shownText(knob().value)
                                          : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return knob().shownValue(knob().value); }
    QVariant minimumValue() const override { return knob().shownValue(knob().minimum); }
    QVariant maximumValue() const override { return knob().shownValue(knob().maximum); }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant& shown) override { knob().setShownValue(shown.toInt()); }

private:
    Knob& knob() const { return *static_cast<Knob*>(widget()); }
};

/// Of what can be switched on, the toolkit tells Windows only a check box's changes.
class ButtonInterface final : public QAccessibleWidget
{
public:
    explicit ButtonInterface(Button* widget)
        : QAccessibleWidget(widget, QAccessible::CheckBox)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        const QString text = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && text.isEmpty() ? button().text() : text;
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = button().on;
        return state;
    }

    QStringList actionNames() const override
    {
        return QStringList{pressAction(), toggleAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& action) override
    {
        if (action == pressAction() || action == toggleAction())
            button().press();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    Button& button() const { return *static_cast<Button*>(widget()); }
};

class ReadOutInterface final : public QAccessibleWidget
{
public:
    explicit ReadOutInterface(ReadOut* widget)
        : QAccessibleWidget(widget, QAccessible::StaticText)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        const QString own = QAccessibleWidget::text(kind);
        const QString reading =
            kind == QAccessible::Name ? static_cast<ReadOut*>(widget())->text() : QString();
        return QString(own + u' ' + reading).trimmed();
    }
};

QAccessibleInterface* interfaceOf(const QString&, QObject* object)
{
    if (auto* knob = qobject_cast<Knob*>(object))
        return new KnobInterface(knob);
    if (auto* button = qobject_cast<Button*>(object))
        return new ButtonInterface(button);
    if (auto* readOut = qobject_cast<ReadOut*>(object))
        return new ReadOutInterface(readOut);
    return nullptr;
}

bool isHeard(const QWidget& control)
{
    return QAccessible::isActive() && control.isVisible();
}

} // namespace

void ControlAccessibility::install()
{
    QAccessible::installFactory(interfaceOf);
}

void ControlAccessibility::announce(Knob& knob)
{
    if (!isHeard(knob))
        return;
    QAccessibleValueChangeEvent event(&knob, knob.shownValue(knob.value));
    QAccessible::updateAccessibility(&event);
}

void ControlAccessibility::announce(Button& button)
{
    if (!isHeard(button))
        return;
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(&button, changed);
    QAccessible::updateAccessibility(&event);
}
