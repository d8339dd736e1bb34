#include "oracle/driver.h"
#include "oracle/panel.h"
#include "oracle/text.h"

namespace Oracle::Ka1 {

using namespace PanelParts;

namespace {

constexpr KnobTraits gain{"Dial/MicValue", 0, 42, 0, 0};
constexpr KnobTraits volume{"Dial/HeadphoneValue", -80, 6, -80, 0};
constexpr KnobTraits phone{"Dial/OtgToHpValue", -80, 6, 0, 0};

constexpr const char* instrument = "Button/MicInstrIsChecked";
constexpr const char* pad = "Button/Mic20dBIsChecked";
constexpr const char* phantom = "Button/Mic48VIsChecked";
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

} // namespace

void build(World& world)
{
    if (!openDevice(world, {1, 2}))
        return;
    Panel& panel = *world.panel;
    addKnob(panel, gain);
    addButton(panel, {instrument, "MIC", "#00ff7f"});
    addButton(panel, {pad, "20dB", "#ff7f00"});
    addButton(panel, {phantom, "48V", "#ff1111"});
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
    for (const char* key : {instrument, pad, phantom, direct})
        restoreButton(world, key);
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
        Driver::setMicVolume(world, world.panel->device, 1, value * 2);
        world.debug(Text::line("Mic volume set to:", static_cast<long long>(value)));
        storeKnob(world, gain.key);
    } else if (key == volume.key) {
        sendVolume(world, value);
    } else {
        sendPhone(world, value);
        storeKnob(world, phone.key);
    }
}

void button(World& world, const std::string& key, bool on)
{
    Panel& panel = *world.panel;
    if (key == instrument) {
        world.debug("Mic Instr Button Clicked");
        Driver::switchMicInstrument(world, panel.device, 1, on);
        world.debug("Mic instruction switched for channel 1.");
        panel.buttons.at(instrument).caption = on ? "INST" : "MIC";
    } else if (key == pad) {
        world.debug("Mic 20dB Button Clicked");
        Driver::setMic20dB(world, panel.device, 1, on);
        world.debug("Mic 20dB switched for channel 1.");
    } else if (key == phantom) {
        world.debug("Mic 48V Button Clicked");
        Driver::setMic48V(world, panel.device, 1, on);
        world.debug("Mic 48V switched for channel 1.");
    } else if (key == direct) {
        sendDirect(world, on);
    } else if (key == mute) {
        switchMute(world, on);
    } else {
        switchDim(world, on);
    }
    storeButton(world, key.c_str());
}

void readOuts(Panel& panel)
{
    panel.readOuts = {Text::level(panel.levels[0]), Text::level(phoneSample(panel))};
}

} // namespace Oracle::Ka1
