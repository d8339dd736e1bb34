#include "oracle/panel.h"

#include "oracle/driver.h"
#include "oracle/files.h"
#include "oracle/ini_values.h"
#include "oracle/text.h"

#include <algorithm>

namespace Oracle {

std::string nameOf(Model model)
{
    return model == Model::ka1 ? "ka1" : model == Model::ka2 ? "ka2" : "ks";
}

std::string fileOf(Model model)
{
    return nameOf(model) + ".ini";
}

void buildPanel(World& world, Model model)
{
    world.panel = std::make_unique<Panel>();
    world.panel->model = model;
    world.panel->mixer.assign(8288, 0.0);
    if (model == Model::ka1)
        Ka1::build(world);
    else if (model == Model::ka2)
        Ka2::build(world);
    else
        Ks::build(world);
    if (world.panel->hasControls)
        Files::restore(world, fileOf(model), [&] { restorePanel(world); });
}

void restorePanel(World& world)
{
    const Model model = world.panel->model;
    if (model == Model::ka1)
        Ka1::restore(world);
    else if (model == Model::ka2)
        Ka2::restore(world);
    else
        Ks::restore(world);
}

void knobAnnounces(World& world, const std::string& key)
{
    const int value = world.panel->knobs.at(key).value;
    const Model model = world.panel->model;
    if (model == Model::ka1)
        Ka1::knob(world, key, value);
    else if (model == Model::ka2)
        Ka2::knob(world, key, value);
    else
        Ks::knob(world, key, value);
}

void buttonAnnounces(World& world, const std::string& key)
{
    const bool on = world.panel->buttons.at(key).on;
    const Model model = world.panel->model;
    if (model == Model::ka1)
        Ka1::button(world, key, on);
    else if (model == Model::ka2)
        Ka2::button(world, key, on);
    else
        Ks::button(world, key, on);
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
    if (panel.model == Model::ka1)
        Ka1::readOuts(panel);
    else if (panel.model == Model::ka2)
        Ka2::readOuts(panel);
    else
        Ks::readOuts(panel);
}

namespace PanelParts {

bool openDevice(World& world, std::initializer_list<int> outputs)
{
    Panel& panel = *world.panel;
    if (!Driver::open(world, panel.device)) {
        world.debug("Failed to create device in " + nameOf(panel.model) + '.');
        return false;
    }
    for (const int channel : outputs)
        Driver::setOutVolume(world, panel.device, channel, 100);
    Files::open(world, fileOf(panel.model));
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
    const IniFile file = Files::content(world, fileOf(world.panel->model));
    setKnob(world, traits.key, knobValue(file, traits.key, traits.missing));
}

void restoreButton(World& world, const char* key)
{
    const IniFile file = Files::content(world, fileOf(world.panel->model));
    setButton(world, key, buttonValue(file, key));
}

void storeKnob(World& world, const char* key)
{
    const Panel& panel = *world.panel;
    Files::store(world, fileOf(panel.model), key, std::to_string(panel.knobs.at(key).value));
}

void storeButton(World& world, const char* key)
{
    const Panel& panel = *world.panel;
    Files::store(world, fileOf(panel.model), key, panel.buttons.at(key).on ? "true" : "false");
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
