#pragma once

#include "system/desktop/system_test.h"
#include "system/desktop/tray_menu.h"

#include <functional>

/// Base of the tests that end the panel from outside: brings it into each of the states in which
/// that may happen, and looks at how it ended.
class EndStates : public SystemTest
{
    Q_OBJECT

protected:
    /// The rows of a test function, one for each state or for those with these names.
    static void addStates(const QStringList& names = {});

    /// Starts the panel and brings it into the state of the current row.
    bool reachState();
    /// Whether it is in that state now.
    bool stateHolds();
    /// Natively ends what holds it up there, once it has been asked to end.
    bool release();

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

private:
    bool start();
    bool startWithKa1();
    bool hideWindowAgain();
    bool minimiseWindow();
    bool showWindow();
    bool showDialog();
    bool showBoth();
    bool openTrayMenu();
    bool openWarningBox();
    bool waitInSequence();
    bool waitBetweenTimedSteps();
    bool restartExplorer();
    bool blockReset();
    bool openComboList();
    bool openKnobEditor();
    bool startOnly();

    bool nothingIsShown();
    bool windowIsMinimised();
    bool bothAreShown();
    bool popupIsShown();
    bool sampleRateIsAwaited();
    bool firmwareIsAwaited();
    bool interpreterIsAwaited();
    bool resetIsAwaited();
    bool editorIsOpen();

    /// Plugs a KA1 in that holds back its next answer to this request.
    bool plugSlowKa1(const QString& code);
    bool isHeldBack(quint32 code);
    /// Waits for a further window of the panel: a menu, a box or a list.
    bool takePopup(const QStringList& before);
    /// Presses the keys in the dialog until `done`.
    bool pressInDialog(const QStringList& keys, const std::function<bool()>& done);
    std::optional<QPoint> firstKnob();
    /// In the place of the command interpreter, a program that runs until it is released or for
    /// half a minute.
    QString interpreter();
    bool placeSlowInterpreter();

    struct State
    {
        const char* name;
        bool (EndStates::*reach)();
        bool (EndStates::*holds)();
    };
    static const QList<State>& states();

    std::optional<DesktopWindow> window;
    QString popup;
    QPoint knob;
    bool initialisationIsDue = false; ///< by a timed step that must not come any more
    TrayMenu trayMenu;
    std::unique_ptr<ChildProgram> peer;
};
