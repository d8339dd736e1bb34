#include "panels/output_volume.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "driver/gain.h"
#include "panels/panel_link.h"

#include <QDebug>

namespace {

constexpr int floorDb = -80;
constexpr int dimDb = 20;

void log(const char* text)
{
    if (text != nullptr)
        qDebug() << text;
}

} // namespace

OutputVolume::OutputVolume(const OutputTraits& outputTraits, PanelLink& panelLink,
                           const OutputControls& outputControls, QObject* parent)
    : QObject(parent)
    , traits(outputTraits)
    , link(panelLink)
    , controls(outputControls)
{
    connect(controls.volume, &Knob::valueChangedSig, this, &OutputVolume::volumeChanged);
    connect(controls.mute, &Button::pressed, this, &OutputVolume::muteToggled);
    connect(controls.dim, &Button::pressed, this, &OutputVolume::dimToggled);
}

int OutputVolume::level(int dB) const
{
    if (muted)
        return floorDb;
    return dimmed ? dB - dimDb : dB;
}

void OutputVolume::volumeChanged(int dB)
{
    if (traits.changed != nullptr)
        qDebug() << traits.changed << dB;
    const double gain = dbToGain(level(dB));
    if (!link.sendGain(traits.cells, gain))
        qDebug() << traits.failed;
    else if (traits.report == OutputTraits::Report::gain)
        qDebug() << traits.set << gain;
    else if (traits.report == OutputTraits::Report::level)
        qDebug() << traits.set << level(dB);
    link.store(traits.knobKey, controls.volume->value);
}

void OutputVolume::muteToggled(bool on)
{
    const char* text = on ? traits.muteOn : traits.muteOff;
    const bool toFloor = on && traits.muteArgument == OutputTraits::MuteArgument::floor;
    muted = on;
    if (traits.clickLog == OutputTraits::ClickLog::beforeVolume)
        log(text);
    volumeChanged(toFloor ? floorDb : controls.volume->value);
    if (traits.clickLog == OutputTraits::ClickLog::afterVolume)
        log(text);
    link.store(traits.muteKey, controls.mute->on);
}

void OutputVolume::dimToggled(bool on)
{
    const char* text = on ? traits.dimOn : traits.dimOff;
    dimmed = on;
    if (traits.clickLog == OutputTraits::ClickLog::beforeVolume)
        log(text);
    volumeChanged(controls.volume->value);
    if (traits.clickLog == OutputTraits::ClickLog::afterVolume)
        log(text);
    link.store(traits.dimKey, controls.dim->on);
}
