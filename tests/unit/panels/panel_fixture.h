#pragma once

#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/trace_text.h"

#include <QWidget>

#include <iostream>
#include <memory>
#include <optional>

class Button;
class Knob;
class QLabel;

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

    /// Builds a panel; the one before is gone first.
    template <typename Model> void start()
    {
        panel.reset();
        simulated.control().clearTrace();
        log().clear();
        panel = std::make_unique<Model>(nullptr);
    }

    /// Shows the panel, forgets the trace and the log so far.
    void settle();

    Knob* knob(const char* key) const;
    Button* button(const char* key) const;
    QLabel* label(int index) const; ///< read-outs in the order of their creation

    /// One notch of a real wheel over the knob, upwards or downwards.
    void wheel(const char* key, bool up);
    void click(const char* key);

    /// The trace since the last call without the meter reads, which come by the clock.
    QStringList takeTrace();

private:
    std::optional<DebugLog> debugLog;
    StreamCapture<wchar_t> output{std::wcout};
};

/// "128=1 161=1 ..." for these cells.
QString cellsAt(const QList<int>& cells, const char* gain);

/// The 96 output gains at unity.
QString unityOutputs();
