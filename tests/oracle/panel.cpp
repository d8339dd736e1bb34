#include "oracle/panel.h"

#include "oracle/driver.h"
#include "oracle/files.h"
#include "oracle/ini_values.h"
#include "oracle/text.h"

#include <algorithm>

namespace Oracle {

void buildPanel(World& world, const Model& model)
{
    world.panel = std::make_unique<Panel>();
    world.panel->model = &model;
    world.panel->mixer.assign(8288, 0.0);
    model.build(world);
    if (world.panel->hasControls)
        Files::restore(world, model.file(), [&] { model.restore(world); });
}

void knobAnnounces(World& world, const std::string& key)
{
    world.panel->model->knob(world, key, world.panel->knobs.at(key).value);
}

void buttonAnnounces(World& world, const std::string& key)
{
    world.panel->model->button(world, key, world.panel->buttons.at(key).on);
}

void setKnob(World& world, const std::string& key, long long value)
{
    Knob& knob = world.panel->knobs.at(key);
    knob.value = static_cast<int>(
        std::max<long long>(std::min<long long>(value, knob.maximum), knob.minimum));
    knobAnnounces(world, key);
}

void setButton(World& world, const std::string& key, bool on)
{
    world.panel->buttons.at(key).on = on;
    buttonAnnounces(world, key);
}

void updateReadOuts(World& world)
{
    Panel& panel = *world.panel;
    if (!Driver::readLevels(world, panel.device, panel.levels)) {
        world.debug("Failed to read meter data from driver.");
        return;
    }
    panel.model->readOuts(panel);
}

namespace PanelParts {

bool openDevice(World& world, std::initializer_list<int> outputs)
{
    Panel& panel = *world.panel;
    if (!Driver::open(world, panel.device)) {
        world.debug(std::string("Failed to create device in ") + panel.model->name + '.');
        return false;
    }
    bool accepted = true; // By the last one: nobody asks about the others.
    for (const int channel : outputs)
        accepted = Driver::setOutVolume(world, panel.device, channel, 100);
    if (!accepted) {
        world.debug("Failed to set output volume.");
        return false;
    }
    Files::open(world, panel.model->file());
    panel.hasControls = true;
    return true;
}

void addKnob(Panel& panel, const KnobTraits& traits)
{
    panel.knobs[traits.key] = {traits.minimum, traits.maximum, traits.minimum, traits.offset, 0, 0};
    panel.order.emplace_back(traits.key);
}

void addButton(Panel& panel, const ButtonTraits& traits)
{
    panel.buttons[traits.key] = {traits.caption, traits.accent, false};
    panel.order.emplace_back(traits.key);
}

void unityOutputs(Panel& panel)
{
    std::fill(panel.mixer.begin() + 8192, panel.mixer.end(), 1.0);
}

void startReadOuts(World& world, std::size_t labels)
{
    world.panel->readOuts.assign(labels, "-160 dB");
    world.time.start(Timer::readOuts, 500);
}

void restoreKnob(World& world, const KnobTraits& traits)
{
    const IniFile file = Files::content(world, world.panel->model->file());
    setKnob(world, traits.key, knobValue(file, traits.key, traits.missing));
}

void restoreButton(World& world, const char* key)
{
    const IniFile file = Files::content(world, world.panel->model->file());
    setButton(world, key, buttonValue(file, key));
}

void storeKnob(World& world, const char* key)
{
    const Panel& panel = *world.panel;
    Files::store(world, panel.model->file(), key, std::to_string(panel.knobs.at(key).value));
}

void storeButton(World& world, const char* key)
{
    const Panel& panel = *world.panel;
    Files::store(world, panel.model->file(), key, panel.buttons.at(key).on ? "true" : "false");
}

void setCells(Panel& panel, std::initializer_list<std::size_t> cells, double gain)
{
    for (const std::size_t cell : cells)
        panel.mixer[cell] = gain;
}

bool sendMixer(World& world)
{
    return Driver::writeMixer(world, world.panel->device, world.panel->mixer);
}

void sendSwitch(World& world, const SwitchTraits& traits, bool on, bool tellsState)
{
    std::string name = traits.command.name;
    world.debug(tellsState ? Text::lineTruth(traits.clicked, on) : traits.clicked);
    if (!Driver::set(world, world.panel->device, traits.command, traits.channel, on)) {
        world.debug("Failed to switch " + name + '.');
        return;
    }
    if (traits.captionWhenOn != nullptr)
        world.panel->buttons.at(traits.button.key).caption =
            on ? traits.captionWhenOn : traits.button.caption;
    name.front() = 'M';
    world.debug(name + " switched for channel 1."); // Whatever the channel.
}

void sendMicVolume(World& world, const KnobTraits& traits, int channel, int value)
{
    if (Driver::setMicVolume(world, world.panel->device, channel, value * 2))
        world.debug(Text::line("Mic volume set to:", static_cast<long long>(value)));
    else
        world.debug("Failed to set mic volume.");
    storeKnob(world, traits.key);
}

int level(const Output& output, int value)
{
    if (output.muted)
        return -80;
    return output.dimmed ? value - 20 : value;
}

std::int32_t phoneSample(const Panel& panel)
{
    const auto sum =
        static_cast<std::uint32_t>(panel.levels[2]) + static_cast<std::uint32_t>(panel.levels[3]);
    return static_cast<std::int32_t>(sum) / 2;
}

} // namespace PanelParts
} // namespace Oracle
