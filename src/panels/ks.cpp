#include "panels/ks.h"

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

// Logs no volume that was set, only one that failed.
const OutputTraits headphoneTraits{
    .cells = {MixerCell::output(0), MixerCell::output(1)},
    .knobKey = "Dial/HeadphoneValue",
    .muteKey = "Button/HeadphoneMuteIsChecked",
    .dimKey = "Button/HeadphoneDimIsChecked",
    .changed = nullptr,
    .report = OutputTraits::Report::nothing,
    .set = nullptr,
    .failed = "Failed to set headphone volume.",
    .muteArgument = OutputTraits::MuteArgument::floor,
    .clickLog = OutputTraits::ClickLog::afterVolume,
    .muteOn = "Headphone Mute Button Clicked: Mute ON",
    .muteOff = "Headphone Mute Button Clicked: Mute OFF",
    .dimOn = "Headphone Dim Button Clicked: Dim ON",
    .dimOff = "Headphone Dim Button Clicked: Dim OFF",
};

// With its leading blank, kept as it has always been: this model differs from the others in it.
constexpr const char* ksCaptionStyle = " font-size: 12px; color: white;";

} // namespace

ks::ks(QWidget* parent)
    : Panel({.openFailed = "Failed to create device in ks.",
             .outputChannels = {1, 2},
             .settingsFile = QStringLiteral("ks.ini")},
            parent)
{
    if (!link.openDevice())
        return;
    link.openSettings();
    createControls();
    buildLayout();
    tabInReadingOrder(layout());
    connectControls();
    link.presetOutputGains();
    startMeters();
    loadState();
}

void ks::createControls()
{
    micKnob = gainKnob(42, 0, this);
    micMeter = readOut();
    micDirect = button(tr("DIRECT"), outputAccent);
    headphoneKnob = volumeKnob(this);
    headphoneMute = outputButton(QStringLiteral("MUTE"), 12);
    headphoneDim = outputButton(QStringLiteral("DIM"), 12);
}

void ks::buildLayout()
{
    QBoxLayout* root = rootLayout(this);
    root->addLayout(micStrip());
    root->addWidget(separator(this));
    root->addLayout(headphoneStrip());
    nameControls();
}

void ks::nameControls()
{
    name(micKnob, tr("MIC"), tr("Gain"));
    name(micMeter, tr("MIC"), tr("Level"));
    name(micDirect, tr("MIC"), micDirect->text());
    name(headphoneKnob, QStringLiteral("HEADPHONE"), tr("Volume"));
    for (Button* toggle : {headphoneMute, headphoneDim})
        name(toggle, QStringLiteral("HEADPHONE"), toggle->text());
}

QLayout* ks::micStrip()
{
    auto* strip = new QVBoxLayout;
    strip->setContentsMargins(10, 10, 20, 10);
    strip->addWidget(title(tr("MIC")));
    strip->addWidget(micKnob);
    strip->addWidget(micMeter);
    strip->addWidget(caption(tr("Gain"), ksCaptionStyle));
    strip->addWidget(micDirect, 0, Qt::AlignHCenter);
    strip->addStretch();
    return strip;
}

QLayout* ks::headphoneStrip()
{
    auto* strip = new QVBoxLayout;
    strip->setContentsMargins(20, 10, 10, 10);
    strip->addWidget(title(QStringLiteral("HEADPHONE")));
    strip->addWidget(headphoneKnob, 0, Qt::AlignHCenter);
    strip->addWidget(caption(tr("Volume"), ksCaptionStyle));
    strip->addLayout(outputButtonRow(headphoneMute, headphoneDim));
    return strip;
}

void ks::connectControls()
{
    bindMicGain(micKnob, "Dial/MicValue", 1);
    bindMonitor(micDirect, "Button/MonitorMicIsChecked",
                {MixerCell::route(0, 0), MixerCell::route(1, 1)}, StateText::word);
    bindOutput(headphoneTraits, headphoneKnob, headphoneMute, headphoneDim);
}

void ks::loadState()
{
    restoreState({micDirect, micKnob, headphoneKnob, headphoneMute, headphoneDim});
}

void ks::showLevels(const MeterBlock& levels)
{
    showLevel(micMeter, sampleToDb(levels[0]));
}
