#include "panels/ka1.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"
#include "panels/output_volume.h"
#include "panels/panel_widgets.h"

#include <QBoxLayout>
#include <QFrame>
#include <QLabel>

using namespace PanelWidgets;

namespace {

const OutputTraits headphoneTraits{
    .cells = {MixerCell::output(0), MixerCell::output(1)},
    .knobKey = "Dial/HeadphoneValue",
    .muteKey = "Button/HeadphoneMuteIsChecked",
    .dimKey = "Button/HeadphoneDimIsChecked",
    .changed = nullptr,
    .report = OutputTraits::Report::gain,
    .set = "Headphone volume set to:",
    .failed = "Failed to set headphone volume.",
    .muteArgument = OutputTraits::MuteArgument::floor,
    .clickLog = OutputTraits::ClickLog::beforeVolume,
    .muteOn = "Headphone Mute Button Clicked: Mute ON",
    .muteOff = "Headphone Mute Button Clicked: Mute OFF",
    .dimOn = "Headphone Dim Button Clicked: Dim ON",
    .dimOff = "Headphone Dim Button Clicked: Dim OFF",
};

constexpr SwitchTexts instTexts{"Mic Instr Button Clicked", StateText::none,
                                "Mic instruction switched for channel 1.",
                                "Failed to switch mic instruction."};
constexpr SwitchTexts padTexts{"Mic 20dB Button Clicked", StateText::none,
                               "Mic 20dB switched for channel 1.", "Failed to switch mic 20dB."};
constexpr SwitchTexts phantomTexts{"Mic 48V Button Clicked", StateText::none,
                                   "Mic 48V switched for channel 1.", "Failed to switch mic 48V."};

constexpr std::uint8_t micChannel = 1;

} // namespace

ka1::ka1(QWidget* parent)
    : Panel({.openFailed = "Failed to create device in ka1.",
             .outputChannels = {1, 2},
             .settingsFile = QStringLiteral("ka1.ini")},
            parent)
{
    if (!link.openDevice())
        return;
    link.openSettings();
    createControls();
    buildLayout();
    tabInReadingOrder(layout());
    connectControls();
    presetMixer();
    startMeters();
    loadState();
}

void ka1::createControls()
{
    micKnob = gainKnob(42, 0, this);
    micMeter = readOut(tr("-160 dB"));
    instButton = button(tr("MIC"), micAccent);
    padButton = button(tr("20dB"), padAccent);
    phantomButton = button(tr("48V"), phantomAccent);
    micDirect = button(tr("DIRECT"), outputAccent);

    headphoneKnob = volumeKnob(this);
    headphoneMute = outputButton(tr("MUTE"), 10);
    headphoneDim = outputButton(tr("DIM"), 10);
    otgToHpKnob = phoneKnob(this);
    otgHpMeter = readOut(tr("-160 dB"));
}

void ka1::buildLayout()
{
    QBoxLayout* root = rootLayout(this);
    root->addLayout(inputStrip());
    root->addWidget(separator(this));
    root->addLayout(headphoneStrip());
    nameControls();
}

void ka1::nameControls()
{
    name(micKnob, tr("INPUT"), tr("Gain"));
    name(micMeter, tr("INPUT"), tr("Level"));
    // By what it switches on: its own text says which input is on now.
    name(instButton, tr("INPUT"), tr("INST"));
    for (Button* toggle : {padButton, phantomButton, micDirect})
        name(toggle, tr("INPUT"), toggle->text());
    name(headphoneKnob, tr("HEADPHONE"), tr("Volume"));
    for (Button* toggle : {headphoneMute, headphoneDim})
        name(toggle, tr("HEADPHONE"), toggle->text());
    otgToHpKnob->setAccessibleName(tr("Phone To HP Volume"));
    name(otgHpMeter, tr("Phone To HP Volume"), tr("Level"));
}

