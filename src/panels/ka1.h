#pragma once

#include "panels/panel.h"

/// The panel of the KA1: one microphone or instrument input, the headphones and the phone's level
/// in them.
class ka1 : public Panel
{
    Q_OBJECT

public:
    explicit ka1(QWidget* parent = nullptr);

private:
    void addInput();
    void addHeadphone();
    void presetRoutes();
};
