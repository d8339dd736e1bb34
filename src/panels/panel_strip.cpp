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

void PanelStrip::add(const MicGain& gain)
{
    Knob* const knob = gainKnob(gain.maximum, gain.displayOffset, layout->parentWidget());
    place(knob, heading + u' ' + gain.text);
    controls.bind(knob, gain);
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

void PanelStrip::add(const PhoneLevel& level)
{
    Knob* const knob = phoneKnob(layout->parentWidget());
    place(knob, level.text);
    controls.bind(knob, level);
}

void PanelStrip::add(const LevelReadOut& readOut)
{
    QLabel* const label = PanelWidgets::readOut(readOut.atStart);
    label->setAccessibleName((readOut.of.isEmpty() ? heading : readOut.of) + u' ' + readOut.text);
    layout->addWidget(label);
    meters.add(label, readOut.level);
}

void PanelStrip::add(const OutputTraits& traits, const OutputLook& look)
{
    const OutputControls output{volumeKnob(layout->parentWidget()),
                                outputButton(look.mute, look.buttonStyle),
                                outputButton(look.dim, look.buttonStyle)};
    row().place(output.volume, heading + u' ' + look.volume);
    caption(look.volume, look.captionStyle);
    PanelStrip buttons = row();
    buttons.place(output.mute, heading + u' ' + look.mute);
    buttons.place(output.dim, heading + u' ' + look.dim);
    controls.bind(output, traits);
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
