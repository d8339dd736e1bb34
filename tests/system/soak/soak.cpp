#include "system/soak/soak.h"

#include "system/desktop/desktop.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"
#include "system/stored_story.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>
#include <cstdio>

using namespace std::chrono_literals;

namespace {

const QString arrived = QStringLiteral("Device found with PID: 1");
const QString initialised = QStringLiteral("设置初始化完成");
const QString removed = QStringLiteral("Cleared all widgets from base layout.");

constexpr std::chrono::milliseconds restInterval = 60s;
constexpr std::chrono::milliseconds span = 4s; ///< of counting wake-ups and requests

// The settings dialog, the panel and the connection's watcher.
constexpr int usedConnections = 3;
constexpr int mostKeptConnections = 256;

/// Above the first minute's, in KiB. The toolkit's cache of pictures comes to 10 MiB while there is
/// always something to do; natively the sanitizer keeps freed memory as well, and the way that led
/// to each piece. A leak of what one action takes is far above after some hours.
constexpr qint64 mostGrowth = 20 * 1024;
constexpr qint64 mostGrowthOfSanitizer = 64 * 1024;
/// The toolkit and Wine open some more of their own, and keep them, when something is first shown
/// or looked up. More than these would be a leak.
constexpr int mostMoreFiles = 8;
/// In `span`, beside some times as many as at first, since each request may wait for its answer or
/// not, and in Wine for its server many times, the more the busier the machine is. Timers that are
/// left behind become ever more; those that the toolkit fires together wake only once, but each
/// reads something.
constexpr qint64 mostMoreWakeUps = 20;
constexpr qint64 mostMoreRequests = 6;
constexpr int mostTimesWakeUps = 2;
constexpr int mostTimesWakeUpsOfWine = 5;

} // namespace

Soak::Soak(std::chrono::seconds seconds, unsigned seed)
    : length(seconds)
    , random(seed)
    , user(random)
    , surroundings(session, random, figures)
{
}

bool Soak::fail(const QString& what) const
{
    std::printf("after %lld s and %lld actions: %s\nthe last debug lines:\n",
                clock.elapsed() / 1000, figures.actions, qPrintable(what));
    for (const QString& line : lastLines)
        std::printf("    %s\n", qPrintable(line));
    const QString picture =
        QCoreApplication::applicationDirPath() + QStringLiteral("/soak-failure.png");
    if (Desktop::picture(QGuiApplication::primaryScreen()->geometry()).save(picture))
        std::printf("what was on the screen: %s\n", qPrintable(picture));
    std::fflush(stdout);
    return false;
}

void Soak::takeLines()
{
    static const QRegularExpression bad(
        QStringLiteral("Sanitizer|runtime error|QObject::|QThread|terminate called|assert"));
    constexpr qsizetype kept = 60;
    const QStringList lines = follower->take();
    for (const QString& line : lines) {
        if (line.startsWith(QStringLiteral("Device found with PID: ")))
            ++figures.arrivals;
        if (line == arrived || line == initialised || line == removed ||
            line.startsWith(QStringLiteral("Device PID: ")))
            ++counts[line.section(QLatin1Char(':'), 0, 0)];
        if (alarm.isEmpty() && bad.match(line).hasMatch())
            alarm = line;
    }
    lastLines =
        (lastLines + lines).mid(std::max<qsizetype>(0, lastLines.size() + lines.size() - kept));
}

bool Soak::awaitLine(const QString& line)
{
    const QString name = line.section(QLatin1Char(':'), 0, 0);
    const qint64 before = counts.value(name);
    return waitUntil([&] {
        takeLines();
        return counts.value(name) > before;
    });
}

/// A panel that was there is removed, and one that was not is looked for again.
bool Soak::awaitRemoval()
{
    const QString look = QStringLiteral("Device PID");
    const qint64 before = counts.value(look);
    return waitUntil([&] {
        takeLines();
        return counts.value(look) >= before + 2;
    });
}

/// The panel whole again, nothing shown.
bool Soak::rest()
{
    if (!surroundings.calmDown() || !user.closeEverything() || !awaitRemoval() ||
        !returnsWithWhatIsStored())
        return false;
    // The first time it is waited for what the toolkit gives back later, if there is to be a
    // second.
    if (first)
        QThread::msleep(2500);
    else if (length > restInterval)
        QThread::msleep(35000);
    return true;
}

bool Soak::returnsWithWhatIsStored()
{
    const QString file = session.folder().settingsFile(QStringLiteral("ka1.ini"));
    const auto before = StoredStory::read(file);
    if (!before || !session.simulator().clearTrace() || !surroundings.plugIn() ||
        !awaitLine(initialised))
        return false;
    const auto received = session.simulator().requests();
    const auto after = StoredStory::read(file);
    if (!received || !after)
        return false;
    StoredStory story(*before);
    for (const TracedRequest& request : *received)
        story.take(request);
    const QString flaw = story.flawOfReplay() + story.flawOf(*after);
    if (!flaw.isEmpty())
        std::printf("stored: %s\n", qPrintable(flaw));
    return flaw.isEmpty();
}

std::optional<qint64> Soak::requests() const
{
    const auto state = session.simulator().state();
    if (!state)
        return std::nullopt;
    return state->value(QStringLiteral("requests")).toLongLong();
}

