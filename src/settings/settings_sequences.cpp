#include "driver/driver_device.h"
#include "platform/win32.h"
#include "settings/settings.h"
#include "storage/settings_file.h"

#include <QComboBox>
#include <QDebug>
#include <QTimer>

// How a choice reaches the driver: stop the engine, set the value, start the engine, save. A step
// that fails is logged and ends the sequence; nothing is undone or saved then.

namespace {

constexpr DWORD settleTime = 100;   // ms, for the stopped engine
constexpr int timedStepDelay = 200; // ms, for the phone input chip
constexpr std::uint32_t wdmChannels = 4;

/// Logs the failure text unless the step succeeded; returns whether it did.
bool succeeded(bool result, const char* failureText)
{
    if (!result)
        qDebug() << failureText;
    return result;
}

} // namespace

bool Settings::stop()
{
    return succeeded(device->stopAudio(), "停止音频失败，可能是驱动未正确加载或设备未连接。");
}

bool Settings::restart()
{
    return succeeded(device->startAudio(), "重新启动音频失败，可能是驱动未正确加载或设备未连接。");
}

bool Settings::takeSampleRate(const QString& text)
{
    const auto rate = SettingsChoices::valueOf(text, SettingsChoices::sampleRates);
    if (!rate) {
        qDebug() << "未知的音频采样率选项：" << text;
        return false;
    }
    sampleRate = *rate;
    return true;
}

bool Settings::programSampleRate()
{
    return succeeded(device->setSampleRate(sampleRate),
                     "设置音频采样率失败，可能是驱动未正确加载或设备未连接。") &&
           succeeded(device->setWdmChannelCount(wdmChannels),
                     "设置WDM通道数量失败，可能是驱动未正确加载或设备未连接。");
}

void Settings::refreshFromDevice()
{
    reinitPending = false;
    loadSettings();
    qDebug() << "加载控件状态完成";
    qDebug() << "当前音频采样率为：" << device->querySampleRate();
    if (!takeSampleRate(sampleRateCombo->currentText()))
        return;
    if (!stop())
        return;
    qDebug() << "停止音频成功，开始加载控件状态";
    Sleep(settleTime);
    if (programSampleRate())
        startTimedStep(&Settings::otgOffThenInit);
}

void Settings::startTimedStep(TimedStep step)
{
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, [this, timer, step] {
        timer->stop();
        timer->deleteLater();
        (this->*step)();
    });
    timer->start(timedStepDelay);
}

bool Settings::switchOtgOff()
{
    return succeeded(device->setOtgOff(), "关闭OTG芯片失败，可能是驱动未正确加载或设备未连接。");
}

bool Settings::switchOtgOn()
{
    return succeeded(device->setOtgOn(), "开启OTG芯片失败，可能是驱动未正确加载或设备未连接。");
}

void Settings::otgOffThenInit()
{
    if (switchOtgOff())
        startTimedStep(&Settings::initAfterOtg);
}

void Settings::initAfterOtg()
{
    if (!switchOtgOn())
        return;
    if (succeeded(device->initAudio(), "初始化音频失败，可能是驱动未正确加载或设备未连接。"))
        qDebug() << "设置初始化完成";
}

void Settings::otgOffThenOn()
{
    if (switchOtgOff())
        startTimedStep(&Settings::otgOnAfterRateChange);
}

void Settings::otgOnAfterRateChange()
{
    if (switchOtgOn())
        qDebug() << "设置采样频率完成";
}

void Settings::onSampleRateChanged(int)
{
    if (!stop())
        return;
    Sleep(settleTime);
    const QString text = sampleRateCombo->currentText();
    if (!takeSampleRate(text))
        return;
    qDebug() << "设置音频采样率为：" << text;
    if (!programSampleRate())
        return;
    Sleep(settleTime);
    // The restart text, although the engine is initialised here: log readers know it so.
    if (!succeeded(device->initAudio(), "重新启动音频失败，可能是驱动未正确加载或设备未连接。"))
        return;
    startTimedStep(&Settings::otgOffThenOn);
    settings->store("Audio/SampleRate", text);
    qDebug() << "音频采样率设置已保存：" << text;
}

void Settings::onUsbLatencyChanged(int)
{
    const QString text = latencyCombo->currentText();
    const std::uint32_t frames =
        SettingsChoices::valueOf(text, SettingsChoices::usbLatencies).value_or(8);
    qDebug() << "设置USB延迟大小为：" << frames << "Frame";
    std::uint32_t current = 0;
    device->getUsbLatency(current);
    qDebug() << "当前USB延迟大小：" << current;
    if (current == frames)
        return;
    if (!stop())
        return;
    if (!succeeded(device->setUsbLatency(frames),
                   "设置USB延迟大小失败，可能是驱动未正确加载或设备未连接。"))
        return;
    if (!restart())
        return;
    settings->store("USB/LatencySize", text);
    qDebug() << "USB延迟大小设置已保存：" << text;
}

void Settings::onBufferSizeChanged(int)
{
    const QString text = bufferSizeCombo->currentText();
    const auto samples = SettingsChoices::valueOf(text, SettingsChoices::bufferSizes);
    if (!samples) {
        qDebug() << "未知的音频缓冲区大小选项：" << text;
        return;
    }
    qDebug() << "设置音频缓冲区大小为：" << *samples << "samples";
    std::uint32_t current = 0;
    if (!succeeded(device->getBufferSize(current),
                   "获取音频缓冲区大小失败，可能是驱动未正确加载或设备未连接。"))
        return;
    qDebug() << "当前音频缓冲区大小：" << current;
    if (current == *samples)
        return;
    if (!lowerLatencyFor(*samples) || !stop())
        return;
    if (!succeeded(device->setBufferSize(*samples),
                   "设置音频缓冲区大小失败，可能是驱动未正确加载或设备未连接。"))
        return;
    if (!restart())
        return;
    qDebug() << "音频缓冲区大小设置成功：" << *samples << "samples";
    settings->store("Audio/BufferSize", text);
    qDebug() << "音频缓冲区大小设置已保存：" << text;
}

bool Settings::lowerLatencyFor(std::uint32_t bufferSize)
{
    const std::uint32_t required = SettingsChoices::latencyForBuffer(bufferSize);
    qDebug() << "设置USB延迟大小为：" << required << "Frame";
    std::uint32_t current = 0;
    if (!succeeded(device->getUsbLatency(current),
                   "获取USB延迟大小失败，可能是驱动未正确加载或设备未连接。"))
        return false;
    qDebug() << "当前USB延迟大小：" << current;
    // Only ever lowers: the change of the combo applies and saves the latency within this call.
    if (required < current)
        latencyCombo->setCurrentText(QString::number(required));
    return true;
}

void Settings::onSlowModeChanged(int)
{
    const QString text = slowModeCombo->currentText();
    if (!stop())
        return;
    const auto slow = SettingsChoices::valueOf(text, SettingsChoices::slowModes);
    if (!slow) {
        qDebug() << "未知的USB慢速模式选项：" << text;
        return;
    }
    if (!succeeded(*slow != 0 ? device->enableUsbSlowMode() : device->disableUsbSlowMode(),
                   "设置USB慢速模式失败，可能是驱动未正确加载或设备未连接。"))
        return;
    if (!restart())
        return;
    settings->store("USB/SlowMode", text);
    qDebug() << "USB慢速模式设置已保存：" << text;
}
