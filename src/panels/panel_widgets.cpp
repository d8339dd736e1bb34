#include "panels/panel_widgets.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "controls/read_out.h"

#include <QBoxLayout>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>

namespace {

QLabel* styled(QLabel* label, const char* style)
{
    label->setStyleSheet(QLatin1String(style));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

Knob* panelKnob(int size, QWidget* parent)
{
    auto* knob = new Knob(parent);
    knob->setGeometry(10, 10, size, size);
    knob->textColor = QColor(QStringLiteral("#00ff7f"));
    knob->shadowColor = QColor(QStringLiteral("#00ff7f"));
    return knob;
}

void appendControls(QLayout* layout, QWidgetList& controls)
{
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* const item = layout->itemAt(i);
        if (item->layout() != nullptr)
            appendControls(item->layout(), controls);
        else if (QWidget* const widget = item->widget();
                 widget != nullptr && widget->focusPolicy() != Qt::NoFocus) {
            controls.append(widget);
            // Its editor is where Tab leaves it from.
            if (const auto* knob = qobject_cast<Knob*>(widget))
                controls.append(knob->editor);
        }
    }
}

} // namespace

QLabel* PanelWidgets::title(const QString& text)
{
    return styled(new QLabel(text), "font-weight: bold; font-size: 12px; color: white;");
}

QLabel* PanelWidgets::caption(const QString& text, const char* style)
{
    return styled(new QLabel(text), style);
}

QLabel* PanelWidgets::readOut(const QString& text)
{
    return styled(new ReadOut(text), "color: #888888; font-size: 8px;");
}

void PanelWidgets::showLevel(QLabel* readOut, double dB)
{
    readOut->setText(QString::number(dB, 'f', 1) + QStringLiteral(" dB"));
}

Knob* PanelWidgets::gainKnob(int maximum, int displayOffset, QWidget* parent)
{
    Knob* knob = panelKnob(120, parent);
    knob->setFixedSize(120, 120);
    knob->minimum = 0;
    knob->maximum = maximum;
    knob->value = 0;
    knob->displayOffset = displayOffset;
    knob->arcColor = QColor(QStringLiteral("#f1fa8c"));
    return knob;
}

Knob* PanelWidgets::volumeKnob(QWidget* parent)
{
    Knob* knob = panelKnob(120, parent);
    knob->setFixedSize(120, 120);
    return knob;
}

Knob* PanelWidgets::phoneKnob(QWidget* parent)
{
    Knob* knob = panelKnob(80, parent);
    knob->setFixedSize(70, 70);
    knob->arcWidth = 3;
    knob->fontPointSize = 10;
    return knob;
}

Button* PanelWidgets::button(const QString& text, const char* accent)
{
    // Without a parent, so that the glow is sized after a window's default width: visible.
    auto* made = new Button(text, nullptr);
    made->styleInt = 10;
    made->onTextColor = QLatin1String(accent);
    made->offTextColor = QStringLiteral("#8a95aa");
    made->borderRadius = 3;
    made->onBackground = QStringLiteral("#1b1e23");
    made->offBackground = QStringLiteral("#1b1e23");
    made->glowColor = QLatin1String(accent);
    made->setFixedWidth(80);
    made->applyStyle();
    return made;
}

Button* PanelWidgets::outputButton(const QString& text, int styleInt)
{
    Button* made = button(text, outputAccent);
    made->styleInt = styleInt;
    made->setMinimumHeight(40);
    return made;
}

QBoxLayout* PanelWidgets::rootLayout(QWidget* panel)
{
    auto* layout = new QHBoxLayout(panel);
    layout->setAlignment(Qt::AlignCenter);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}

void PanelWidgets::tabInReadingOrder(QLayout* layout)
{
    QWidgetList controls;
    appendControls(layout, controls);
    for (int i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

QFrame* PanelWidgets::separator(QWidget* parent)
{
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    line->setFixedWidth(1);
    line->setStyleSheet(QStringLiteral("background-color: #555555;"));
    return line;
}
