#include "system/desktop/panel_session.h"

#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"

#include <QFile>
#include <QSettings>

#include <cstdio>

PanelSession::PanelSession()
    : program(Target::program())
    , tool(sessionFolder.environment())
{
    // On Windows it is a driver, loaded before the test, that still has what others left.
    if (Target::isWindows() && !tool.reset())
        qFatal("the simulator does not answer");
}

bool PanelSession::startSimulator()
{
    if (Target::isWindows())
        return true;
    simulatorProgram = std::make_unique<ChildProgram>(
        QStringList{besideThisProgram(QStringLiteral("quorvel-simulator"))},
        sessionFolder.environment(), sessionFolder.path(QStringLiteral("simulator")));
    return waitUntil(
        [this] { return simulatorProgram->outputLines().contains(QStringLiteral("ready")); });
}

bool PanelSession::restartSimulator()
{
    if (!Target::isWindows()) {
        simulatorProgram.reset();
        return startSimulator();
    }
    const auto service = [this](const char* order) {
        const QStringList command = Target::command(QStringLiteral("net"));
        return runTool(command.first(),
                       command.mid(1) << QLatin1String(order) << QStringLiteral("quorvelsim"),
                       sessionFolder.environment())
            .has_value();
    };
    return service("stop") && service("start");
}

bool PanelSession::startPanel()
{
    panelProgram = std::make_unique<ChildProgram>(panelCommand(), sessionFolder.environment(),
                                                  sessionFolder.path(QStringLiteral("panel")));
    return panelProgram->waitForLine(QStringLiteral("Settings dialog created."));
}

bool PanelSession::askToEnd(ChildProgram& running)
{
    if (!Target::isWindows()) {
        running.terminate();
        return true;
    }
    const QStringList command =
        Target::tool(QStringLiteral("quorvel-end-session")) +
        QStringList{QStringLiteral("end"), QStringLiteral("QuorvelDriver.exe")};
    return runTool(command.first(), command.mid(1), sessionFolder.environment()).has_value();
}

void PanelSession::printPanelLines() const
{
    if (panelProgram == nullptr)
        return;
    std::fputs("The panel's debug lines:\n", stderr);
    for (const QString& line : panelProgram->debugLines())
        std::fprintf(stderr, "    %s\n", qUtf8Printable(line));
}

std::unique_ptr<ChildProgram> PanelSession::startCopy(const QStringList& launcher)
{
    return std::make_unique<ChildProgram>(
        launcher + panelCommand(), sessionFolder.environment(),
        sessionFolder.path(QStringLiteral("copy-%1").arg(++copies)));
}

QString PanelSession::storedValue(const QString& fileName, const QString& key) const
{
    const QSettings settings(sessionFolder.settingsFile(fileName), QSettings::IniFormat);
    return settings.value(key).toString();
}

std::optional<DesktopWindow> PanelSession::openMainWindow()
{
    const auto icon = Desktop::waitForTrayIcon();
    if (!icon || !Desktop::click(icon->center()))
        return std::nullopt;
    return Desktop::waitForWindow(QStringLiteral("^Quorvel "));
}

QImage PanelSession::pictureOf(const DesktopWindow& window)
{
    return Desktop::picture(window.area);
}

QStringList PanelSession::panelCommand() const
{
    return Target::command(program);
}