QLayout* ka1::inputStrip()
{
    auto* buttons = new QVBoxLayout;
    buttons->setAlignment(Qt::AlignCenter);
    for (Button* toggle : {instButton, padButton, phantomButton, micDirect})
        buttons->addWidget(toggle);

    auto* strip = new QVBoxLayout;
    strip->setContentsMargins(10, 10, 20, 10);
    strip->addWidget(title(tr("INPUT")));
    strip->addWidget(micKnob);
    strip->addWidget(micMeter);
    strip->addWidget(caption(tr("Gain")));
    // Takes the height in which the other strip is taller, so that both headings stand level.
    strip->addLayout(buttons, 1);
    return strip;
}

QLayout* ka1::headphoneStrip()
{
    auto* volume = new QHBoxLayout;
    volume->addWidget(headphoneKnob);

    auto* phoneTexts = new QVBoxLayout;
    phoneTexts->setAlignment(Qt::AlignCenter);
    phoneTexts->addWidget(otgHpMeter);
    phoneTexts->addWidget(caption(tr("Phone To HP Volume"), smallCaptionStyle));

    auto* phone = new QHBoxLayout;
    phone->setAlignment(Qt::AlignCenter);
    phone->setSpacing(8);
    phone->addWidget(otgToHpKnob);
    phone->addLayout(phoneTexts);

    auto* strip = new QVBoxLayout;
    strip->setAlignment(Qt::AlignCenter);
    strip->setContentsMargins(20, 10, 10, 10);
    strip->addWidget(title(tr("HEADPHONE")));
    strip->addLayout(volume);
    strip->addWidget(caption(tr("Volume")));
    strip->addLayout(outputButtonRow(headphoneMute, headphoneDim));
    strip->addLayout(phone);
    strip->addStretch();
    return strip;
}

void ka1::connectControls()
{
    bindMicGain(micKnob, "Dial/MicValue", micChannel);
    bindSwitch(
        instButton, "Button/MicInstrIsChecked", instTexts,
        [this](std::uint8_t on) { return link.device().switchMicInstrument(micChannel, on); },
        [this](bool on) { instButton->setText(on ? tr("INST") : tr("MIC")); });
    bindSwitch(padButton, "Button/Mic20dBIsChecked", padTexts,
               [this](std::uint8_t on) { return link.device().setMic20dB(micChannel, on); });
    bindSwitch(phantomButton, "Button/Mic48VIsChecked", phantomTexts,
               [this](std::uint8_t on) { return link.device().setMic48V(micChannel, on); });
    bindMonitor(micDirect, "Button/MonitorMicIsChecked",
                {MixerCell::route(0, 0), MixerCell::route(1, 1)}, StateText::number);
    bindOutput(headphoneTraits, headphoneKnob, headphoneMute, headphoneDim);
    bindPhoneLevel(otgToHpKnob, "Dial/OtgToHpValue",
                   {MixerCell::route(2, 0), MixerCell::route(3, 1)},
                   "OTG to HP volume set to:", "Failed to set OTG to HP volume.");
}

void ka1::presetMixer()
{
    link.presetOutputGains();
    for (std::size_t k = 0; k < 8; ++k) {
        link.presetGain(MixerCell::at(4 + k, k), 1.0);
        link.presetGain(MixerCell::at(160 + k, k), 1.0);
    }
    for (const std::size_t row : {96U, 128U, 130U}) {
        link.presetGain(MixerCell::at(row, 0), 1.0);
        link.presetGain(MixerCell::at(row + 1, 1), 1.0);
    }
}

void ka1::loadState()
{
    restoreState({instButton, padButton, phantomButton, micDirect, micKnob, headphoneKnob,
                  headphoneMute, headphoneDim, otgToHpKnob});
}

void ka1::showLevels(const MeterBlock& levels)
{
    showLevel(micMeter, sampleToDb(levels[0]));
    showLevel(otgHpMeter, phoneLevelDb(levels[2], levels[3]));
}
