#pragma once

#include "system/desktop/line_follower.h"
#include "system/desktop/panel_session.h"
#include "system/desktop/process_figures.h"
#include "system/soak/random_user.h"
#include "system/soak/surroundings.h"

#include <QElapsedTimer>

#include <chrono>
#include <memory>

/// Random users and random surroundings for as long as asked. Every minute all comes to rest, the
/// panel must be whole again, the interface must get what is stored, and what the panel holds is
/// compared with what it held after the first one.
class Soak
{
public:
    Soak(std::chrono::seconds length, unsigned seed);

    /// Whether nothing went wrong; what did is printed.
    bool run();

private:
    /// What a panel at rest holds.
    struct Holdings
    {
        ProcessFigures process;
        int connections = 0;      ///< open at the interface
        qint64 wakeUpsInSpan = 0; ///< which its timers cause
        qint64 requestsInSpan = 0;
    };

    bool start();
    bool goOn();
    bool rest();
    /// Plugs the cable in, and sees that what is stored reaches the interface and stays stored.
    bool returnsWithWhatIsStored();
    std::optional<qint64> requests() const; ///< since the interface is there
    std::optional<Holdings> measured() const;
    QString flawOf(const Holdings& now) const;
    bool settles(Holdings& holdings);
    bool awaitLine(const QString& line);
    bool awaitRemoval();
    void takeLines();
    bool end();
    void print(const char* when, const Holdings& holdings) const;
    bool fail(const QString& what) const;

    std::chrono::seconds length;
    RandomChoice random;
    SoakFigures figures;
    PanelSession session;
    RandomUser user;
    Surroundings surroundings;
    std::unique_ptr<LineFollower> follower;
    QStringList lastLines;
    QMap<QString, qint64> counts; ///< of the lines that are waited for
    QString alarm;                ///< A line that must not be there.
    std::optional<Holdings> first;
    QStringList firstDetails;
    qint64 largestMemory = 0;
    QElapsedTimer clock;
};
