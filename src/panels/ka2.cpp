#include "panels/ka2.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"
#include "panels/output_volume.h"
#include "panels/panel_widgets.h"

#include <QBoxLayout>
#include <QFrame>
#include <QLabel>

using namespace PanelWidgets;

struct ka2::MicTraits
{
    std::uint8_t channel;
    std::size_t input; ///< source column of the mixer
    const char* gainKey;
    const char* padKey;
    const char* phantomKey;
    const char* directKey;
};

namespace {

// Unlike the smaller models, outputs 0 and 1 are the speakers here; the headphones are 4 and 5.
// Of the two mute buttons only the speakers' is logged and runs its volume handler with the floor.
const OutputTraits speakerTraits{
    .cells = {MixerCell::output(0), MixerCell::output(1)},
    .knobKey = "Dial/SpeakerValue",
    .muteKey = "Button/SpeakerMuteIsChecked",
    .dimKey = "Button/SpeakerDimIsChecked",
    .changed = "Speaker Knob value changed:",
    .report = OutputTraits::Report::level,
    .set = "Speaker volume set to:",
    .failed = "Failed to set speaker volume.",
    .muteArgument = OutputTraits::MuteArgument::floor,
    .clickLog = OutputTraits::ClickLog::afterVolume,
    .muteOn = "Speaker Mute Button Clicked: Mute ON",
    .muteOff = "Speaker Mute Button Clicked: Mute OFF",
    .dimOn = nullptr,
    .dimOff = nullptr,
};

const OutputTraits headphoneTraits{
    .cells = {MixerCell::output(4), MixerCell::output(5)},
    .knobKey = "Dial/HeadphoneValue",
    .muteKey = "Button/HeadphoneMuteIsChecked",
    .dimKey = "Button/HeadphoneDimIsChecked",
    .changed = "Headphone Knob value changed:",
    .report = OutputTraits::Report::level,
    .set = "Headphone volume set to:",
    .failed = "Failed to set headphone volume.",
    .muteArgument = OutputTraits::MuteArgument::knobValue,
    .clickLog = OutputTraits::ClickLog::afterVolume,
    .muteOn = nullptr,
    .muteOff = nullptr,
    .dimOn = nullptr,
    .dimOff = nullptr,
};

// The texts name channel 1 for both microphones: log readers know them so.
constexpr SwitchTexts padTexts{"Mic 20dB Button Clicked", StateText::word,
                               "Mic 20dB switched for channel 1.", "Failed to switch mic 20dB."};
constexpr SwitchTexts phantomTexts{"Mic 48V Button Clicked", StateText::word,
                                   "Mic 48V switched for channel 1.", "Failed to switch mic 48V."};

} // namespace

ka2::ka2(QWidget* parent)
    : Panel({.openFailed = "Failed to create device in ka2.",
             .outputChannels = {1, 2, 5, 6},
             .settingsFile = QStringLiteral("ka2.ini"),
             .savedText = "控件状态已保存到配置文件"},
            parent)
{
    if (!link.openDevice())
        return;
    link.openSettings();
    mic1 = createMicStrip();
    mic2 = createMicStrip();
    headphone = createOutputStrip();
    speaker = createOutputStrip();
    buildLayout();
    tabInReadingOrder(layout());
    connectControls();
    link.presetOutputGains();
    startMeters();
    loadState();
}

ka2::MicStrip ka2::createMicStrip()
{
    return {.gain = gainKnob(56, 9, this),
            .pad = button(QStringLiteral("20dB"), padAccent),
            .phantom = button(QStringLiteral("48V"), phantomAccent),
            .direct = button(tr("DIRECT"), outputAccent),
            .meter = readOut()};
}

ka2::OutputStrip ka2::createOutputStrip()
{
    return {.volume = volumeKnob(this),
            .mute = outputButton(QStringLiteral("MUTE"), 12),
            .dim = outputButton(QStringLiteral("DIM"), 12),
            .phone = phoneKnob(this),
            .phoneMeter = readOut()};
}

void ka2::buildLayout()
{
    QBoxLayout* root = rootLayout(this);
    root->addLayout(layOut(mic1, tr("MIC1")));
    root->addLayout(layOut(mic2, tr("MIC2")));
    root->addWidget(separator(this));
    root->addLayout(layOut(speaker, tr("SPEAKER"), tr("Phone To SP Volume")));
    root->addLayout(layOut(headphone, tr("HEADPHONE"), tr("Phone To HP Volume")));
}

