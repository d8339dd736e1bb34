#include "panels/panel_controls.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"
#include "panels/output_volume.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace {

/// A debug line of a text and a toggle's state.
void logState(const char* text, bool on, StateText stateText)
{
    switch (stateText) {
    case StateText::none:
        qDebug() << text;
        break;
    case StateText::number:
        qDebug() << text << (on ? 1 : 0);
        break;
    case StateText::word:
        qDebug() << text << on;
        break;
    }
}

} // namespace

PanelControls::PanelControls(PanelLink& panelLink)
    : link(panelLink)
{
}

PanelControls::~PanelControls()
{
    // The controls outlive the link: an editor that loses its focus on the way out must not reach
    // for the device or the file any more.
    for (const Restorer& restorer : restorers)
        restorer.control->blockSignals(true);
}

void PanelControls::bindKnob(Knob* knob, const char* key, int missing,
                             std::function<void(int)> handler)
{
    QObject::connect(knob, &Knob::valueChangedSig, knob,
                     [this, knob, key, handle = std::move(handler)](int value) {
                         handle(value);
                         link.store(key, knob->value);
                     });
    remember(knob, key, missing);
}

void PanelControls::bindButton(Button* button, const char* key, std::function<void(bool)> handler)
{
    QObject::connect(button, &Button::pressed, button,
                     [this, button, key, handle = std::move(handler)](bool on) {
                         handle(on);
                         link.store(key, button->on);
                     });
    remember(button, key);
}

void PanelControls::bind(Knob* knob, const MicGain& gain)
{
    bindKnob(knob, gain.key, 0, [this, channel = gain.channel](int value) {
        if (link.device().setMicVolume(channel, static_cast<std::uint16_t>(value * 2)))
            qDebug() << "Mic volume set to:" << value;
        else
            qDebug() << "Failed to set mic volume.";
    });
}

void PanelControls::bind(Button* button, const InputSwitch& inputSwitch)
{
    bindButton(button, inputSwitch.key, [this, button, inputSwitch](bool on) {
        logState(inputSwitch.clicked, on, inputSwitch.clickedState);
        if (!(link.device().*inputSwitch.command)(inputSwitch.channel, on ? 1 : 0)) {
            qDebug() << inputSwitch.failed;
            return;
        }
        if (!inputSwitch.textWhenOn.isEmpty())
            button->setText(on ? inputSwitch.textWhenOn : inputSwitch.text);
        qDebug() << inputSwitch.switched;
    });
}

void PanelControls::bind(Button* button, const Monitor& monitor)
{
    bindButton(button, monitor.key,
               [this, cells = monitor.cells, setState = monitor.setState](bool on) {
                   if (link.sendGain(cells, on ? 1.0 : 0.0))
                       logState("Monitor Mic set to:", on, setState);
                   else
                       qDebug() << "Failed to set Monitor Mic.";
               });
}

void PanelControls::bind(Knob* knob, const PhoneLevel& level)
{
    // The widget starts at silence, but a missing key means full phone level.
    constexpr int missing = 0;
    bindKnob(knob, level.key, missing,
             [this, cells = level.cells, set = level.set, failed = level.failed](int value) {
                 const double gain = dbToGain(value);
                 if (link.sendGain(cells, gain))
                     qDebug() << set << gain;
                 else
                     qDebug() << failed;
             });
}

void PanelControls::bind(const OutputControls& output, const OutputTraits& traits)
{
    new OutputVolume(traits, link, output, output.volume);
    remember(output.volume, traits.knobKey, output.volume->minimum);
    remember(output.mute, traits.muteKey);
    remember(output.dim, traits.dimKey);
}

void PanelControls::remember(Knob* knob, const char* key, int missing)
{
    knob->setObjectName(QLatin1String(key));
    restorers.append(
        {knob, [this, knob, key, missing] { knob->setValue(link.storedNumber(key, missing)); }});
}

void PanelControls::remember(Button* button, const char* key)
{
    button->setObjectName(QLatin1String(key));
    restorers.append({button, [this, button, key] { button->setOn(link.storedSwitch(key)); }});
}

void PanelControls::restore(std::initializer_list<const char*> keys)
{
    Q_ASSERT(static_cast<qsizetype>(keys.size()) == restorers.size());
    for (const char* const key : keys) {
        const auto found = std::find_if(restorers.cbegin(), restorers.cend(),
                                        [name = QLatin1String(key)](const auto& restorer) {
                                            return restorer.control->objectName() == name;
                                        });
        Q_ASSERT(found != restorers.cend());
        found->restore();
    }
    qDebug() << "已从配置文件加载控件状态";
}
