#pragma once

#include "driver/device_protocol.h"
#include "driver/driver_device.h"

#include <QString>

#include <functional>
#include <span>
#include <vector>

class QObject;
class SettingsFile;

/// What tells one model's panel from another before it has any control.
struct PanelModel
{
    const char* openFailed; ///< debug line when the device cannot be opened
    /// Output channels that get full volume at start. Only the verdict on the last one counts.
    std::vector<std::uint8_t> outputChannels;
    QString settingsFile;       ///< its name in the application data folder
    const char* savedText = ""; ///< debug line after each save; empty: none
};

/// A panel's two roads: its own connection to the device, with the mixer table that it keeps
/// current there, and its INI file. GUI thread only.
class PanelLink
{
public:
    explicit PanelLink(PanelModel model);

    /// Opens the device and sets its output volumes. On failure logs and returns false.
    bool openDevice();
    /// Opens the INI file, creating its folder. Call it before reading or storing a value.
    void openSettings();

    /// The INI file's integer; `missing` when there is none or its text is no `int`.
    int storedNumber(const char* key, int missing) const;
    /// The INI file's boolean: "true", or an `int` other than 0. All else is false, so that a
    /// damaged file never switches phantom power on.
    bool storedSwitch(const char* key) const;
    /// Runs `restore`, which brings the stored values back; once more when a file that cannot be
    /// read now can be, if the panel is still there then.
    void bringBack(QObject* panel, const std::function<void()>& restore);
    /// Write the value to the INI file at once.
    void store(const char* key, int value);
    void store(const char* key, bool value);
    /// Makes the INI file current. Does nothing while none is open.
    void save();

    /// Puts a linear gain into cells of the mixer table and sends the table.
    bool sendGain(std::span<const std::size_t> cells, double gain);
    /// Changes the table without sending it: the next send takes it along.
    void presetGain(std::size_t cell, double gain) { mixer[cell] = gain; }
    /// Unity for all 96 outputs, not sent yet.
    void presetOutputGains();

    bool readMeters(MeterBlock& block) { return driver.readMeterData(block); }
    DriverDevice& device() { return driver; }

private:
    void reportSaved() const;

    PanelModel model;
    DriverDevice driver;
    MixerTable mixer{};
    SettingsFile* settings = nullptr;
};
