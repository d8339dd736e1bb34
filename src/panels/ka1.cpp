#include "panels/ka1.h"

namespace {

constexpr std::uint8_t micChannel = 1;

} // namespace

ka1::ka1(QWidget* parent)
    : Panel({.openFailed = "Failed to create device in ka1.",
             .outputChannels = {1, 2},
             .settingsFile = QStringLiteral("ka1.ini")},
            parent)
{
    if (!begin())
        return;

    addInput();
    separator();
    addHeadphone();
    presetRoutes();
    start();
}

void ka1::addInput()
{
    PanelStrip input = inputStrip(tr("INPUT"));
    Knob* const gain = input.add(
        MicGain{.text = tr("Gain"), .key = "Dial/MicValue", .channel = micChannel, .maximum = 42});
    input.add(LevelReadOut{.text = tr("Level"), .samples = {0}, .atStart = tr("-160 dB")});
    input.caption(tr("Gain"));

    // Takes the height in which the other strip is taller, so that both headings stand level.
    PanelStrip buttons = input.column(1);
    buttons.add(InputSwitch{.text = tr("MIC"),
                            .textWhenOn = tr("INST"),
                            .accent = PanelWidgets::micAccent,
                            .key = "Button/MicInstrIsChecked",
                            .command = &DriverDevice::switchMicInstrument,
                            .channel = micChannel,
                            .clicked = "Mic Instr Button Clicked",
                            .clickedWithState = false,
                            .switched = "Mic instruction switched for channel 1.",
                            .failed = "Failed to switch mic instruction."});
    buttons.add(InputSwitch{.text = tr("20dB"),
                            .accent = PanelWidgets::padAccent,
                            .key = "Button/Mic20dBIsChecked",
                            .command = &DriverDevice::setMic20dB,
                            .channel = micChannel,
                            .clicked = "Mic 20dB Button Clicked",
                            .clickedWithState = false,
                            .switched = "Mic 20dB switched for channel 1.",
                            .failed = "Failed to switch mic 20dB."});
    buttons.add(InputSwitch{.text = tr("48V"),
                            .accent = PanelWidgets::phantomAccent,
                            .key = "Button/Mic48VIsChecked",
                            .command = &DriverDevice::setMic48V,
                            .channel = micChannel,
                            .clicked = "Mic 48V Button Clicked",
                            .clickedWithState = false,
                            .switched = "Mic 48V switched for channel 1.",
                            .failed = "Failed to switch mic 48V."});
    buttons.add(Monitor{.text = tr("DIRECT"),
                        .key = "Button/MonitorMicIsChecked",
                        .cells = {MixerCell::route(0, 0), MixerCell::route(1, 1)},
                        .stateAsNumber = true});
    restoreLast(gain);
}

void ka1::addHeadphone()
{
    PanelStrip output = outputStrip(tr("HEADPHONE"), Qt::AlignCenter);
    output.add(Output{.volume = tr("Volume"),
                      .mute = tr("MUTE"),
                      .dim = tr("DIM"),
                      .buttonStyle = 10,
                      .volumeKey = "Dial/HeadphoneValue",
                      .muteKey = "Button/HeadphoneMuteIsChecked",
                      .dimKey = "Button/HeadphoneDimIsChecked",
                      .cells = {MixerCell::output(0), MixerCell::output(1)},
                      .set = "Headphone volume set to:",
                      .failed = "Failed to set headphone volume.",
                      .clickedFirst = true,
                      .muteClicked = "Headphone Mute Button Clicked: Mute",
                      .dimClicked = "Headphone Dim Button Clicked: Dim"});

    PanelStrip phone = output.row(8);
    phone.add(PhoneLevel{.text = tr("Phone To HP Volume"),
                         .key = "Dial/OtgToHpValue",
                         .cells = {MixerCell::route(2, 0), MixerCell::route(3, 1)},
                         .set = "OTG to HP volume set to:",
                         .failed = "Failed to set OTG to HP volume."});
    PanelStrip phoneTexts = phone.column();
    phoneTexts.add(LevelReadOut{.text = tr("Level"),
                                .samples = {2, 3},
                                .of = tr("Phone To HP Volume"),
                                .atStart = tr("-160 dB")});
    phoneTexts.caption(tr("Phone To HP Volume"), PanelWidgets::smallCaptionStyle);
    output.stretch();
}

void ka1::presetRoutes()
{
    for (std::size_t k = 0; k < 8; ++k) {
        presetRoute(MixerCell::at(4 + k, k));
        presetRoute(MixerCell::at(160 + k, k));
    }
    for (const std::size_t row : {96U, 128U, 130U}) {
        presetRoute(MixerCell::at(row, 0));
        presetRoute(MixerCell::at(row + 1, 1));
    }
}
