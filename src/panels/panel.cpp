#include "panels/panel.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"
#include "panels/output_volume.h"

#include <QDebug>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

constexpr int meterInterval = 500;

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

Panel::Panel(PanelModel model, QWidget* parent)
    : QWidget(parent)
    , link(std::move(model))
{
}

Panel::~Panel()
{
    // The controls outlive the link: an editor that loses its focus on the way out must not reach
    // for the device or the file any more.
    for (const Restorer& restorer : restorers)
        restorer.control->blockSignals(true);
}

void Panel::bindKnob(Knob* knob, const char* key, int missing, std::function<void(int)> handler)
{
    connect(knob, &Knob::valueChangedSig, this,
            [this, knob, key, handle = std::move(handler)](int value) {
                handle(value);
                link.store(key, knob->value);
            });
    remember(knob, key, missing);
}

void Panel::bindButton(Button* button, const char* key, std::function<void(bool)> handler)
{
    connect(button, &Button::pressed, this,
            [this, button, key, handle = std::move(handler)](bool on) {
                handle(on);
                link.store(key, button->on);
            });
    remember(button, key);
}

void Panel::bindMicGain(Knob* knob, const char* key, std::uint8_t channel)
{
    bindKnob(knob, key, 0, [this, channel](int value) {
        if (link.device().setMicVolume(channel, static_cast<std::uint16_t>(value * 2)))
            qDebug() << "Mic volume set to:" << value;
        else
            qDebug() << "Failed to set mic volume.";
    });
}

void Panel::bindSwitch(Button* button, const char* key, const SwitchTexts& texts,
                       std::function<bool(std::uint8_t on)> switchInput,
                       std::function<void(bool on)> accepted)
{
    bindButton(
        button, key,
        [texts, switchInput = std::move(switchInput), accepted = std::move(accepted)](bool on) {
            logState(texts.clicked, on, texts.clickedState);
            if (!switchInput(on ? 1 : 0)) {
                qDebug() << texts.failed;
                return;
            }
            if (accepted)
                accepted(on);
            qDebug() << texts.switched;
        });
}

void Panel::bindMonitor(Button* button, const char* key, std::vector<std::size_t> cells,
                        StateText stateText)
{
    bindButton(button, key, [this, cells = std::move(cells), stateText](bool on) {
        if (link.sendGain(cells, on ? 1.0 : 0.0))
            logState("Monitor Mic set to:", on, stateText);
        else
            qDebug() << "Failed to set Monitor Mic.";
    });
}

void Panel::bindPhoneLevel(Knob* knob, const char* key, std::vector<std::size_t> cells,
                           const char* done, const char* failed)
{
    // The widget starts at silence, but a missing key means full phone level.
    constexpr int missing = 0;
    bindKnob(knob, key, missing, [this, cells = std::move(cells), done, failed](int value) {
        const double gain = dbToGain(value);
        if (link.sendGain(cells, gain))
            qDebug() << done << gain;
        else
            qDebug() << failed;
    });
}

void Panel::bindOutput(const OutputTraits& traits, Knob* volume, Button* mute, Button* dim)
{
    new OutputVolume(traits, link, {volume, mute, dim}, this);
    remember(volume, traits.knobKey, volume->minimum);
    remember(mute, traits.muteKey);
    remember(dim, traits.dimKey);
}

void Panel::remember(Knob* knob, const char* key, int missing)
{
    knob->setObjectName(QLatin1String(key));
    restorers.append(
        {knob, [this, knob, key, missing] { knob->setValue(link.storedNumber(key, missing)); }});
}

void Panel::remember(Button* button, const char* key)
{
    button->setObjectName(QLatin1String(key));
    restorers.append({button, [this, button, key] { button->setOn(link.storedSwitch(key)); }});
}

void Panel::restoreState(std::initializer_list<const QWidget*> order)
{
    for (const QWidget* control : order) {
        const auto found =
            std::find_if(restorers.cbegin(), restorers.cend(), [control](const Restorer& restorer) {
                return restorer.control == control;
            });
        Q_ASSERT(found != restorers.cend());
        found->restore();
    }
    qDebug() << "已从配置文件加载控件状态";
}

void Panel::startMeters()
{
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &Panel::updateMeters);
    timer->start(meterInterval);
}

void Panel::updateMeters()
{
    if (!link.readMeters(meter)) {
        qDebug() << "Failed to read meter data from driver.";
        return;
    }
    showLevels(meter);
}
