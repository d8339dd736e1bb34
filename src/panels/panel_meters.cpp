#include "panels/panel_meters.h"

#include "driver/gain.h"
#include "panels/panel_link.h"
#include "panels/panel_widgets.h"

#include <QDebug>
#include <QTimer>

#include <utility>

namespace {

constexpr int meterInterval = 500;

/// The mean of the phone's two channels. The sum wraps as 32-bit arithmetic does.
double phoneLevelDb(std::int32_t left, std::int32_t right)
{
    const auto sum = static_cast<std::int32_t>(static_cast<std::uint32_t>(left) +
                                               static_cast<std::uint32_t>(right));
    return sampleToDb(sum / 2);
}

} // namespace

LevelOf inputLevel(std::size_t input)
{
    return [input](const MeterBlock& levels) { return sampleToDb(levels[input]); };
}

LevelOf phoneLevel()
{
    return [](const MeterBlock& levels) { return phoneLevelDb(levels[2], levels[3]); };
}

PanelMeters::PanelMeters(PanelLink& panelLink)
    : link(panelLink)
{
}

void PanelMeters::add(QLabel* readOut, LevelOf level)
{
    entries.append({readOut, std::move(level)});
}

void PanelMeters::start(QObject* panel)
{
    auto* timer = new QTimer(panel);
    QObject::connect(timer, &QTimer::timeout, panel, [this] { update(); });
    timer->start(meterInterval);
}

void PanelMeters::update()
{
    if (!link.readMeters(block)) {
        qDebug() << "Failed to read meter data from driver.";
        return;
    }
    for (const Entry& entry : entries)
        PanelWidgets::showLevel(entry.readOut, entry.level(block));
}
