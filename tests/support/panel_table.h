#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

/// All controls of all models, for every test that needs each of them or one of a kind. What they
/// do stands in `tests/oracle`.
namespace PanelTable {

/// A text in angle brackets is one that asks for its translation.
struct Control
{
    const char* key;  ///< in the INI file and as object name; a read-out has none
    const char* name; ///< for screen readers
    const char* text; ///< on the button, or beside the knob
    int opcode = 0;   ///< of the command that a switch of an input sends

    constexpr bool isKnob() const { return std::string_view(key).starts_with("Dial/"); }
    constexpr bool isButton() const { return std::string_view(key).starts_with("Button/"); }
    constexpr bool isReadOut() const { return *key == '\0'; }
};

struct Model
{
    const char* name;
    std::uint32_t productId;
    std::span<const Control> controls; ///< in the order of the keyboard, read-outs last

    template <typename Predicate> constexpr int count(Predicate isWanted) const
    {
        int found = 0;
        for (const Control& control : controls)
            found += (control.*isWanted)() ? 1 : 0;
        return found;
    }

    /// How many keys its INI file has.
    constexpr int keys() const { return count(&Control::isKnob) + count(&Control::isButton); }
};

inline constexpr Control ka1[] = {
    {"Dial/MicValue", "<INPUT> <Gain>", "<Gain>"},
    {"Button/MicInstrIsChecked", "<INPUT> <INST>", "<MIC>", 0x64},
    {"Button/Mic20dBIsChecked", "<INPUT> <20dB>", "<20dB>", 0x5A},
    {"Button/Mic48VIsChecked", "<INPUT> <48V>", "<48V>", 0x5B},
    {"Button/MonitorMicIsChecked", "<INPUT> <DIRECT>", "<DIRECT>"},
    {"Dial/HeadphoneValue", "<HEADPHONE> <Volume>", "<Volume>"},
    {"Button/HeadphoneMuteIsChecked", "<HEADPHONE> <MUTE>", "<MUTE>"},
    {"Button/HeadphoneDimIsChecked", "<HEADPHONE> <DIM>", "<DIM>"},
    {"Dial/OtgToHpValue", "<Phone To HP Volume>", "<Phone To HP Volume>"},
    {"", "<INPUT> <Level> <-160 dB>", "<-160 dB>"},
    {"", "<Phone To HP Volume> <Level> <-160 dB>", "<-160 dB>"},
};

inline constexpr Control ka2[] = {
    {"Dial/Mic1Value", "<MIC1> <Gain>", "<Gain>"},
    {"Button/Mic120dBIsChecked", "<MIC1> 20dB", "20dB"},
    {"Button/Mic148VIsChecked", "<MIC1> 48V", "48V"},
    {"Button/MonitorMic1IsChecked", "<MIC1> <DIRECT>", "<DIRECT>"},
    {"Dial/Mic2Value", "<MIC2> <Gain>", "<Gain>"},
    {"Button/Mic220dBIsChecked", "<MIC2> 20dB", "20dB"},
    {"Button/Mic248VIsChecked", "<MIC2> 48V", "48V"},
    {"Button/MonitorMic2IsChecked", "<MIC2> <DIRECT>", "<DIRECT>"},
    {"Dial/SpeakerValue", "<SPEAKER> <Volume>", "<Volume>"},
    {"Button/SpeakerMuteIsChecked", "<SPEAKER> MUTE", "MUTE"},
    {"Button/SpeakerDimIsChecked", "<SPEAKER> DIM", "DIM"},
    {"Dial/OtgToSPValue", "<Phone To SP Volume>", "<Phone To SP Volume>"},
    {"Dial/HeadphoneValue", "<HEADPHONE> <Volume>", "<Volume>"},
    {"Button/HeadphoneMuteIsChecked", "<HEADPHONE> MUTE", "MUTE"},
    {"Button/HeadphoneDimIsChecked", "<HEADPHONE> DIM", "DIM"},
    {"Dial/OtgToHpValue", "<Phone To HP Volume>", "<Phone To HP Volume>"},
    {"", "<MIC1> <Level> -160 dB", "-160 dB"},
    {"", "<MIC2> <Level> -160 dB", "-160 dB"},
    {"", "<Phone To SP Volume> <Level> -160 dB", "-160 dB"},
    {"", "<Phone To HP Volume> <Level> -160 dB", "-160 dB"},
};

inline constexpr Control ks[] = {
    {"Dial/MicValue", "<MIC> <Gain>", "<Gain>"},
    {"Button/MonitorMicIsChecked", "<MIC> <DIRECT>", "<DIRECT>"},
    {"Dial/HeadphoneValue", "HEADPHONE <Volume>", "<Volume>"},
    {"Button/HeadphoneMuteIsChecked", "HEADPHONE MUTE", "MUTE"},
    {"Button/HeadphoneDimIsChecked", "HEADPHONE DIM", "DIM"},
    {"", "<MIC> <Level> -160 dB", "-160 dB"},
};

inline constexpr Model models[] = {{"ka1", 1, ka1}, {"ka2", 2, ka2}, {"ks", 15, ks}};

} // namespace PanelTable
