#include "system/soak/surroundings.h"

#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"

#include <QFile>

#include <iterator>

Surroundings::Surroundings(PanelSession& owner, RandomChoice& choice, SoakFigures& soakFigures)
    : session(owner)
    , random(choice)
    , figures(soakFigures)
{
}

void Surroundings::act()
{
    const int way = random.below(100);
    if (way < 35)
        moveCable();
    else if (way < 55)
        addFault();
    else if (way < 65)
        changeReading();
    else if (way < 88)
        visitPipe();
    else if (way < 93)
        startCopy();
    else
        restartSimulator();
}

void Surroundings::moveCable()
{
    if (random.chance(30)) {
        session.simulator().unplug();
        return;
    }
    const QString model =
        random.chance(92) ? random.oneOf({"ka1", "ka2", "ks"}) : random.oneOf({"3", "7", "0"});
    session.simulator().order({QStringLiteral("plug"), model,
                               random.chance(70) ? QStringLiteral("0") : random.number(16)});
}

QString Surroundings::anyCode()
{
    return random.oneOf({"FFDC2020", "FFDC2038", "FFDC2040", "FFDC2044", "FFDC2048", "FFDC204C",
                         "FFDC2050", "FFDC2074", "FFDC2078", "FFDC207C", "FFDC2080", "FFDC2084",
                         "FFDC2088", "FFDC2090", "FFDC2094", "FFDC209C", "FFDC20A0", "FFDC20C0",
                         "any"});
}

void Surroundings::addFault()
{
    const int way = random.below(100);
    QStringList words{QStringLiteral("clear-faults")};
    if (way >= 35) {
        const QString count = random.oneOf({"1", "1", "2", "3", "6", "20"});
        if (way < 75)
            words = {QStringLiteral("fail"), anyCode(), count, random.oneOf({"1", "31", "1167"}),
                     random.number(3)};
        else if (way < 90)
            words = {QStringLiteral("delay"), anyCode(), random.oneOf({"1", "2", "3"}),
                     QString::number(10 * random.below(50))};
        else
            words = {QStringLiteral("short"), anyCode(), count, random.number(40)};
    }
    session.simulator().order(words);
}

void Surroundings::changeReading()
{
    const int way = random.below(100);
    QStringList words{QStringLiteral("levels-moving"), random.oneOf({"on", "on", "off"})};
    if (way < 30)
        words = {QStringLiteral("errors"), random.oneOf({"0", "1", "3", "4294967295"})};
    else if (way < 60)
        words = {QStringLiteral("firmware"), random.oneOf({"1.0.7", "V1.23beta!", "0123456789"})};
    else if (way < 80)
        words = {QStringLiteral("engine"), random.oneOf({"44100", "48000"}),
                 random.oneOf({"48", "192", "1024"}), random.oneOf({"8", "24", "32"})};
    session.simulator().order(words);
}

QString Surroundings::anyMessage()
{
    QString message;
    for (int left = random.chance(80) ? random.below(40) : 1000 + random.below(60); left > 0;
         --left)
        message += QStringLiteral("%1").arg(random.below(256), 2, 16, QLatin1Char('0'));
    return message;
}

void Surroundings::visitPipe()
{
    constexpr int mostPeers = 4;
    const int way = random.below(100);
    QStringList words{QStringLiteral("open-settings")};
    if (way < 20)
        words = {QStringLiteral("send"), anyMessage()};
    else if (way < 35)
        words = {QStringLiteral("connect"), random.number(1500)};
    else if (way < 50)
        words = {QStringLiteral("wait-reset"), QStringLiteral("20")};
    else if (way < 55)
        words = {QStringLiteral("hold-busy"), QStringLiteral("2")};
    else if (way < 60)
        words = {QStringLiteral("hold-unread"), QStringLiteral("2")};
    if (std::ssize(peers) == mostPeers)
        peers.pop_front();
    peers.push_back(std::make_unique<ChildProgram>(
        Target::tool(QStringLiteral("quorvel-asio-peer")) + words, session.folder().environment(),
        session.folder().path(QStringLiteral("peer-%1").arg(peerNumber++ % (2 * mostPeers)))));
    ++figures.pipeClients;
}

void Surroundings::startCopy()
{
    const auto copy = session.startCopy();
    if (copy->waitForExit() != 0)
        qFatal("a second copy did not leave with 0");
    QFile::remove(copy->debugFile());
    ++figures.copies;
}

bool Surroundings::takeCounts()
{
    const auto state = session.simulator().state();
    if (!state)
        return false;
    const qint64 requests = state->value(QStringLiteral("requests")).toLongLong();
    const qint64 faults = state->value(QStringLiteral("refused")).toLongLong();
    figures.requests += requests - countedRequests;
    figures.faults += faults - countedFaults;
    countedRequests = requests;
    countedFaults = faults;
    return true;
}

bool Surroundings::restartSimulator()
{
    if (!takeCounts() || !session.restartSimulator())
        return false;
    countedRequests = 0;
    countedFaults = 0;
    ++figures.restarts;
    return true;
}

bool Surroundings::calmDown()
{
    peers.clear();
    const SimulatorTool& simulator = session.simulator();
    return simulator.order({QStringLiteral("clear-faults")}) &&
           simulator.order({QStringLiteral("errors"), QStringLiteral("0")}) &&
           simulator.order({QStringLiteral("firmware"), QStringLiteral("1.0.7")}) &&
           simulator.order({QStringLiteral("levels-moving"), QStringLiteral("on")}) &&
           simulator.unplug();
}

bool Surroundings::plugIn()
{
    return session.simulator().plug(QStringLiteral("ka1"));
}
