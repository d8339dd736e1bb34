#include "panels/panel_link.h"

#include <QDebug>
#include <QDir>
#include <QStandardPaths>
#include <QVariant>

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint16_t startOutputVolume = 100;

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
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder);
    settings = std::make_unique<QSettings>(folder + model.settingsFile, QSettings::IniFormat);
}

int PanelLink::storedNumber(const char* key, int missing) const
{
    bool isNumber = false;
    const int number = settings->value(QLatin1String(key), missing).toInt(&isNumber);
    return isNumber ? number : missing;
}

bool PanelLink::storedSwitch(const char* key) const
{
    const QString text = settings->value(QLatin1String(key), false).toString();
    return text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text.toInt() != 0;
}

void PanelLink::store(const char* key, const QVariant& value)
{
    settings->setValue(QLatin1String(key), value);
    save();
}

void PanelLink::save()
{
    settings->sync();
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
