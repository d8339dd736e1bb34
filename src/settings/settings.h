#pragma once

#include "driver/device_protocol.h"
#include "settings/settings_choices.h"

#include <QDialog>

#include <cstdint>
#include <memory>
#include <span>

class DriverDevice;
class QComboBox;
class QLabel;
class QTimer;
class QVBoxLayout;
class SettingsFile;

/// The dialog for buffer size (samples), USB latency (frames), sample rate (Hz) and the USB slow
/// mode, with the driver's USB error count. Every choice is applied to the driver and saved to
/// setting.ini at once; a step that fails ends its sequence with a debug line, and nothing is
/// saved. Lives hidden from start to end of the program. GUI thread only.
class Settings : public QDialog
{
    Q_OBJECT

public:
    Settings();
    ~Settings() override;

    /// Opens a connection to the device in place of the one before. False when no device answers.
    bool connectDevice();
    /// Reads setting.ini and brings the stored choices into the dialog, which applies those that
    /// change. A file that cannot be read now is taken up as soon as it can, while the device that
    /// refreshFromDevice() has programmed is there.
    void loadSettings();
    /// Programs a newly connected device from the stored choices.
    void refreshFromDevice();

    /// The device must be set up again when it comes back; refreshFromDevice() does that.
    bool reinitPending = false;

public slots:
    void updateUsbErrorCount();
    /// Brings the dialog to the front, above all other windows: the ASIO driver asked for it.
    void showFromPipe();
    /// Hides the dialog and asks the ASIO driver to take up what was applied.
    void notifyAsioReset();
    void onBufferSizeChanged(int index);
    void onUsbLatencyChanged(int index);
    void onSampleRateChanged(int index);
    void onSlowModeChanged(int index);

private:
    using TimedStep = void (Settings::*)();

    void buildLayout();
    QComboBox* addChoice(const QString& label, std::span<const SettingsChoices::Choice> choices,
                         void (Settings::*apply)(int));
    void startPipeThread();
    void startUsbErrorTimer();
    void showStoredChoices();

    bool takeSampleRate(const QString& text);
    bool stop();
    bool restart();
    bool programSampleRate();
    void startTimedStep(TimedStep step);
    void otgOffThenInit();
    void initAfterOtg();
    void otgOffThenOn();
    void otgOnAfterRateChange();
    bool switchOtgOff();
    bool switchOtgOn();
    bool lowerLatencyFor(std::uint32_t bufferSize);

    QVBoxLayout* mainLayout = nullptr;
    QComboBox* latencyCombo = nullptr;
    QComboBox* bufferSizeCombo = nullptr;
    QComboBox* sampleRateCombo = nullptr;
    QComboBox* slowModeCombo = nullptr;
    SettingsFile* settings = nullptr;
    std::unique_ptr<DriverDevice> device;
    UsbStatus usbStatus;
    std::uint32_t sampleRate = 44100;
    QLabel* usbErrorLabel = nullptr;
    QTimer* usbErrorTimer = nullptr;
};