std::optional<Soak::Holdings> Soak::measured() const
{
    const qint64 panel = session.panel().processId();
    const auto requestsBefore = requests();
    const auto before = ProcessFigures::of(panel);
    QThread::msleep(static_cast<unsigned long>(span.count()));
    const auto after = ProcessFigures::of(panel);
    const auto requestsAfter = requests();
    const auto connections = session.simulator().openHandles();
    if (!before || !after || !connections || !requestsBefore || !requestsAfter)
        return std::nullopt;
    return Holdings{*after, *connections, after->wakeUps - before->wakeUps,
                    *requestsAfter - *requestsBefore};
}

void Soak::print(const char* when, const Holdings& holdings) const
{
    const ProcessFigures& process = holdings.process;
    std::printf("%s, %lld s: %lld actions, %lld arrivals; memory %lld KiB, descriptors %d (sockets "
                "%d), threads %d, connections %d, in %lld ms %lld wake-ups and %lld requests\n",
                when, clock.elapsed() / 1000, figures.actions, figures.arrivals, process.memory,
                process.openFiles, process.sockets, process.threads, holdings.connections,
                static_cast<qint64>(span.count()), holdings.wakeUpsInSpan, holdings.requestsInSpan);
    std::fflush(stdout);
}

QString Soak::flawOf(const Holdings& now) const
{
    const int kept = now.connections - usedConnections;
    if (kept < 0 || kept > mostKeptConnections)
        return QStringLiteral("connections");
    if (!first)
        return {};
    const ProcessFigures& then = first->process;
    if (now.process.threads > then.threads)
        return QStringLiteral("more threads");
    const int moreFiles =
        now.process.openFiles - now.process.sockets - (then.openFiles - then.sockets);
    // Under Wine a connection to the interface is no socket.
    if (moreFiles > mostMoreFiles + (Target::isWindows() ? kept : 0))
        return QStringLiteral("more descriptors");
    if (now.process.sockets > then.sockets + mostKeptConnections)
        return QStringLiteral("more sockets");
    if (now.process.memory >
        then.memory + (Target::isWindows() ? mostGrowth : mostGrowthOfSanitizer))
        return QStringLiteral("more memory");
    const int times = Target::isWindows() ? mostTimesWakeUpsOfWine : mostTimesWakeUps;
    if (now.wakeUpsInSpan > times * first->wakeUpsInSpan + mostMoreWakeUps ||
        now.requestsInSpan > first->requestsInSpan + mostMoreRequests)
        return QStringLiteral("more timers");
    return {};
}

/// The toolkit keeps what it may need again for up to half a minute, such as threads that help to
/// paint.
bool Soak::settles(Holdings& holdings)
{
    QString flaw;
    const bool sound = waitUntil([&] {
        const auto now = measured();
        if (!now)
            return false;
        holdings = *now;
        return (flaw = flawOf(holdings)).isEmpty();
    });
    takeLines();
    if (!alarm.isEmpty())
        return fail(alarm);
    print(first ? "at rest" : "first rest", holdings);
    if (!sound) {
        QStringList details = ProcessFigures::details(session.panel().processId());
        for (const QString& known : firstDetails)
            details.removeOne(known);
        std::printf("new since the first rest:\n    %s\n",
                    qPrintable(details.join(QStringLiteral("\n    "))));
        return fail(flaw);
    }
    largestMemory = std::max(largestMemory, holdings.process.memory);
    if (!first) {
        first = holdings;
        firstDetails = ProcessFigures::details(session.panel().processId());
    }
    return true;
}

bool Soak::start()
{
    if (!session.startSimulator() || !surroundings.plugIn() || !session.startPanel())
        return fail(QStringLiteral("the panel does not start"));
    follower = std::make_unique<LineFollower>(session.panel().debugFile());
    return awaitLine(initialised) || fail(QStringLiteral("the interface is not found"));
}

/// Until the next rest or the end.
bool Soak::goOn()
{
    QElapsedTimer since;
    since.start();
    while (!since.hasExpired(restInterval.count()) &&
           !clock.hasExpired(std::chrono::milliseconds(length).count())) {
        random.chance(75) ? user.act() : surroundings.act();
        ++figures.actions;
        takeLines();
        if (!alarm.isEmpty())
            return fail(alarm);
        if (!session.panel().isRunning())
            return fail(QStringLiteral("the panel does not run any more"));
        QThread::msleep(static_cast<unsigned long>(random.below(100)));
    }
    return true;
}

bool Soak::end()
{
    surroundings.takeCounts();
    if (!session.askToEnd(session.panel()))
        return fail(QStringLiteral("the panel cannot be asked to end"));
    const int code = session.panel().waitForExit().value_or(-1);
    takeLines();
    if (code != 0)
        return fail(QStringLiteral("the panel ended with %1").arg(code));
    return true;
}

bool Soak::run()
{
    clock.start();
    if (!start())
        return false;
    Holdings last;
    do {
        if (!goOn())
            return false;
        if (!rest())
            return fail(QStringLiteral("the panel does not come to rest"));
        if (!settles(last))
            return false;
    } while (!clock.hasExpired(std::chrono::milliseconds(length).count()));
    if (!end())
        return false;
    std::printf(
        "%lld s: %lld actions, %lld arrivals, %lld requests, %lld refused, %lld restarts of "
        "the simulator, %lld pipe clients, %lld further copies\n"
        "memory grew by %lld KiB, by %lld at most, since the first rest\n",
        clock.elapsed() / 1000, figures.actions, figures.arrivals, figures.requests, figures.faults,
        figures.restarts, figures.pipeClients, figures.copies,
        last.process.memory - first->process.memory, largestMemory - first->process.memory);
    return true;
}
