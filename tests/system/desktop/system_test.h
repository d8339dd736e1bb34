#pragma once

#include "system/desktop/panel_session.h"

#include <QObject>
#include <QTest>

#include <memory>

/// Base of the test classes that drive the real panel: a fresh session for every test function,
/// and the panel's debug lines in the report when one fails.
class SystemTest : public QObject
{
    Q_OBJECT

protected:
    PanelSession& session() { return *current; }
    ChildProgram& panel() { return current->panel(); }
    SessionFolder& folder() { return current->folder(); }
    const SimulatorTool& simulator() { return current->simulator(); }

    /// Starts simulator and panel and plugs the model in; returns the open main window once
    /// everything that an arrival sets off is done.
    std::optional<DesktopWindow> arrive(const QString& model);

protected slots:
    void init();
    void cleanup();

private:
    std::unique_ptr<PanelSession> current;
};
