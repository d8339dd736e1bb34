#include "panels/panel_meters.h"

#include "driver/gain.h"
#include "panels/panel_link.h"
#include "panels/panel_widgets.h"

#include <QDebug>
#include <QTimer>

namespace {

constexpr int meterInterval = 500;

/// The mean of these samples. The sum wraps as 32-bit arithmetic does.
std::int32_t mean(const MeterBlock& block, const std::vector<std::size_t>& samples)
{
    std::uint32_t sum = 0;
    for (const std::size_t sample : samples)
        sum += static_cast<std::uint32_t>(block[sample]);
    return static_cast<std::int32_t>(sum) / static_cast<std::int32_t>(samples.size());
}

} // namespace

PanelMeters::PanelMeters(PanelLink& panelLink)
    : link(panelLink)
{
}

void PanelMeters::add(QLabel* readOut, const std::vector<std::size_t>& samples)
{
    entries.append({readOut, samples});
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
        PanelWidgets::showLevel(entry.readOut, sampleToDb(mean(block, entry.samples)));
}
