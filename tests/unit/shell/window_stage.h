#pragma once

#include "settings/settings.h"
#include "shell/main_window.h"
#include "support/debug_log.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"

#include <iostream>
#include <memory>
#include <optional>

/// The main window with its dialog and a simulated interface, anew for each test.
struct WindowStage
{
    /// A new window that nobody has seen yet; nothing is plugged in.
    void begin();

    /// Plugs the model in and waits until its panel is on the screen, which then stands still.
    bool showPanel(std::uint32_t productId);

    /// Lets a window lay out what was added, and take its size.
    static void settle();

    /// Stops all timers of a window, so that nothing in it changes by itself.
    static void stopClocks(QWidget& widget);

    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
    std::unique_ptr<Settings> settings;
    std::unique_ptr<MainWindow> window;
    std::optional<DebugLog> log;
};
