#pragma once

#include "system/desktop/child_program.h"
#include "system/desktop/desktop.h"
#include "system/desktop/session_folder.h"
#include "system/desktop/simulator_tool.h"

#include <memory>

/// The real panel with a simulated interface, seen from outside.
class PanelSession
{
public:
    PanelSession();

    SessionFolder& folder() { return sessionFolder; }

    /// Starts the simulator, nothing plugged in, and waits until it answers.
    bool startSimulator();
    const SimulatorTool& simulator() const { return tool; }
    /// Ends it without warning, as if it had crashed, and starts it anew: all connections are dead.
    bool restartSimulator();

    /// Starts the panel and waits for the debug line of its first settled step.
    bool startPanel();
    bool panelRuns() const { return panelProgram != nullptr && panelProgram->isRunning(); }
    ChildProgram& panel() { return *panelProgram; }
    const ChildProgram& panel() const { return *panelProgram; }

    /// Asks it to end as the system does: natively by a signal, on Windows with the end of the
    /// user's session. False when it could not be asked.
    bool askToEnd(ChildProgram& running);

    /// Starts this program instead, from now on.
    void setProgram(const QString& fileName) { program = fileName; }
    QString programFile() const { return program; }

    /// Shows the debug lines of a panel that was started, on standard error.
    void printPanelLines() const;

    /// Starts a further copy in the same session, by the command that is put before its own.
    std::unique_ptr<ChildProgram> startCopy(const QStringList& launcher = {});

    /// The value stored in one of the panel's settings files; empty when there is none.
    QString storedValue(const QString& fileName, const QString& key) const;

    /// Opens the main window by a click on the tray icon.
    std::optional<DesktopWindow> openMainWindow();

    /// What the window shows now.
    static QImage pictureOf(const DesktopWindow& window);

private:
    QStringList panelCommand() const;

    QString program;
    SessionFolder sessionFolder;
    SimulatorTool tool;
    std::unique_ptr<ChildProgram> simulatorProgram;
    std::unique_ptr<ChildProgram> panelProgram;
    int copies = 0;
};
