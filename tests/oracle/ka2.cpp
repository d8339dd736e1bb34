#include "oracle/driver.h"
#include "oracle/panel.h"
#include "oracle/text.h"

#include <functional>

namespace Oracle {

using namespace PanelParts;

namespace {

constexpr KnobTraits gains[] = {{"Dial/Mic1Value", 0, 56, 0, 9}, {"Dial/Mic2Value", 0, 56, 0, 9}};
constexpr KnobTraits speaker{"Dial/SpeakerValue", -80, 6, -80, 0};
constexpr KnobTraits headphone{"Dial/HeadphoneValue", -80, 6, -80, 0};
constexpr KnobTraits phoneToHp{"Dial/OtgToHpValue", -80, 6, 0, 0};
constexpr KnobTraits phoneToSp{"Dial/OtgToSPValue", -80, 6, 0, 0};

constexpr SwitchTraits switches[] = {
    {{"Button/Mic120dBIsChecked", "20dB", "#ff7f00"}, Driver::pad, 1, "Mic 20dB Button Clicked"},
    {{"Button/Mic148VIsChecked", "48V", "#ff1111"}, Driver::phantom, 1, "Mic 48V Button Clicked"},
    {{"Button/Mic220dBIsChecked", "20dB", "#ff7f00"}, Driver::pad, 2, "Mic 20dB Button Clicked"},
    {{"Button/Mic248VIsChecked", "48V", "#ff1111"}, Driver::phantom, 2, "Mic 48V Button Clicked"},
};
constexpr const char* directs[] = {"Button/MonitorMic1IsChecked", "Button/MonitorMic2IsChecked"};
constexpr const char* speakerMute = "Button/SpeakerMuteIsChecked";
constexpr const char* speakerDim = "Button/SpeakerDimIsChecked";
constexpr const char* headphoneMute = "Button/HeadphoneMuteIsChecked";
constexpr const char* headphoneDim = "Button/HeadphoneDimIsChecked";

void saveState(World& world)
{
    world.debug("控件状态已保存到配置文件");
}

int valueOf(const World& world, const KnobTraits& knob)
{
    return world.panel->knobs.at(knob.key).value;
}

void sendSpeaker(World& world, int value)
{
    Panel& panel = *world.panel;
    world.debug(Text::line("Speaker Knob value changed:", static_cast<long long>(value)));
    const int decibels = level(panel.outputs["speaker"], value);
    setCells(panel, {8192, 8193}, Driver::gain(decibels));
    if (sendMixer(world))
        world.debug(Text::line("Speaker volume set to:", static_cast<long long>(decibels)));
    else
        world.debug("Failed to set speaker volume.");
    storeKnob(world, speaker.key);
    saveState(world);
}

void sendHeadphone(World& world, int value)
{
    Panel& panel = *world.panel;
    world.debug(Text::line("Headphone Knob value changed:", static_cast<long long>(value)));
    const int decibels = level(panel.outputs["headphone"], value);
    setCells(panel, {8196, 8197}, Driver::gain(decibels));
    if (sendMixer(world))
        world.debug(Text::line("Headphone volume set to:", static_cast<long long>(decibels)));
    else
        world.debug("Failed to set headphone volume.");
    storeKnob(world, headphone.key);
    saveState(world);
}

void sendPhone(World& world, const KnobTraits& knob, int value)
{
    const bool toSpeaker = &knob == &phoneToSp;
    const double linear = Driver::gain(value);
    if (toSpeaker)
        setCells(*world.panel, {2050, 2083}, linear);
    else
        setCells(*world.panel, {2178, 2211}, linear);
    if (!sendMixer(world))
        world.debug("Failed to set OTG to HP volume.");
    else if (toSpeaker)
        world.debug(Text::line("OTG to SP volume set to:", linear));
    else
        world.debug(Text::line("OTG to HP volume set to:", linear));
    storeKnob(world, knob.key);
    saveState(world);
}

void switchDirect(World& world, std::size_t mic, bool on)
{
    setCells(*world.panel, {2048 + mic, 2080 + mic, 2176 + mic, 2208 + mic}, on ? 1.0 : 0.0);
    if (sendMixer(world))
        world.debug(Text::lineTruth("Monitor Mic set to:", on));
    else
        world.debug("Failed to set Monitor Mic.");
}

void switchMic(World& world, const std::string& key, bool on)
{
    for (const SwitchTraits& traits : switches) {
        if (key == traits.button.key)
            sendSwitch(world, traits, on, true);
    }
    for (const std::size_t mic : {0U, 1U}) {
        if (key == directs[mic])
            switchDirect(world, mic, on);
    }
}

/// Those of one input, in the order in which they stand.
void eachSwitch(std::size_t mic, const std::function<void(const ButtonTraits&)>& visit)
{
    for (const SwitchTraits& traits : switches) {
        if (traits.channel == static_cast<int>(mic) + 1)
            visit(traits.button);
    }
    visit({directs[mic], "DIRECT", "#00FFFF"});
}

void switchOutput(World& world, const std::string& key, bool on)
{
    Panel& panel = *world.panel;
    if (key == speakerMute) {
        panel.outputs["speaker"].muted = on;
        sendSpeaker(world, on ? -80 : valueOf(world, speaker));
        world.debug(std::string("Speaker Mute Button Clicked: Mute ") + (on ? "ON" : "OFF"));
    } else if (key == speakerDim) {
        panel.outputs["speaker"].dimmed = on;
        sendSpeaker(world, valueOf(world, speaker));
    } else if (key == headphoneMute) {
        panel.outputs["headphone"].muted = on;
        sendHeadphone(world, valueOf(world, headphone));
    } else if (key == headphoneDim) {
        panel.outputs["headphone"].dimmed = on;
        sendHeadphone(world, valueOf(world, headphone));
    }
}

void addControls(Panel& panel)
{
    for (const std::size_t mic : {0U, 1U}) {
        addKnob(panel, gains[mic]);
        eachSwitch(mic, [&](const ButtonTraits& button) { addButton(panel, button); });
    }
    addKnob(panel, speaker);
    addButton(panel, {speakerMute, "MUTE", "#00FFFF"});
    addButton(panel, {speakerDim, "DIM", "#00FFFF"});
    addKnob(panel, phoneToSp);
    addKnob(panel, headphone);
    addButton(panel, {headphoneMute, "MUTE", "#00FFFF"});
    addButton(panel, {headphoneDim, "DIM", "#00FFFF"});
    addKnob(panel, phoneToHp);
}

void build(World& world)
{
    if (!openDevice(world, {1, 2, 5, 6}))
        return;
    addControls(*world.panel);
    unityOutputs(*world.panel);
    startReadOuts(world, 4);
}

void restore(World& world)
{
    const auto restoreOne = [&](const ButtonTraits& button) { restoreButton(world, button.key); };
    eachSwitch(0, restoreOne);
    restoreKnob(world, gains[0]);
    restoreKnob(world, gains[1]);
    eachSwitch(1, restoreOne);
    restoreKnob(world, speaker);
    restoreButton(world, speakerMute);
    restoreButton(world, speakerDim);
    restoreKnob(world, headphone);
    restoreButton(world, headphoneMute);
    restoreButton(world, headphoneDim);
    restoreKnob(world, phoneToHp);
    restoreKnob(world, phoneToSp);
    world.debug("已从配置文件加载控件状态");
}

void knob(World& world, const std::string& key, int value)
{
    for (const int channel : {1, 2}) {
        const KnobTraits& gain = gains[channel - 1];
        if (key != gain.key)
            continue;
        sendMicVolume(world, gain, channel, value);
        saveState(world);
    }
    if (key == speaker.key)
        sendSpeaker(world, value);
    else if (key == headphone.key)
        sendHeadphone(world, value);
    else if (key == phoneToHp.key)
        sendPhone(world, phoneToHp, value);
    else if (key == phoneToSp.key)
        sendPhone(world, phoneToSp, value);
}

void button(World& world, const std::string& key, bool on)
{
    switchMic(world, key, on);
    switchOutput(world, key, on);
    storeButton(world, key.c_str());
    saveState(world);
}

void readOuts(Panel& panel)
{
    const std::string phone = Text::level(phoneSample(panel));
    panel.readOuts = {Text::level(panel.levels[0]), Text::level(panel.levels[1]), phone, phone};
}

} // namespace

const Model ka2{"ka2", 2, build, restore, knob, button, readOuts};

} // namespace Oracle
