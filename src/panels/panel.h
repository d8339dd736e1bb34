#pragma once

#include "panels/panel_controls.h"
#include "panels/panel_link.h"
#include "panels/panel_meters.h"
#include "panels/panel_strip.h"

#include <QWidget>

class QBoxLayout;

/// What a model's panel is made of: the link to the device and the INI file, strips of controls
/// from left to right, and the read-outs. A model's constructor calls begin(), adds its strips and
/// calls start(). A panel that could not reach its device stays an empty widget.
class Panel : public QWidget
{
public:
    /// Makes the INI file current. Every handler has already done so for its own key.
    void saveState() { link.save(); }

protected:
    Panel(PanelModel model, QWidget* parent);

    /// Opens the device and the INI file. When it returns false nothing more may be done.
    bool begin();

    PanelStrip inputStrip(const QString& heading);
    PanelStrip outputStrip(const QString& heading, Qt::Alignment alignment = {});
    /// The line between inputs and outputs.
    void separator();

    /// Puts unity into a cell of the mixer table; the first change sends it along.
    void presetRoute(std::size_t cell) { link.presetGain(cell, 1.0); }

    /// Saved values come back in the order in which the controls were added. This one comes after
    /// all so far.
    void restoreLast(const Knob* knob) { controls.restoreLast(knob); }

    /// Starts the read-outs and brings the saved values back.
    void start();

private:
    PanelStrip strip(const QString& heading, QMargins margins, Qt::Alignment alignment);

    PanelLink link;
    PanelControls controls{link};
    PanelMeters meters{link};
    QBoxLayout* root = nullptr;
};
