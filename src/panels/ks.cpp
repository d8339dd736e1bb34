#include "panels/ks.h"

#include "panels/output_volume.h"

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
    if (!begin())
        return;

    PanelStrip mic = inputStrip(tr("MIC"));
    mic.add(MicGain{.text = tr("Gain"), .key = "Dial/MicValue", .channel = 1, .maximum = 42});
    mic.add(LevelReadOut{.text = tr("Level"), .level = inputLevel(0)});
    mic.caption(tr("Gain"), ksCaptionStyle);
    mic.add(Monitor{.text = tr("DIRECT"),
                    .key = "Button/MonitorMicIsChecked",
                    .cells = {MixerCell::route(0, 0), MixerCell::route(1, 1)},
                    .setState = StateText::word});
    mic.stretch();

    separator();

    PanelStrip output = outputStrip(QStringLiteral("HEADPHONE"));
    output.add(headphoneTraits, OutputLook{.volume = tr("Volume"), .captionStyle = ksCaptionStyle});

    start({"Button/MonitorMicIsChecked", "Dial/MicValue", "Dial/HeadphoneValue",
           "Button/HeadphoneMuteIsChecked", "Button/HeadphoneDimIsChecked"});
}
