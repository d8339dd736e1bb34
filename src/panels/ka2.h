#pragma once

#include "panels/panel.h"

/// The panel of the KA2: two microphone inputs, speakers, headphones, and the phone's level in
/// both outputs.
class ka2 : public Panel
{
    Q_OBJECT

public:
    explicit ka2(QWidget* parent = nullptr);

private:
    struct MicTraits;

    /// Returns the gain.
    Knob* addMic(const MicTraits& traits);
    /// Returns the phone's level.
    Knob* addOutput(const QString& heading, const Output& output, const PhoneLevel& phone);
};
