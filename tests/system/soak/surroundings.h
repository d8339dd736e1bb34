#pragma once

#include "system/desktop/panel_session.h"
#include "system/soak/random_choice.h"
#include "system/soak/soak_figures.h"

#include <deque>
#include <memory>

/// What goes on around the panel: the cable, the interface's faults and readings, the simulator
/// that dies and comes back, the ASIO driver at both pipes, further copies.
class Surroundings
{
public:
    Surroundings(PanelSession& session, RandomChoice& random, SoakFigures& figures);

    void act();

    /// Ends all faults and pipe clients and pulls the plug. False when the simulator refuses.
    bool calmDown();
    bool plugIn();

    /// Adds up what the simulator has counted and starts it anew, as a process that crashed.
    bool restartSimulator();
    /// Adds up what the simulator has counted since the last time.
    bool takeCounts();

private:
    void moveCable();
    void addFault();
    void changeReading();
    void visitPipe();
    void startCopy();
    QString anyCode();
    QString anyMessage();

    PanelSession& session;
    RandomChoice& random;
    SoakFigures& figures;
    /// Some stay for a while; the oldest vanishes for the next one.
    std::deque<std::unique_ptr<ChildProgram>> peers;
    int peerNumber = 0;
    qint64 countedRequests = 0;
    qint64 countedFaults = 0;
};
