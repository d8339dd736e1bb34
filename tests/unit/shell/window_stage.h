#pragma once

#include "settings/settings.h"
#include "shell/main_window.h"
#include "support/debug_log.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"

#include <iostream>
#include <memory>
#include <optional>

/// The main window with its dialog and a simulated interface, anew for each test. No timer of
/// theirs fires by itself: the tests call the slots, and settle() lets windows settle.
class WindowStage
{
public:
    WindowStage();
    ~WindowStage();
    WindowStage(const WindowStage&) = delete;
    WindowStage& operator=(const WindowStage&) = delete;

    /// A new window that nobody has seen yet; nothing is plugged in.
    void begin();

    /// Plugs the model in and waits until its panel is on the screen, which then stands still.
    bool showPanel(std::uint32_t productId);

    /// Shows the window and waits until it is on the screen.
    static bool show(QWidget& shown);

    /// Lets the windows lay out what was added and lets the time pass after which a size counts.
    void settle() const;

    /// After how many milliseconds the window's size will count; none when it does already.
    static QList<int> settlingTimes(const QWidget& settling);

    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
    std::unique_ptr<Settings> settings;
    std::unique_ptr<MainWindow> window;
    std::optional<DebugLog> log;

private:
    std::unique_ptr<QObject> clock;
};
