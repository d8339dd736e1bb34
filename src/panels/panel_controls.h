#pragma once

#include "driver/device_protocol.h"
#include "panels/panel_link.h"
#include "panels/panel_widgets.h"

#include <QList>
#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

class QWidget;

// One of these is all of a control: its look, its INI key, what it does to the device, and its
// debug lines.

/// The gain of a microphone input. The device takes two steps for each dB.
struct MicGain
{
    QString text;
    const char* key;
    std::uint8_t channel;
    int maximum;           ///< dB
    int displayOffset = 0; ///< dB by which more is shown
};

/// A switch of the input stage.
struct InputSwitch
{
    QString text;
    QString textWhenOn = {}; ///< shown once the device has accepted it; empty: `text` stays
    const char* accent;
    const char* key;
    bool (DriverDevice::*command)(std::uint8_t channel, std::uint8_t on);
    std::uint8_t channel;
    const char* clicked;          ///< debug lines
    bool clickedWithState = true; ///< `clicked` is followed by the new state
    const char* switched;
    const char* failed;
};

/// Direct monitoring: unity or silence in the cells.
struct Monitor
{
    QString text;
    const char* key;
    std::vector<std::size_t> cells;
    bool stateAsNumber = false; ///< the debug line says 1 or 0, not true or false
};

/// The phone's level in an output.
struct PhoneLevel
{
    QString text;
    const char* key;
    std::vector<std::size_t> cells;
    const char* set; ///< debug lines
    const char* failed;
};

/// The volume, mute and dim of a stereo output: mute is silence, dim is 20 dB less, and mute wins.
/// Each ends by storing itself; mute and dim store the volume as well.
struct Output
{
    QString volume;
    QString mute = QStringLiteral("MUTE");
    QString dim = QStringLiteral("DIM");
    int buttonStyle = 12;
    const char* captionStyle = PanelWidgets::captionStyle;
    const char* volumeKey;
    const char* muteKey;
    const char* dimKey;
    std::array<std::size_t, 2> cells; ///< mixer gains, left and right

    // Debug lines; null: not logged.
    const char* changed = nullptr; ///< comes first, with what the volume is changed to, in dB
    const char* set = nullptr;
    bool setInDb = false; ///< `set` is followed by the level that was sent, not by its gain
    const char* failed;
    bool clickedFirst = false;         ///< the next two come before the volume's lines, not after
    const char* muteClicked = nullptr; ///< each is followed by ON or OFF
    const char* dimClicked = nullptr;
};

/// What an output is operated with.
struct OutputWidgets
{
    Knob* volume;
    Button* mute;
    Button* dim;
};

/// What the controls of a panel do: every change goes to the device, is logged and stored, and
/// saved values come back through the controls' own signals.
class PanelControls
{
public:
    explicit PanelControls(PanelLink& link);
    ~PanelControls();
    PanelControls(const PanelControls&) = delete;
    PanelControls& operator=(const PanelControls&) = delete;

    /// Each names the control after its INI key.
    void bind(Knob* knob, const MicGain& gain);
    void bind(Button* button, const InputSwitch& inputSwitch);
    void bind(Button* button, const Monitor& monitor);
    void bind(Knob* knob, const PhoneLevel& level);
    void bind(const OutputWidgets& widgets, const Output& output);

    /// Lets this knob come back after all controls that are bound so far.
    void restoreLast(const Knob* knob);
    /// Brings all controls back, in the order in which they were bound unless restoreLast() says
    /// otherwise: every saved value reaches the device and is written back.
    void restore();

private:
    struct Restorer
    {
        QWidget* control;
        std::function<void()> restore;
    };

    using Change = std::function<void(int value)>;
    using Toggle = std::function<void(bool on)>;

    /// On every change of the knob `send` sends and logs it; then its value is stored under `key`.
    /// Returns what thus happens on a change.
    Change bindKnob(Knob* knob, const char* key, int missing, Change send);
    /// The same for every toggle of the button and its state.
    void bindButton(Button* button, const char* key, Toggle send);

    PanelLink& link;
    QList<Restorer> restorers;
};
