#include "settings/settings.h"

#include "asio/asio_reset.h"
#include "asio/thread_settings_pip.h"
#include "controls/keyboard_policy.h"
#include "controls/window_placement.h"
#include "driver/driver_device.h"
#include "storage/settings_file.h"

#include <QComboBox>
#include <QDebug>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {

constexpr int usbErrorInterval = 1000;

const QString settingsFile = QStringLiteral("setting.ini");

/// A list that the wheel only scrolls while it is open, and never brings the keyboard to: a choice
/// stops the sound for a moment.
class ChoiceList : public QComboBox
{
public:
    explicit ChoiceList(QWidget* parent)
        : QComboBox(parent)
    {
        setFocusPolicy(Qt::StrongFocus);
    }

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

} // namespace

Settings::Settings()
    : device(std::make_unique<DriverDevice>())
{
    qDebug() << "Settings dialog created.";
    setWindowTitle(QStringLiteral("Settings"));
    setStyleSheet(QStringLiteral("QDialog { background-color: #2c313c; color: white; }"));
    settings = &SettingsFile::open(settingsFile);
    buildLayout();
    KeyboardPolicy::holdWindow(*this);
    startPipeThread();
    startUsbErrorTimer();
}

Settings::~Settings()
{
    usbErrorTimer->stop();
    device.reset();
    qDebug() << "Settings dialog closed and resources cleaned up.";
    // A thread that the system does not let go of stays behind, since it works on its object, and
    // ends with the process.
    auto* thread = findChild<ThreadSettingsPip*>();
    if (!thread->end())
        thread->setParent(nullptr);
}

void Settings::buildLayout()
{
    mainLayout = new QVBoxLayout(this);
    mainLayout->setAlignment(Qt::AlignCenter);
    mainLayout->setContentsMargins(40, 10, 40, 40);
    // By way of a pixmap all windows and the tray share one image.
    setWindowIcon(QIcon(QPixmap(QStringLiteral(":/icon/icon.png"))));

    auto* title = new QLabel(tr("Settings"), this);
    title->setAlignment(Qt::AlignCenter);
    title->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: bold; color: #00FFFF;"));
    mainLayout->addWidget(title);

    bufferSizeCombo =
        addChoice(tr("Buffer Size"), SettingsChoices::bufferSizes, &Settings::onBufferSizeChanged);
    latencyCombo = addChoice(tr("USB Latency Size"), SettingsChoices::usbLatencies,
                             &Settings::onUsbLatencyChanged);
    sampleRateCombo =
        addChoice(tr("Samplerate"), SettingsChoices::sampleRates, &Settings::onSampleRateChanged);
    slowModeCombo =
        addChoice(tr("Safe Mode"), SettingsChoices::slowModes, &Settings::onSlowModeChanged);

    mainLayout->addSpacing(20);
    auto* ok = new QPushButton(tr("OK"), this);
    ok->setStyleSheet(QStringLiteral("background-color: #008888; color: white; font-size: 14px;"));
    mainLayout->addWidget(ok, 0, Qt::AlignCenter);
    KeyboardPolicy::holdControl(*ok);
    connect(ok, &QPushButton::clicked, this, &Settings::notifyAsioReset);
    mainLayout->addStretch();
    mainLayout->setSpacing(15);

    usbErrorLabel = new QLabel(tr("USB Error"), this);
    usbErrorLabel->setAlignment(Qt::AlignCenter);
    usbErrorLabel->setStyleSheet(QStringLiteral("font-size: 10px; color: #888888;"));
    mainLayout->addWidget(usbErrorLabel);
    usbErrorLabel->hide();
    new WindowPlacement(*this);
}

QComboBox* Settings::addChoice(const QString& label,
                               std::span<const SettingsChoices::Choice> choices,
                               void (Settings::*apply)(int))
{
    auto* caption = new QLabel(label, this);
    caption->setStyleSheet(QStringLiteral("font-size: 14px; color: #008888;"));
    mainLayout->addWidget(caption);

    auto* combo = new ChoiceList(this);
    caption->setBuddy(combo);
    for (const SettingsChoices::Choice& choice : choices)
        combo->addItem(QLatin1String(choice.text));
    mainLayout->addWidget(combo);
    connect(combo, &QComboBox::currentIndexChanged, this, apply);
    return combo;
}

void Settings::startPipeThread()
{
    auto* thread = new ThreadSettingsPip(this);
    connect(thread, &ThreadSettingsPip::progressUpdated, this, &Settings::showFromPipe);
    thread->start(QThread::InheritPriority);
}

void Settings::startUsbErrorTimer()
{
    usbErrorTimer = new QTimer(this);
    connect(usbErrorTimer, &QTimer::timeout, this, &Settings::updateUsbErrorCount);
    usbErrorTimer->start(usbErrorInterval);
}

bool Settings::connectDevice()
{
    device = std::make_unique<DriverDevice>();
    if (device->open())
        return true;
    // Names the first model whatever is attached: log readers know the line so.
    qDebug() << "Failed to create device in ka1.";
    return false;
}

void Settings::loadSettings()
{
    settings = &SettingsFile::open(settingsFile);
    settings->bringBack(this, [this] {
        // A choice that no device takes would pass for applied when the next one comes.
        if (!reinitPending)
            showStoredChoices();
    });
}

void Settings::showStoredChoices()
{
    const auto load = [this](const char* key, const char* missing, QComboBox* combo) {
        combo->setCurrentText(settings->text(key, QLatin1String(missing)));
    };
    load("USB/LatencySize", "8", latencyCombo);
    load("Audio/BufferSize", "192", bufferSizeCombo);
    load("USB/SlowMode", "Disabled", slowModeCombo);
    load("Audio/SampleRate", "44100", sampleRateCombo);
    qDebug() << "已从配置文件加载控件状态";
}

void Settings::updateUsbErrorCount()
{
    if (!device->readUsbStatus(usbStatus)) {
        qDebug() << "Failed to read meter data from driver.";
        return;
    }
    if (usbStatus.usbErrorCount == 0) {
        usbErrorLabel->hide();
        return;
    }
    usbErrorLabel->setText(tr("USB Error Count: %1").arg(std::uint32_t{usbStatus.usbErrorCount}));
    usbErrorLabel->show();
}

void Settings::showFromPipe()
{
    setWindowFlag(Qt::WindowStaysOnTopHint);
    show();
    if (isMinimized())
        showNormal();
    else
        show();
    raise();
    activateWindow();
    qDebug() << "Received signal from pipe thread to show settings window.";
}

void Settings::notifyAsioReset()
{
    hide();
    sendAsioReset();
}
