#include "oracle/driver.h"
#include "oracle/panel.h"
#include "oracle/text.h"

namespace Oracle {

using namespace PanelParts;

namespace {

constexpr KnobTraits gain{"Dial/MicValue", 0, 42, 0, 0};
constexpr KnobTraits volume{"Dial/HeadphoneValue", -80, 6, -80, 0};

constexpr const char* direct = "Button/MonitorMicIsChecked";
constexpr const char* mute = "Button/HeadphoneMuteIsChecked";
constexpr const char* dim = "Button/HeadphoneDimIsChecked";

void sendVolume(World& world, int value)
{
    Panel& panel = *world.panel;
    setCells(panel, {8192, 8193}, Driver::gain(level(panel.outputs["headphone"], value)));
    if (!sendMixer(world))
        world.debug("Failed to set headphone volume.");
    storeKnob(world, volume.key);
}

void build(World& world)
{
    if (!openDevice(world, {1, 2}))
        return;
    Panel& panel = *world.panel;
    addKnob(panel, gain);
    addButton(panel, {direct, "DIRECT", "#00FFFF"});
    addKnob(panel, volume);
    addButton(panel, {mute, "MUTE", "#00FFFF"});
    addButton(panel, {dim, "DIM", "#00FFFF"});
    unityOutputs(panel);
    startReadOuts(world, 1);
}

void restore(World& world)
{
    restoreButton(world, direct);
    restoreKnob(world, gain);
    restoreKnob(world, volume);
    restoreButton(world, mute);
    restoreButton(world, dim);
    world.debug("已从配置文件加载控件状态");
}

void knob(World& world, const std::string& key, int value)
{
    if (key == volume.key) {
        sendVolume(world, value);
        return;
    }
    sendMicVolume(world, gain, 1, value);
}

void button(World& world, const std::string& key, bool on)
{
    Panel& panel = *world.panel;
    const char* const state = on ? "ON" : "OFF";
    if (key == direct) {
        setCells(panel, {2048, 2081}, on ? 1.0 : 0.0);
        if (sendMixer(world))
            world.debug(Text::lineTruth("Monitor Mic set to:", on));
        else
            world.debug("Failed to set Monitor Mic.");
    } else if (key == mute) {
        panel.outputs["headphone"].muted = on;
        sendVolume(world, on ? -80 : panel.knobs.at(volume.key).value);
        world.debug(std::string("Headphone Mute Button Clicked: Mute ") + state);
    } else {
        panel.outputs["headphone"].dimmed = on;
        sendVolume(world, panel.knobs.at(volume.key).value);
        world.debug(std::string("Headphone Dim Button Clicked: Dim ") + state);
    }
    storeButton(world, key.c_str());
}

void readOuts(Panel& panel)
{
    panel.readOuts = {Text::level(panel.levels[0])};
}

} // namespace

const Model ks{"ks", 15, build, restore, knob, button, readOuts};

} // namespace Oracle
