#pragma once

#include "panels/panel_controls.h"
#include "panels/panel_meters.h"
#include "panels/panel_widgets.h"

#include <QString>

class QBoxLayout;

/// A read-out. `text` names it for screen readers, after the strip or after `of`.
struct LevelReadOut
{
    QString text;
    std::vector<std::size_t> samples; ///< slots of the driver's block, whose mean is shown
    QString of = {};
    QString atStart = QStringLiteral("-160 dB"); ///< shown until the first reading
};

/// A strip of a panel, or a part of one. Each call adds what it names below (in a row: beside) the
/// last, does with it all that there is to do, and names it for screen readers after the strip's
/// heading.
class PanelStrip
{
public:
    /// Adds to `layout`, which belongs to the panel already.
    PanelStrip(PanelControls& controls, PanelMeters& meters, QBoxLayout* layout, QString heading);

    Knob* add(const MicGain& gain);
    void add(const InputSwitch& inputSwitch);
    void add(const Monitor& monitor);
    Knob* add(const PhoneLevel& level);
    void add(const LevelReadOut& readOut);
    void add(const Output& output);
    void caption(const QString& text, const char* style = PanelWidgets::captionStyle);

    /// Parts whose content stands in their middle; a spacing of -1 is the usual one.
    PanelStrip column(int stretch = 0);
    PanelStrip row(int spacing = -1);
    /// Leaves the height that remains empty.
    void stretch();

private:
    PanelStrip part(QBoxLayout* inner, int stretch);
    void place(QWidget* control, const QString& name);

    PanelControls& controls;
    PanelMeters& meters;
    QBoxLayout* layout;
    QString heading;
};
