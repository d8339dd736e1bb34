#pragma once

#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"

/// Base of the tests that end the panel from outside: brings it into each of the states in which
/// that may happen, and looks at how it ended.
class EndStates : public SystemTest
{
    Q_OBJECT

protected:
    /// The rows of a test function, one for each state.
    static void addStates();

    /// Starts the panel with a KA1 and brings it into the state of the current row.
    bool reachState();

    /// The panel has ended as after "Quit": exit code 0, everything torn down in order. Otherwise
    /// what is wrong.
    QString flawOfTheEnd();
    /// No icon and no connection to the device is left. Otherwise what there is.
    QString leftBehind();

    /// Starts the panel with a KA1 and turns its first knob, which is stored at once.
    bool changeGain();
    /// What was told last of that knob is stored. Otherwise what is wrong.
    QString flawOfTheGain();

    /// Plays the ASIO driver with the tool for that, until the next state.
    bool startPeer(const QStringList& words, const QString& awaitedLine);

    /// Puts a program that runs for half a minute in the place of the command interpreter.
    QString interpreter();
    bool placeSlowInterpreter();

private:
    bool plugAndStart();
    bool startHidden();
    bool showWindow();
    bool hideWindowAgain();
    bool minimiseWindow();
    bool showDialog();
    bool showBoth();
    bool openTrayMenu();
    bool openWarningBox();
    bool waitInSequence();
    bool waitBetweenTimedSteps();
    bool restartExplorer();
    bool blockReset();
    bool typeIntoDialog(const QString& key);
    bool openComboList();
    std::optional<QPoint> firstKnob();
    bool openKnobEditor();
    bool startOnly();

    struct State
    {
        const char* name;
        bool (EndStates::*reach)();
    };
    static const QList<State>& states();

    TrayMenu trayMenu;
    std::unique_ptr<ChildProgram> peer;
};
