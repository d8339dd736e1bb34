#pragma once

#include "panels/panel_link.h"

#include <QList>
#include <QWidget>

#include <functional>

class Button;
class Knob;
struct OutputTraits;

/// How a toggle's state stands in the debug log.
enum class StateText { none, number, word };

/// The texts around a switch command.
struct SwitchTexts
{
    const char* clicked;
    StateText clickedState;
    const char* switched;
    const char* failed;
};

/// What the model panels share: the link to the device and the INI file, the pattern of a
/// handler, the restoring of saved state and the 500 ms read-outs. A panel that could not reach
/// its device stays an empty widget.
class Panel : public QWidget
{
public:
    ~Panel() override;

    /// Makes the INI file current. Every handler has already done so for its own key.
    void saveState() { link.save(); }

protected:
    Panel(PanelModel model, QWidget* parent);

    /// Runs `handler` on every change of the knob, then stores the knob's value under `key`.
    void bindKnob(Knob* knob, const char* key, int missing, std::function<void(int)> handler);
    /// Runs `handler` on every toggle, then stores the button's state under `key`.
    void bindButton(Button* button, const char* key, std::function<void(bool)> handler);

    /// Microphone gain: the device takes two steps for each dB.
    void bindMicGain(Knob* knob, const char* key, std::uint8_t channel);
    /// A switch of the input stage; `switchInput` runs the command and `accepted` follows it.
    void bindSwitch(Button* button, const char* key, const SwitchTexts& texts,
                    std::function<bool(std::uint8_t on)> switchInput,
                    std::function<void(bool on)> accepted = {});
    /// Direct monitoring: unity or silence in the cells.
    void bindMonitor(Button* button, const char* key, std::vector<std::size_t> cells,
                     StateText stateText);
    /// The phone's level in an output.
    void bindPhoneLevel(Knob* knob, const char* key, std::vector<std::size_t> cells,
                        const char* done, const char* failed);

    /// Volume, mute and dim of an output.
    void bindOutput(const OutputTraits& traits, Knob* volume, Button* mute, Button* dim);

    /// Brings the controls back in this order, through their own signals: every saved value
    /// reaches the device and is written back.
    void restoreState(std::initializer_list<const QWidget*> order);

    void startMeters();
    /// Called every 500 ms with fresh levels.
    virtual void showLevels(const MeterBlock& levels) = 0;

    PanelLink link;

private:
    struct Restorer
    {
        QWidget* control;
        std::function<void()> restore;
    };

    /// Notes how restoreState() brings the control back and names the control after its key.
    void remember(Knob* knob, const char* key, int missing);
    void remember(Button* button, const char* key);
    void updateMeters();

    MeterBlock meter{};
    QList<Restorer> restorers;
};
