#pragma once

#include "panels/panel.h"

/// The panel of the KS: one microphone input and the headphones.
class ks : public Panel
{
    Q_OBJECT

public:
    explicit ks(QWidget* parent = nullptr);
};
