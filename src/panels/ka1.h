#pragma once

#include "panels/panel.h"

class QLabel;
class QLayout;

/// The panel of the KA1: one microphone or instrument input, the headphones and the phone's level
/// in them.
class ka1 : public Panel
{
    Q_OBJECT

public:
    explicit ka1(QWidget* parent = nullptr);

protected:
    void showLevels(const MeterBlock& levels) override;

private:
    void createControls();
    void buildLayout();
    void nameControls();
    QLayout* inputStrip();
    QLayout* headphoneStrip();
    void connectControls();
    void presetMixer();
    void loadState();

    Knob* micKnob = nullptr;
    Button* instButton = nullptr;
    Button* padButton = nullptr;
    Button* phantomButton = nullptr;
    Button* micDirect = nullptr;
    QLabel* micMeter = nullptr;
    Knob* headphoneKnob = nullptr;
    Button* headphoneMute = nullptr;
    Button* headphoneDim = nullptr;
    Knob* otgToHpKnob = nullptr;
    QLabel* otgHpMeter = nullptr;
};
