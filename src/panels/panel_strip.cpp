#include "panels/panel_strip.h"

#include "controls/button.h"
#include "controls/knob.h"

#include <QBoxLayout>
#include <QLabel>

#include <utility>

using namespace PanelWidgets;

PanelStrip::PanelStrip(PanelControls& panelControls, PanelMeters& panelMeters, QBoxLayout* inLayout,
                       QString stripHeading)
    : controls(panelControls)
    , meters(panelMeters)
    , layout(inLayout)
    , heading(std::move(stripHeading))
{
}

Knob* PanelStrip::add(const MicGain& gain)
{
    Knob* const knob = gainKnob(gain.maximum, gain.displayOffset, layout->parentWidget());
    place(knob, heading + u' ' + gain.text);
    controls.bind(knob, gain);
    return knob;
}

void PanelStrip::add(const InputSwitch& inputSwitch)
{
    Button* const made = button(inputSwitch.text, inputSwitch.accent);
    // By what it switches on: its own text says what is on now.
    const QString& name =
        inputSwitch.textWhenOn.isEmpty() ? inputSwitch.text : inputSwitch.textWhenOn;
    place(made, heading + u' ' + name);
    controls.bind(made, inputSwitch);
}

void PanelStrip::add(const Monitor& monitor)
{
    Button* const made = button(monitor.text, outputAccent);
    place(made, heading + u' ' + monitor.text);
    controls.bind(made, monitor);
}

Knob* PanelStrip::add(const PhoneLevel& level)
{
    Knob* const knob = phoneKnob(layout->parentWidget());
    place(knob, level.text);
    controls.bind(knob, level);
    return knob;
}

void PanelStrip::add(const LevelReadOut& readOut)
{
    QLabel* const label = PanelWidgets::readOut(readOut.atStart);
    label->setAccessibleName((readOut.of.isEmpty() ? heading : readOut.of) + u' ' + readOut.text);
    layout->addWidget(label);
    meters.add(label, readOut.samples);
}

void PanelStrip::add(const Output& output)
{
    const OutputWidgets widgets{volumeKnob(layout->parentWidget()),
                                outputButton(output.mute, output.buttonStyle),
                                outputButton(output.dim, output.buttonStyle)};
    row().place(widgets.volume, heading + u' ' + output.volume);
    caption(output.volume, output.captionStyle);
    PanelStrip buttons = row();
    buttons.place(widgets.mute, heading + u' ' + output.mute);
    buttons.place(widgets.dim, heading + u' ' + output.dim);
    controls.bind(widgets, output);
}

void PanelStrip::caption(const QString& text, const char* style)
{
    layout->addWidget(PanelWidgets::caption(text, style));
}

PanelStrip PanelStrip::column(int stretch)
{
    return part(new QVBoxLayout, stretch);
}

PanelStrip PanelStrip::row(int spacing)
{
    auto* inner = new QHBoxLayout;
    inner->setSpacing(spacing);
    return part(inner, 0);
}

PanelStrip PanelStrip::part(QBoxLayout* inner, int stretch)
{
    inner->setAlignment(Qt::AlignCenter);
    layout->addLayout(inner, stretch);
    return {controls, meters, inner, heading};
}

void PanelStrip::stretch()
{
    layout->addStretch();
}

void PanelStrip::place(QWidget* control, const QString& name)
{
    control->setAccessibleName(name);
    layout->addWidget(control, 0, Qt::AlignHCenter);
}
