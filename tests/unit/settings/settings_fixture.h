#pragma once

#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"

#include <iostream>
#include <memory>
#include <optional>

class QComboBox;
class QLabel;

/// The settings dialog on a simulated interface. The dialog's device is handle 1 after connect().
class SettingsFixture
{
public:
    SimulatedInterface simulated;
    std::unique_ptr<Settings> dialog;

    DebugLog& log() { return *debugLog; }

    /// A fresh simulated interface without any INI file, and no dialog.
    void reset();
    /// A new dialog on setting.ini as it is.
    void create();
    /// create(), then connected to the plugged-in device, which reports these values.
    void connect(std::uint32_t sampleRate, std::uint32_t bufferSize, std::uint32_t latency);

    QComboBox* bufferSize() const { return combo(0); }
    QComboBox* latency() const { return combo(1); }
    QComboBox* sampleRate() const { return combo(2); }
    QComboBox* slowMode() const { return combo(3); }
    QLabel* label(const char* text) const;

    /// The trace since the last call without the status reads, which come by the clock.
    QStringList takeTrace();
    /// The log since the last call without what comes by the clock and from the pipe thread.
    QStringList takeLog();
    QString stored(const char* key) const;

private:
    QComboBox* combo(int index) const;

    std::optional<DebugLog> debugLog;
    StreamCapture<wchar_t> output{std::wcout};
};
