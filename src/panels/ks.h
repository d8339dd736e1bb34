#pragma once

#include "panels/panel.h"

class QLabel;
class QLayout;

/// The panel of the KS: one microphone input and the headphones.
class ks : public Panel
{
    Q_OBJECT

public:
    explicit ks(QWidget* parent = nullptr);

protected:
    void showLevels(const MeterBlock& levels) override;

private:
    void createControls();
    void buildLayout();
    void nameControls();
    QLayout* micStrip();
    QLayout* headphoneStrip();
    void connectControls();
    void loadState();

    Knob* micKnob = nullptr;
    QLabel* micMeter = nullptr;
    Knob* headphoneKnob = nullptr;
    Button* headphoneMute = nullptr;
    Button* headphoneDim = nullptr;
    Button* micDirect = nullptr;
};
