#include "panels/ka2.h"

/// What a microphone's controls are called in the INI file, and where its sound goes.
struct ka2::MicTraits
{
    QString heading;
    std::uint8_t channel;
    std::size_t input; ///< source column of the mixer and its level's place
    const char* gainKey;
    const char* padKey;
    const char* phantomKey;
    const char* directKey;
};

ka2::ka2(QWidget* parent)
    : Panel({.openFailed = "Failed to create device in ka2.",
             .outputChannels = {1, 2, 5, 6},
             .settingsFile = QStringLiteral("ka2.ini"),
             .savedText = "控件状态已保存到配置文件"},
            parent)
{
    if (!begin())
        return;

    restoreLast(addMic({.heading = tr("MIC1"),
                        .channel = 1,
                        .input = 0,
                        .gainKey = "Dial/Mic1Value",
                        .padKey = "Button/Mic120dBIsChecked",
                        .phantomKey = "Button/Mic148VIsChecked",
                        .directKey = "Button/MonitorMic1IsChecked"}));
    addMic({.heading = tr("MIC2"),
            .channel = 2,
            .input = 1,
            .gainKey = "Dial/Mic2Value",
            .padKey = "Button/Mic220dBIsChecked",
            .phantomKey = "Button/Mic248VIsChecked",
            .directKey = "Button/MonitorMic2IsChecked"});

    separator();

    // Unlike the smaller models, outputs 0 and 1 are the speakers here; the headphones are 4 and 5.
    // Of the two mute buttons only the speakers' is logged. The speakers' phone level names HP when
    // it fails. Log readers know it so.
    Knob* const speakerPhone = addOutput(tr("SPEAKER"),
                                         {.volume = tr("Volume"),
                                          .volumeKey = "Dial/SpeakerValue",
                                          .muteKey = "Button/SpeakerMuteIsChecked",
                                          .dimKey = "Button/SpeakerDimIsChecked",
                                          .cells = {MixerCell::output(0), MixerCell::output(1)},
                                          .changed = "Speaker Knob value changed:",
                                          .set = "Speaker volume set to:",
                                          .setInDb = true,
                                          .failed = "Failed to set speaker volume.",
                                          .muteClicked = "Speaker Mute Button Clicked: Mute"},
                                         {.text = tr("Phone To SP Volume"),
                                          .key = "Dial/OtgToSPValue",
                                          .cells = {MixerCell::route(2, 0), MixerCell::route(3, 1)},
                                          .set = "OTG to SP volume set to:",
                                          .failed = "Failed to set OTG to HP volume."});
    addOutput(tr("HEADPHONE"),
              {.volume = tr("Volume"),
               .volumeKey = "Dial/HeadphoneValue",
               .muteKey = "Button/HeadphoneMuteIsChecked",
               .dimKey = "Button/HeadphoneDimIsChecked",
               .cells = {MixerCell::output(4), MixerCell::output(5)},
               .changed = "Headphone Knob value changed:",
               .set = "Headphone volume set to:",
               .setInDb = true,
               .failed = "Failed to set headphone volume."},
              {.text = tr("Phone To HP Volume"),
               .key = "Dial/OtgToHpValue",
               .cells = {MixerCell::route(2, 4), MixerCell::route(3, 5)},
               .set = "OTG to HP volume set to:",
               .failed = "Failed to set OTG to HP volume."});
    restoreLast(speakerPhone);

    start();
}

Knob* ka2::addMic(const MicTraits& traits)
{
    PanelStrip strip = inputStrip(traits.heading);
    Knob* const gain = strip.add(MicGain{.text = tr("Gain"),
                                         .key = traits.gainKey,
                                         .channel = traits.channel,
                                         .maximum = 56,
                                         .displayOffset = 9});
    strip.add(LevelReadOut{.text = tr("Level"), .samples = {traits.input}});
    strip.caption(tr("Gain"));
    // The texts name channel 1 for both microphones: log readers know them so.
    strip.add(InputSwitch{.text = QStringLiteral("20dB"),
                          .accent = PanelWidgets::padAccent,
                          .key = traits.padKey,
                          .command = &DriverDevice::setMic20dB,
                          .channel = traits.channel,
                          .clicked = "Mic 20dB Button Clicked",
                          .switched = "Mic 20dB switched for channel 1.",
                          .failed = "Failed to switch mic 20dB."});
    strip.add(InputSwitch{.text = QStringLiteral("48V"),
                          .accent = PanelWidgets::phantomAccent,
                          .key = traits.phantomKey,
                          .command = &DriverDevice::setMic48V,
                          .channel = traits.channel,
                          .clicked = "Mic 48V Button Clicked",
                          .switched = "Mic 48V switched for channel 1.",
                          .failed = "Failed to switch mic 48V."});
    // A microphone is heard on both sides of both outputs.
    strip.add(
        Monitor{.text = tr("DIRECT"),
                .key = traits.directKey,
                .cells = {MixerCell::route(traits.input, 0), MixerCell::route(traits.input, 1),
                          MixerCell::route(traits.input, 4), MixerCell::route(traits.input, 5)}});
    strip.stretch();
    return gain;
}

Knob* ka2::addOutput(const QString& heading, const Output& output, const PhoneLevel& phone)
{
    PanelStrip strip = outputStrip(heading);
    strip.add(output);
    Knob* const knob = strip.add(phone);
    strip.add(LevelReadOut{.text = tr("Level"), .samples = {2, 3}, .of = phone.text});
    strip.caption(phone.text, PanelWidgets::smallCaptionStyle);
    return knob;
}
