#pragma once

#include "panels/panel.h"

#include <array>

class QLabel;
class QLayout;

/// The panel of the KA2: two microphone inputs, speakers, headphones, and the phone's level in
/// both outputs.
class ka2 : public Panel
{
    Q_OBJECT

public:
    explicit ka2(QWidget* parent = nullptr);

protected:
    void showLevels(const MeterBlock& levels) override;

private:
    struct MicStrip
    {
        Knob* gain = nullptr;
        Button* pad = nullptr;
        Button* phantom = nullptr;
        Button* direct = nullptr;
        QLabel* meter = nullptr;
    };

    struct OutputStrip
    {
        Knob* volume = nullptr;
        Button* mute = nullptr;
        Button* dim = nullptr;
        Knob* phone = nullptr;
        QLabel* phoneMeter = nullptr;
    };

    /// What a microphone's controls are called in the INI file, and where its sound goes.
    struct MicTraits;

    MicStrip createMicStrip();
    OutputStrip createOutputStrip();
    void buildLayout();
    static QLayout* layOut(const MicStrip& strip, const QString& heading);
    static QLayout* layOut(const OutputStrip& strip, const QString& heading,
                           const QString& phoneCaption);
    void connectControls();
    void connectMic(const MicStrip& strip, const MicTraits& traits);
    void loadState();

    MicStrip mic1;
    MicStrip mic2;
    OutputStrip headphone;
    OutputStrip speaker;
};
