#include "panels/ks.h"

namespace {

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
    Knob* const gain =
        mic.add(MicGain{.text = tr("Gain"), .key = "Dial/MicValue", .channel = 1, .maximum = 42});
    mic.add(LevelReadOut{.text = tr("Level"), .samples = {0}});
    mic.caption(tr("Gain"), ksCaptionStyle);
    mic.add(Monitor{.text = tr("DIRECT"),
                    .key = "Button/MonitorMicIsChecked",
                    .cells = {MixerCell::route(0, 0), MixerCell::route(1, 1)}});
    restoreLast(gain);
    mic.stretch();

    separator();

    PanelStrip output = outputStrip(QStringLiteral("HEADPHONE"));
    // Logs no volume that was set, only one that failed.
    output.add(Output{.volume = tr("Volume"),
                      .captionStyle = ksCaptionStyle,
                      .volumeKey = "Dial/HeadphoneValue",
                      .muteKey = "Button/HeadphoneMuteIsChecked",
                      .dimKey = "Button/HeadphoneDimIsChecked",
                      .cells = {MixerCell::output(0), MixerCell::output(1)},
                      .failed = "Failed to set headphone volume.",
                      .muteClicked = "Headphone Mute Button Clicked: Mute",
                      .dimClicked = "Headphone Dim Button Clicked: Dim"});

    start();
}
