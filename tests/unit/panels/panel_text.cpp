#include "panel_text.h"

#include "controls/button.h"
#include "controls/knob.h"

#include <QBoxLayout>
#include <QLabel>

namespace {

/// " centred", or the number of another alignment, or nothing.
QString alignmentText(Qt::Alignment alignment)
{
    if (alignment == Qt::Alignment())
        return {};
    if (alignment == Qt::AlignCenter)
        return QStringLiteral(" centred");
    return QStringLiteral(" aligned %1").arg(int(alignment));
}

QString labelText(const QLabel& label)
{
    return QStringLiteral("label%1 \"%2\" %3")
        .arg(alignmentText(label.alignment()), label.text(), label.styleSheet());
}

/// What the layout was told of its item; nothing for the usual.
QString placeText(const QLayout& layout, int index)
{
    const auto* box = qobject_cast<const QBoxLayout*>(&layout);
    const int stretch = box == nullptr ? 0 : box->stretch(index);
    QLayoutItem* item = layout.itemAt(index);
    QString text;
    if (item->widget() != nullptr && item->alignment() == Qt::AlignHCenter)
        text += QStringLiteral(" in the middle");
    else if (item->widget() != nullptr && item->alignment() != Qt::Alignment())
        text += QStringLiteral(" placed %1").arg(int(item->alignment()));
    if (stretch != 0)
        text += QStringLiteral(" stretched %1").arg(stretch);
    return text;
}

/// Of a panel that was not laid out yet.
QString knobText(const Knob& knob)
{
    const QString offset = QStringLiteral(" shown +%1").arg(knob.displayOffset);
    const bool fixed = knob.minimumSize() == knob.maximumSize();
    return QStringLiteral("knob %1 %2x%3 %4..%5%6 arc %7 %8 text %9 ")
               .arg(knob.objectName())
               .arg(fixed ? knob.maximumWidth() : -1)
               .arg(fixed ? knob.maximumHeight() : -1)
               .arg(knob.minimum)
               .arg(knob.maximum)
               .arg(knob.displayOffset == 0 ? QString() : offset)
               .arg(knob.arcWidth)
               .arg(knob.arcColor.name())
               .arg(knob.fontPointSize) +
           knob.textColor.name() + u' ' + knob.shadowColor.name() +
           (knob.pos() == QPoint(10, 10) ? QString() : QStringLiteral(" elsewhere"));
}

/// What all buttons of the panels have in common goes without saying.
QString buttonText(const Button& button)
{
    const bool common = button.offTextColor == QLatin1String("#8a95aa") &&
                        button.onBackground == QLatin1String("#1b1e23") &&
                        button.offBackground == QLatin1String("#1b1e23") &&
                        button.borderRadius == 3 && button.glowColor == button.onTextColor &&
                        button.minimumWidth() == button.maximumWidth() &&
                        button.styleSheet().contains(QLatin1String("#8a95aa"));
    return QStringLiteral("button %1 \"%2\" %3 style %4 %5x%6%7")
        .arg(button.objectName(), button.text(), button.onTextColor)
        .arg(button.styleInt)
        .arg(button.minimumWidth())
        .arg(button.minimumHeight())
        .arg(common ? QString() : QStringLiteral(" of a look of its own"));
}

QString frameText(const QFrame& frame)
{
    const bool sunkenLine =
        frame.frameShape() == QFrame::VLine && frame.frameShadow() == QFrame::Sunken;
    return QStringLiteral("%1, width %2, %3")
        .arg(sunkenLine ? QStringLiteral("sunken line") : QStringLiteral("frame"))
        .arg(frame.minimumWidth() == frame.maximumWidth() ? frame.maximumWidth() : -1)
        .arg(frame.styleSheet());
}

QString widgetText(const QWidget& widget)
{
    if (const auto* knob = qobject_cast<const Knob*>(&widget))
        return knobText(*knob);
    if (const auto* button = qobject_cast<const Button*>(&widget))
        return buttonText(*button);
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return labelText(*label);
    if (const auto* frame = qobject_cast<const QFrame*>(&widget))
        return frameText(*frame);
    return QLatin1String(widget.metaObject()->className());
}

QString layoutText(const QLayout& layout)
{
    const auto* box = qobject_cast<const QBoxLayout*>(&layout);
    const bool column = box != nullptr && box->direction() == QBoxLayout::TopToBottom;
    const QMargins margins = layout.contentsMargins();
    return QStringLiteral("%1%2 margins %3 %4 %5 %6")
        .arg(column ? QStringLiteral("column") : QStringLiteral("row"),
             alignmentText(layout.alignment()))
        .arg(margins.left())
        .arg(margins.top())
        .arg(margins.right())
        .arg(margins.bottom());
}

void describe(const QLayout& layout, const QString& indent, const QString& place,
              QStringList& lines)
{
    lines.append(indent + layoutText(layout) + place);
    const QString inner = indent + QStringLiteral("  ");
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem* item = layout.itemAt(i);
        const QString itemPlace = placeText(layout, i);
        if (const QLayout* nested = item->layout())
            describe(*nested, inner, itemPlace, lines);
        else if (const QWidget* widget = item->widget())
            lines.append(inner + widgetText(*widget) + itemPlace);
        else
            lines.append(inner + QStringLiteral("stretch") + itemPlace);
    }
}

void collect(const QLayout& layout, QList<QWidget*>& widgets)
{
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem* item = layout.itemAt(i);
        if (const QLayout* nested = item->layout())
            collect(*nested, widgets);
        else if (QWidget* widget = item->widget())
            widgets.append(widget);
    }
}

QList<QWidget*> widgetsOf(const QWidget& panel)
{
    QList<QWidget*> widgets;
    collect(*panel.layout(), widgets);
    return widgets;
}

} // namespace

QStringList PanelText::tree(const QWidget& panel)
{
    QStringList lines;
    describe(*panel.layout(), QString(), QString(), lines);
    return lines;
}

QStringList PanelText::texts(const QWidget& panel)
{
    QStringList found;
    const auto widgets = widgetsOf(panel);
    for (const QWidget* widget : widgets) {
        if (const auto* button = qobject_cast<const Button*>(widget))
            found.append(button->text());
        else if (const auto* label = qobject_cast<const QLabel*>(widget))
            found.append(label->text());
    }
    return found;
}

QStringList PanelText::misplaced(const QWidget& panel)
{
    QStringList found;
    QList<QRect> taken;
    const auto widgets = widgetsOf(panel);
    for (const QWidget* widget : widgets) {
        const QRect place = widget->geometry();
        for (const QRect& other : taken) {
            if (place.intersects(other))
                found.append(QStringLiteral("overlaps: ") + widgetText(*widget));
        }
        taken.append(place);
        if (!panel.rect().contains(place))
            found.append(QStringLiteral("leaves the panel: ") + widgetText(*widget));
        // A line is as thin as it is made; Qt's hint for it leaves room for a frame around.
        const bool isLine = widget->maximumWidth() == 1;
        if (!isLine && place.size().expandedTo(widget->minimumSizeHint()) != place.size())
            found.append(QStringLiteral("cut off: ") + widgetText(*widget));
    }
    return found;
}