QLayout* ka2::layOut(const MicStrip& strip, const QString& heading)
{
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(10, 10, 20, 10);
    layout->addWidget(title(heading));
    layout->addWidget(strip.gain);
    layout->addWidget(strip.meter);
    layout->addWidget(caption(tr("Gain")));
    for (Button* toggle : {strip.pad, strip.phantom, strip.direct})
        layout->addWidget(toggle, 0, Qt::AlignHCenter);
    layout->addStretch();

    name(strip.gain, heading, tr("Gain"));
    name(strip.meter, heading, tr("Level"));
    for (Button* toggle : {strip.pad, strip.phantom, strip.direct})
        name(toggle, heading, toggle->text());
    return layout;
}

QLayout* ka2::layOut(const OutputStrip& strip, const QString& heading, const QString& phoneCaption)
{
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(20, 10, 10, 10);
    layout->addWidget(title(heading));
    layout->addWidget(strip.volume, 0, Qt::AlignHCenter);
    layout->addWidget(caption(tr("Volume")));
    layout->addLayout(outputButtonRow(strip.mute, strip.dim));
    layout->addWidget(strip.phone, 0, Qt::AlignHCenter);
    layout->addWidget(strip.phoneMeter);
    layout->addWidget(caption(phoneCaption, smallCaptionStyle));

    name(strip.volume, heading, tr("Volume"));
    for (Button* toggle : {strip.mute, strip.dim})
        name(toggle, heading, toggle->text());
    strip.phone->setAccessibleName(phoneCaption);
    name(strip.phoneMeter, phoneCaption, tr("Level"));
    return layout;
}

void ka2::connectControls()
{
    connectMic(mic1, {.channel = 1,
                      .input = 0,
                      .gainKey = "Dial/Mic1Value",
                      .padKey = "Button/Mic120dBIsChecked",
                      .phantomKey = "Button/Mic148VIsChecked",
                      .directKey = "Button/MonitorMic1IsChecked"});
    connectMic(mic2, {.channel = 2,
                      .input = 1,
                      .gainKey = "Dial/Mic2Value",
                      .padKey = "Button/Mic220dBIsChecked",
                      .phantomKey = "Button/Mic248VIsChecked",
                      .directKey = "Button/MonitorMic2IsChecked"});
    bindOutput(speakerTraits, speaker.volume, speaker.mute, speaker.dim);
    bindOutput(headphoneTraits, headphone.volume, headphone.mute, headphone.dim);
    // The failure text names HP for the speakers too: log readers know it so.
    bindPhoneLevel(speaker.phone, "Dial/OtgToSPValue",
                   {MixerCell::route(2, 0), MixerCell::route(3, 1)},
                   "OTG to SP volume set to:", "Failed to set OTG to HP volume.");
    bindPhoneLevel(headphone.phone, "Dial/OtgToHpValue",
                   {MixerCell::route(2, 4), MixerCell::route(3, 5)},
                   "OTG to HP volume set to:", "Failed to set OTG to HP volume.");
}

void ka2::connectMic(const MicStrip& strip, const MicTraits& traits)
{
    const std::uint8_t channel = traits.channel;
    bindMicGain(strip.gain, traits.gainKey, channel);
    bindSwitch(strip.pad, traits.padKey, padTexts,
               [this, channel](std::uint8_t on) { return link.device().setMic20dB(channel, on); });
    bindSwitch(strip.phantom, traits.phantomKey, phantomTexts,
               [this, channel](std::uint8_t on) { return link.device().setMic48V(channel, on); });
    // A microphone is heard on both sides of both outputs.
    bindMonitor(strip.direct, traits.directKey,
                {MixerCell::route(traits.input, 0), MixerCell::route(traits.input, 1),
                 MixerCell::route(traits.input, 4), MixerCell::route(traits.input, 5)},
                StateText::word);
}

void ka2::loadState()
{
    restoreState({mic1.pad, mic1.phantom, mic1.direct, mic1.gain, mic2.gain, mic2.pad, mic2.phantom,
                  mic2.direct, speaker.volume, speaker.mute, speaker.dim, headphone.volume,
                  headphone.mute, headphone.dim, headphone.phone, speaker.phone});
}

void ka2::showLevels(const MeterBlock& levels)
{
    showLevel(mic1.meter, sampleToDb(levels[0]));
    showLevel(mic2.meter, sampleToDb(levels[1]));
    const double phone = phoneLevelDb(levels[2], levels[3]);
    showLevel(headphone.phoneMeter, phone);
    showLevel(speaker.phoneMeter, phone);
}
