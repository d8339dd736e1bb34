#pragma once

#include "driver/device_protocol.h"

#include <QList>

#include <vector>

class PanelLink;
class QLabel;
class QObject;

/// The read-outs of a panel, brought up to date every 500 ms: levels in dB full scale.
class PanelMeters
{
public:
    explicit PanelMeters(PanelLink& link);

    /// Shows the mean of these samples of the driver's block.
    void add(QLabel* readOut, const std::vector<std::size_t>& samples);
    /// The timer is a child of `panel`.
    void start(QObject* panel);

private:
    struct Entry
    {
        QLabel* readOut;
        std::vector<std::size_t> samples;
    };

    void update();

    PanelLink& link;
    MeterBlock block{};
    QList<Entry> entries;
};
