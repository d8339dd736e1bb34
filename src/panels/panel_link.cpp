#include "panels/panel_link.h"

#include "storage/settings_file.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint16_t startOutputVolume = 100;

const QString onText = QStringLiteral("true");
const QString offText = QStringLiteral("false");

} // namespace

PanelLink::PanelLink(PanelModel panelModel)
    : model(std::move(panelModel))
{
}

bool PanelLink::openDevice()
{
    if (!driver.open()) {
        qDebug() << model.openFailed;
        return false;
    }
    bool accepted = true;
    for (const std::uint8_t channel : model.outputChannels)
        accepted = driver.setOutVolume(channel, startOutputVolume);
    if (!accepted)
        qDebug() << "Failed to set output volume.";
    return accepted;
}

void PanelLink::openSettings()
{
    settings = &SettingsFile::open(model.settingsFile);
}

int PanelLink::storedNumber(const char* key, int missing) const
{
    bool isNumber = false;
    const int number = settings->text(key).toInt(&isNumber);
    return isNumber ? number : missing;
}

bool PanelLink::storedSwitch(const char* key) const
{
    const QString text = settings->text(key);
    return text.compare(onText, Qt::CaseInsensitive) == 0 || text.toInt() != 0;
}

void PanelLink::bringBack(QObject* panel, const std::function<void()>& restore)
{
    settings->bringBack(panel, restore);
}

void PanelLink::store(const char* key, int value)
{
    settings->store(key, QString::number(value));
    reportSaved();
}

void PanelLink::store(const char* key, bool value)
{
    settings->store(key, value ? onText : offText);
    reportSaved();
}

void PanelLink::save()
{
    if (settings == nullptr)
        return;
    settings->save();
    reportSaved();
}

void PanelLink::reportSaved() const
{
    if (*model.savedText != '\0')
        qDebug() << model.savedText;
}

bool PanelLink::sendGain(std::span<const std::size_t> cells, double gain)
{
    for (const std::size_t cell : cells)
        presetGain(cell, gain);
    return driver.writeMixerTable(mixer);
}

void PanelLink::presetOutputGains()
{
    std::fill_n(mixer.begin() + MixerCell::outputGains, MixerCell::outputCount, 1.0);
}
