#pragma once

#include "driver/device_protocol.h"
#include "panels/panel_link.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

class Button;
class Knob;
class QWidget;
struct OutputControls;
struct OutputTraits;

/// How a toggle's state stands in the debug log.
enum class StateText { none, number, word };

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
    const char* clicked; ///< debug lines
    StateText clickedState;
    const char* switched;
    const char* failed;
};

/// Direct monitoring: unity or silence in the cells.
struct Monitor
{
    QString text;
    const char* key;
    std::vector<std::size_t> cells;
    StateText setState;
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
    void bind(const OutputControls& output, const OutputTraits& traits);

    /// Brings all controls back, in the order of these keys: every saved value reaches the device
    /// and is written back.
    void restore(std::initializer_list<const char*> keys);

private:
    struct Restorer
    {
        QWidget* control;
        std::function<void()> restore;
    };

    /// Runs `handler` on every change of the knob, then stores the knob's value under `key`.
    void bindKnob(Knob* knob, const char* key, int missing, std::function<void(int)> handler);
    /// Runs `handler` on every toggle, then stores the button's state under `key`.
    void bindButton(Button* button, const char* key, std::function<void(bool)> handler);
    void remember(Knob* knob, const char* key, int missing);
    void remember(Button* button, const char* key);

    PanelLink& link;
    QList<Restorer> restorers;
};
