#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QProcessEnvironment>
#include <QStringList>

#include <optional>

/// One request that the simulated interface has received.
struct TracedRequest
{
    quint32 code = 0;
    QByteArray input;        ///< its first 40 bytes, none of a mixer table
    QMap<int, double> cells; ///< of a mixer table, those that it changed, to six digits
    bool accepted = false;
};

/// Speaks to the running simulator through the command quorvel-simctl.
class SimulatorTool
{
public:
    /// The environment tells which simulator.
    explicit SimulatorTool(const QProcessEnvironment& environment);

    /// Plugs in "ka1", "ka2", "ks" or an interface with another product id at bus 0.
    bool plug(const QString& model) const;
    bool unplug() const;
    /// Unplugs and forgets everything that was received or set.
    bool reset() const;
    bool moveLevels() const;
    bool clearTrace() const;

    /// Handles that programs hold on the device; nothing when the simulator did not answer.
    std::optional<int> openHandles() const;

    /// What is plugged in and how it is set, by the names that the tool prints ("sample rate").
    std::optional<QMap<QString, QString>> state() const;

    /// Gives the tool any of its orders; false when it was refused.
    bool order(const QStringList& words) const;

    /// What the device has received; nothing when the simulator did not answer.
    std::optional<QList<TracedRequest>> requests() const;

    /// The command records among the requests, oldest first, as hexadecimal text.
    std::optional<QStringList> packets() const;

    /// The requests as the tool prints them, one line each.
    std::optional<QStringList> traceLines() const;
    /// The same, and these are forgotten.
    std::optional<QStringList> takeTraceLines() const;

private:
    std::optional<QStringList> lines(const QStringList& arguments) const;
    std::optional<QString> run(const QStringList& arguments) const;

    QProcessEnvironment variables;
};
