#include "panel_text.h"

#include "controls/button.h"

#include <QLabel>
#include <QLayout>

namespace {

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

QString nameOf(const QWidget& widget)
{
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    return label != nullptr ? label->text() : widget.objectName();
}

} // namespace

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
                found.append(QStringLiteral("overlaps: ") + nameOf(*widget));
        }
        taken.append(place);
        if (!panel.rect().contains(place))
            found.append(QStringLiteral("leaves the panel: ") + nameOf(*widget));
        // A line is as thin as it is made; Qt's hint for it leaves room for a frame around.
        const bool isLine = widget->maximumWidth() == 1;
        if (!isLine && place.size().expandedTo(widget->minimumSizeHint()) != place.size())
            found.append(QStringLiteral("cut off: ") + nameOf(*widget));
    }
    return found;
}
