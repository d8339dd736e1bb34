#include "panels/panel_controls.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"

#include <QDebug>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr int floorDb = -80;
constexpr int dimDb = 20;

/// What an output sounds at, in dB, when its knob says `dB`.
int levelOf(const OutputWidgets& output, int dB)
{
    if (output.mute->on)
        return floorDb;
    return output.dim->on ? dB - dimDb : dB;
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

PanelControls::Change PanelControls::bindKnob(Knob* knob, const char* key, int missing, Change send)
{
    Change change = [this, knob, key, send = std::move(send)](int value) {
        send(value);
        link.store(key, knob->value);
    };
    QObject::connect(knob, &Knob::valueChangedSig, knob, change);
    knob->setObjectName(QLatin1String(key));
    restorers.append(
        {knob, [this, knob, key, missing] { knob->setValue(link.storedNumber(key, missing)); }});
    return change;
}

void PanelControls::bindButton(Button* button, const char* key, Toggle send)
{
    QObject::connect(button, &Button::pressed, button,
                     [this, button, key, send = std::move(send)](bool on) {
                         send(on);
                         link.store(key, button->on);
                     });
    button->setObjectName(QLatin1String(key));
    restorers.append({button, [this, button, key] { button->setOn(link.storedSwitch(key)); }});
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
        if (inputSwitch.clickedWithState)
            qDebug() << inputSwitch.clicked << on;
        else
            qDebug() << inputSwitch.clicked;
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
    bindButton(button, monitor.key, [this, monitor](bool on) {
        if (!link.sendGain(monitor.cells, on ? 1.0 : 0.0))
            qDebug() << "Failed to set Monitor Mic.";
        else if (monitor.stateAsNumber)
            qDebug() << "Monitor Mic set to:" << (on ? 1 : 0);
        else
            qDebug() << "Monitor Mic set to:" << on;
    });
}

void PanelControls::bind(Knob* knob, const PhoneLevel& level)
{
    // The widget starts at silence, but a missing key means full phone level.
    constexpr int missing = 0;
    bindKnob(knob, level.key, missing, [this, level](int value) {
        const double gain = dbToGain(value);
        if (link.sendGain(level.cells, gain))
            qDebug() << level.set << gain;
        else
            qDebug() << level.failed;
    });
}

void PanelControls::bind(const OutputWidgets& widgets, const Output& output)
{
    Knob* const knob = widgets.volume;
    const auto send = [this, widgets, output](int dB) {
        if (output.changed != nullptr)
            qDebug() << output.changed << dB;
        const int level = levelOf(widgets, dB);
        const double gain = dbToGain(level);
        if (!link.sendGain(output.cells, gain))
            qDebug() << output.failed;
        else if (output.set != nullptr && output.setInDb)
            qDebug() << output.set << level;
        else if (output.set != nullptr)
            qDebug() << output.set << gain;
    };
    const Change changeVolume = bindKnob(knob, output.volumeKey, knob->minimum, send);

    const auto bindSwitch = [&](Button* button, const char* key, const char* clicked,
                                bool changesToFloor) {
        bindButton(button, key, [=, first = output.clickedFirst](bool on) {
            const auto logClick = [=] {
                if (clicked != nullptr)
                    qDebug() << clicked << (on ? "ON" : "OFF");
            };
            if (first)
                logClick();
            changeVolume(on && changesToFloor ? floorDb : knob->value);
            if (!first)
                logClick();
        });
    };
    // Where muting is logged it changes the volume to the floor, elsewhere to what it is. Only the
    // `changed` line tells, as a muted output is silent either way: log readers know it so.
    bindSwitch(widgets.mute, output.muteKey, output.muteClicked, output.muteClicked != nullptr);
    bindSwitch(widgets.dim, output.dimKey, output.dimClicked, false);
}

void PanelControls::restoreLast(const Knob* knob)
{
    const auto its =
        std::find_if(restorers.begin(), restorers.end(),
                     [knob](const Restorer& restorer) { return restorer.control == knob; });
    std::rotate(its, std::next(its), restorers.end());
}

void PanelControls::restore()
{
    for (const Restorer& restorer : std::as_const(restorers))
        restorer.restore();
    qDebug() << "已从配置文件加载控件状态";
}
