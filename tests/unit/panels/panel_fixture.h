#pragma once

#include "panel_models.h"
#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/panel_table.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/trace_text.h"

#include <QWidget>

#include <iostream>
#include <memory>
#include <optional>

/// A simulated interface with a model plugged in, the model's INI file and one panel on it. The
/// panel's device is always handle 1.
class PanelFixture
{
public:
    SimulatedInterface simulated;
    std::unique_ptr<QWidget> panel;

    /// The debug lines since plug().
    DebugLog& log() { return *debugLog; }

    /// A fresh simulated interface of this product id without any INI file.
    void plug(std::uint32_t productId);

    /// Builds the model's panel; the one before is gone first.
    void start(const QString& model);

    /// Shows the panel, forgets the trace and the log so far.
    void settle();

    QStringList readOuts() const; ///< their texts in the order of the layout

    /// One notch of a real wheel over the knob, upwards or downwards.
    void wheel(const char* key, bool up);

    /// The trace since the last call without the meter reads, which come by the clock.
    QStringList takeTrace();

private:
    std::optional<DebugLog> debugLog;
    StreamCapture<wchar_t> wideOutput{std::wcout};
};

/// A row for each model of the table, tagged with its name, in the column "model".
void addModelRows();
Q_DECLARE_METATYPE(PanelTable::Model)
