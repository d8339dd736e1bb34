#pragma once

#include <QObject>

#include <array>
#include <cstddef>

class Button;
class Knob;
class PanelLink;

/// Everything in which the outputs of the models differ.
struct OutputTraits
{
    std::array<std::size_t, 2> cells; ///< mixer gains, left and right

    const char* knobKey;
    const char* muteKey;
    const char* dimKey;

    /// What "set" is followed by in the log.
    enum class Report { nothing, gain, level };

    const char* changed; ///< logged first, with the handler's argument; null: not logged
    Report report;
    const char* set;
    const char* failed;

    /// Whether muting runs the volume handler with the knob's floor or with the knob's value: seen
    /// only in the `changed` line, because a muted output is silent either way.
    enum class MuteArgument { floor, knobValue } muteArgument;
    /// When the lines of MUTE and DIM are written; each pair null: not logged.
    enum class ClickLog { beforeVolume, afterVolume } clickLog;
    const char* muteOn;
    const char* muteOff;
    const char* dimOn;
    const char* dimOff;
};

/// The three controls of an output.
struct OutputControls
{
    Knob* volume;
    Button* mute;
    Button* dim;
};

/// The volume, mute and dim of one stereo output: mute is silence, dim is 20 dB less, and mute
/// wins. Each handler ends by storing its control; mute and dim store the volume as well.
class OutputVolume : public QObject
{
public:
    /// Connects the three controls to their handlers.
    OutputVolume(const OutputTraits& traits, PanelLink& link, const OutputControls& controls,
                 QObject* parent);

private:
    void volumeChanged(int dB);
    void muteToggled(bool on);
    void dimToggled(bool on);
    int level(int dB) const;

    OutputTraits traits;
    PanelLink& link;
    OutputControls controls;
    bool muted = false;
    bool dimmed = false;
};
