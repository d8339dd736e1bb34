#include "oracle/driver.h"
#include "oracle/panel.h"
#include "oracle/text.h"

namespace Oracle {

using namespace PanelParts;

namespace {

constexpr KnobTraits gain{"Dial/MicValue", 0, 42, 0, 0};
constexpr KnobTraits volume{"Dial/HeadphoneValue", -80, 6, -80, 0};
constexpr KnobTraits phone{"Dial/OtgToHpValue", -80, 6, 0, 0};

constexpr SwitchTraits switches[] = {
    {{"Button/MicInstrIsChecked", "MIC", "#00ff7f"},
     Driver::instrument,
     1,
     "Mic Instr Button Clicked",
     "INST"},
    {{"Button/Mic20dBIsChecked", "20dB", "#ff7f00"}, Driver::pad, 1, "Mic 20dB Button Clicked"},
    {{"Button/Mic48VIsChecked", "48V", "#ff1111"}, Driver::phantom, 1, "Mic 48V Button Clicked"},
};
constexpr const char* direct = "Button/MonitorMicIsChecked";
constexpr const char* mute = "Button/HeadphoneMuteIsChecked";
constexpr const char* dim = "Button/HeadphoneDimIsChecked";

void sendVolume(World& world, int value)
{
    Panel& panel = *world.panel;
    const double linear = Driver::gain(level(panel.outputs["headphone"], value));
    setCells(panel, {8192, 8193}, linear);
    if (sendMixer(world))
        world.debug(Text::line("Headphone volume set to:", linear));
    else
        world.debug("Failed to set headphone volume.");
    storeKnob(world, volume.key);
}

void sendDirect(World& world, bool on)
{
    setCells(*world.panel, {2048, 2081}, on ? 1.0 : 0.0);
    if (sendMixer(world))
        world.debug(Text::line("Monitor Mic set to:", on ? 1LL : 0LL));
    else
        world.debug("Failed to set Monitor Mic.");
}

void sendPhone(World& world, int value)
{
    const double linear = Driver::gain(value);
    setCells(*world.panel, {2050, 2083}, linear);
    if (sendMixer(world))
        world.debug(Text::line("OTG to HP volume set to:", linear));
    else
        world.debug("Failed to set OTG to HP volume.");
}

void switchMute(World& world, bool on)
{
    Panel& panel = *world.panel;
    world.debug(std::string("Headphone Mute Button Clicked: Mute ") + (on ? "ON" : "OFF"));
    panel.outputs["headphone"].muted = on;
    sendVolume(world, on ? -80 : panel.knobs.at(volume.key).value);
}

void switchDim(World& world, bool on)
{
    Panel& panel = *world.panel;
    world.debug(std::string("Headphone Dim Button Clicked: Dim ") + (on ? "ON" : "OFF"));
    panel.outputs["headphone"].dimmed = on;
    sendVolume(world, panel.knobs.at(volume.key).value);
}

void fillRouting(Panel& panel)
{
    for (std::size_t k = 0; k < 8; ++k)
        setCells(panel, {32 * (4 + k) + k, 32 * (160 + k) + k}, 1.0);
    setCells(panel, {3072, 3105, 4096, 4129, 4160, 4193}, 1.0);
}

void build(World& world)
{
    if (!openDevice(world, {1, 2}))
        return;
    Panel& panel = *world.panel;
    addKnob(panel, gain);
    for (const SwitchTraits& traits : switches)
        addButton(panel, traits.button);
    addButton(panel, {direct, "DIRECT", "#00FFFF"});
    addKnob(panel, volume);
    addButton(panel, {mute, "MUTE", "#00FFFF"});
    addButton(panel, {dim, "DIM", "#00FFFF"});
    addKnob(panel, phone);
    unityOutputs(panel);
    fillRouting(panel);
    startReadOuts(world, 2);
}

void restore(World& world)
{
    for (const SwitchTraits& traits : switches)
        restoreButton(world, traits.button.key);
    restoreButton(world, direct);
    restoreKnob(world, gain);
    restoreKnob(world, volume);
    restoreButton(world, mute);
    restoreButton(world, dim);
    restoreKnob(world, phone);
    world.debug("已从配置文件加载控件状态");
}

void knob(World& world, const std::string& key, int value)
{
    if (key == gain.key) {
        sendMicVolume(world, gain, 1, value);
    } else if (key == volume.key) {
        sendVolume(world, value);
    } else {
        sendPhone(world, value);
        storeKnob(world, phone.key);
    }
}

void button(World& world, const std::string& key, bool on)
{
    for (const SwitchTraits& traits : switches) {
        if (key == traits.button.key)
            sendSwitch(world, traits, on, false);
    }
    if (key == direct)
        sendDirect(world, on);
    else if (key == mute)
        switchMute(world, on);
    else if (key == dim)
        switchDim(world, on);
    storeButton(world, key.c_str());
}

void readOuts(Panel& panel)
{
    panel.readOuts = {Text::level(panel.levels[0]), Text::level(phoneSample(panel))};
}

} // namespace

const Model ka1{"ka1", 1, build, restore, knob, button, readOuts};

} // namespace Oracle
