#pragma once

#include "driver/device_protocol.h"

#include <QList>

#include <functional>

class PanelLink;
class QLabel;
class QObject;

/// A level in dB full scale, out of the driver's block.
using LevelOf = std::function<double(const MeterBlock& levels)>;

/// The level of an input, by its number from 0 on.
LevelOf inputLevel(std::size_t input);
/// The level of the phone input: the mean of its two channels.
LevelOf phoneLevel();

/// The read-outs of a panel, brought up to date every 500 ms.
class PanelMeters
{
public:
    explicit PanelMeters(PanelLink& link);

    void add(QLabel* readOut, LevelOf level);
    /// The timer is a child of `panel`.
    void start(QObject* panel);

private:
    struct Entry
    {
        QLabel* readOut;
        LevelOf level;
    };

    void update();

    PanelLink& link;
    MeterBlock block{};
    QList<Entry> entries;
};
