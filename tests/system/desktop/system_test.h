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

    /// Waits until the panel has looked for a missing device so many times more. All its work is
    /// done by the one thread that also looks, so what came before has had its effect.
    bool waitForLooks(int count = 2);
    /// The same for a connected panel, which watches its device.
    bool waitForWatch(int count = 2);

    /// The open handles as soon as they are `expected`; -1 when the simulator does not answer.
    int handles(int expected);
    /// The command records received, as soon as they are `expected`.
    QStringList packets(const QStringList& expected);
    /// A stored value, as soon as it is `expected`.
    QString stored(const QString& fileName, const QString& key, const QString& expected);

protected slots:
    void init();
    void cleanup();

private:
    void endPanel();
    int watches() const;

    std::unique_ptr<PanelSession> current;
};
