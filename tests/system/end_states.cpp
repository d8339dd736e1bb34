#include "system/end_states.h"

#include "system/desktop/picture_search.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <QDir>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

const QString mainWindow = QStringLiteral("^Quorvel KA1 ");
const QString settingsDialog = QStringLiteral("^Settings$");
const QString gainSet = QStringLiteral("Mic volume set to: ");

} // namespace

const QList<EndStates::State>& EndStates::states()
{
    static const QList<State> table{
        {"never shown", &EndStates::startHidden},
        {"shown", &EndStates::showWindow},
        {"hidden again", &EndStates::hideWindowAgain},
        {"minimised", &EndStates::minimiseWindow},
        {"dialog shown", &EndStates::showDialog},
        {"both shown", &EndStates::showBoth},
        {"tray menu open", &EndStates::openTrayMenu},
        {"warning box open", &EndStates::openWarningBox},
        {"waiting in a sequence", &EndStates::waitInSequence},
        {"between timed steps", &EndStates::waitBetweenTimedSteps},
        {"restarting the Explorer", &EndStates::restartExplorer},
        {"reset blocked by the ASIO driver", &EndStates::blockReset},
        {"list of a combo open", &EndStates::openComboList},
        {"editor of a knob open", &EndStates::openKnobEditor},
        {"starting", &EndStates::startOnly},
    };
    return table;
}

void EndStates::addStates()
{
    QTest::addColumn<int>("state");
    for (int i = 0; i < states().size(); ++i)
        QTest::newRow(states().at(i).name) << i;
}

bool EndStates::reachState()
{
    QFETCH(int, state);
    peer.reset();
    return (this->*states().at(state).reach)();
}

QString EndStates::flawOfTheEnd()
{
    if (panel().waitForExit() != 0)
        return QStringLiteral("exit code");
    const QStringList lines = panel().debugLines();
    const qsizetype closed =
        lines.indexOf(QStringLiteral("Settings dialog closed and resources cleaned up."));
    // After the dialog's last line only its pipe thread ends.
    if (closed < 0 || lines.size() - closed > 3 || lines.last() != QStringLiteral("Pipe closed."))
        return QStringLiteral("last lines: ") + lines.mid(std::max<qsizetype>(closed, 0)).join('|');
    return {};
}

QString EndStates::leftBehind()
{
    const auto iconIsGone = [] {
        const auto icons = Desktop::trayIcons();
        return icons && icons->isEmpty();
    };
    if (!waitUntil(iconIsGone, 5s))
        return QStringLiteral("tray icon");
    if (simulator().openHandles() != 0)
        return QStringLiteral("open device handles");
    return {};
}

bool EndStates::startPeer(const QStringList& words, const QString& awaitedLine)
{
    peer = std::make_unique<ChildProgram>(Target::tool(QStringLiteral("quorvel-asio-peer")) + words,
                                          folder().environment(),
                                          folder().path(QStringLiteral("peer")));
    return waitUntil([&] { return peer->outputLines().contains(awaitedLine); }, 10s);
}

QString EndStates::interpreter()
{
    return Target::isWindows() ? Target::systemFolder() + QStringLiteral("/cmd.exe")
                               : folder().path(QStringLiteral("commands/cmd.exe"));
}

bool EndStates::placeSlowInterpreter()
{
    const QString place = interpreter();
    if (Target::isWindows()) {
        QFile plan(place + QStringLiteral(".plan"));
        // Wine takes its own otherwise, whatever lies there.
        folder().setVariable(QStringLiteral("WINEDLLOVERRIDES"),
                             qEnvironmentVariable("WINEDLLOVERRIDES") +
                                 QStringLiteral(";cmd.exe=n"));
        // Another file in its place: several Windows share the one that was there.
        return QFile::remove(place) &&
               QFile::copy(Target::tool(QStringLiteral("quorvel-fake-program")).last(), place) &&
               plan.open(QFile::WriteOnly) && plan.write("30 0") > 0;
    }
    const QString commands = QFileInfo(place).path();
    QDir().mkpath(commands);
    QFile script(place);
    if (!script.open(QFile::WriteOnly))
        return false;
    script.write("#!/bin/sh\n: >\"$0.arguments\"\nexec sleep 30\n");
    script.close();
    folder().setVariable(QStringLiteral("PATH"),
                         commands + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    return script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool EndStates::plugAndStart()
{
    return session().startSimulator() && simulator().plug(QStringLiteral("ka1")) &&
           session().startPanel();
}

bool EndStates::startHidden()
{
    return plugAndStart() && panel().waitForLine(QStringLiteral("设置初始化完成")) &&
           Desktop::waitForTrayIcon().has_value();
}

bool EndStates::showWindow()
{
    return startHidden() && session().openMainWindow().has_value();
}

bool EndStates::hideWindowAgain()
{
    if (!startHidden())
        return false;
    const auto window = session().openMainWindow();
    return window && Desktop::activate(*window) && Desktop::key(QStringLiteral("alt+F4")) &&
           Desktop::waitForNoWindow(mainWindow);
}

bool EndStates::minimiseWindow()
{
    if (!startHidden())
        return false;
    const auto window = session().openMainWindow();
    return window && Desktop::minimise(*window) && Desktop::waitForNoWindow(mainWindow);
}

bool EndStates::showDialog()
{
    return startHidden() && chooseFromTrayMenu(TrayEntry::Setup) &&
           Desktop::waitForWindow(settingsDialog).has_value();
}

bool EndStates::showBoth()
{
    return showWindow() && chooseFromTrayMenu(TrayEntry::Setup) &&
           Desktop::waitForWindow(settingsDialog).has_value() &&
           Desktop::window(mainWindow).has_value();
}

bool EndStates::openTrayMenu()
{
    return startHidden() && trayMenu.open();
}

bool EndStates::openWarningBox()
{
    // Natively there is no such program; in this Windows nobody else needs it.
    if (Target::isWindows())
        QFile::remove(QDir::cleanPath(Target::settingsFolder() +
                                      "/../../../../../windows/system32/control.exe"));
    // Its Chinese title cannot be searched for under Wine; nothing else is on the screen.
    const QRect middle(200, 200, 800, 400);
    const QImage empty = Desktop::picture(middle);
    return startHidden() && chooseFromTrayMenu(TrayEntry::SoundPanel) &&
           waitUntil([&] { return Desktop::picture(middle) != empty; }, 10s);
}

bool EndStates::waitInSequence()
{
    return plugAndStart() && panel().waitForLine(QStringLiteral("停止音频成功，开始加载控件状态"));
}

bool EndStates::waitBetweenTimedSteps()
{
    return plugAndStart() && panel().waitForLine(QStringLiteral("Device found with PID: 1"));
}

bool EndStates::restartExplorer()
{
    if (!placeSlowInterpreter() || !startHidden() ||
        !chooseFromTrayMenu(TrayEntry::RefreshAudioDevice))
        return false;
    const QString report = interpreter() + QStringLiteral(".arguments");
    return waitUntil([&] { return QFile::exists(report); }, 10s);
}

bool EndStates::blockReset()
{
    if (!startPeer({QStringLiteral("hold-unread"), QStringLiteral("60")},
                   QStringLiteral("holding")) ||
        !showDialog())
        return false;
    const QString opened = QStringLiteral("Pipe opened successfully.");
    // A busy Wine may not yet have given the dialog the keyboard. The return key then presses
    // nothing in a list, and a later turn comes to "OK" again.
    return waitUntil([&] {
        return typeIntoDialog(QStringLiteral("shift+Tab")) &&
               Desktop::key(QStringLiteral("Return")) && panel().waitForLine(opened, 1, 3s);
    });
}

bool EndStates::typeIntoDialog(const QString& key)
{
    // A window under Wine takes keys only after a click into it; this one hits the heading.
    const QRect area = Desktop::window(settingsDialog).value_or(DesktopWindow()).area;
    return Desktop::click(QPoint(area.center().x(), area.top() + 20)) && Desktop::key(key);
}

bool EndStates::openComboList()
{
    if (!showDialog())
        return false;
    const QRect area = Desktop::window(settingsDialog).value_or(DesktopWindow()).area;
    return waitUntil(
        [&] {
            typeIntoDialog(QStringLiteral("Tab"));
            QThread::msleep(300);
            const QImage before = Desktop::picture(area);
            Desktop::key(QStringLiteral("alt+Down"));
            QThread::msleep(300);
            return Desktop::picture(area) != before;
        },
        10s);
}

std::optional<QPoint> EndStates::firstKnob()
{
    std::optional<QPoint> knob;
    waitUntil(
        [&] {
            const auto window = Desktop::window(mainWindow).value_or(DesktopWindow());
            const auto knobs = knobsIn(PanelSession::pictureOf(window));
            if (!knobs.isEmpty())
                knob = window.area.topLeft() + knobs.first();
            return knob.has_value();
        },
        10s);
    return knob;
}

bool EndStates::openKnobEditor()
{
    if (!showWindow())
        return false;
    const auto knob = firstKnob();
    return knob && Desktop::doubleClick(*knob) && Desktop::type(QStringLiteral("5"));
}

bool EndStates::changeGain()
{
    if (!showWindow())
        return false;
    const auto knob = firstKnob();
    return knob && Desktop::wheel(*knob, 12) && panel().waitForLine(gainSet + QStringLiteral("12"));
}

QString EndStates::flawOfTheGain()
{
    const QString told = panel().debugLines().filter(gainSet).last().mid(gainSet.size());
    const QString stored =
        session().storedValue(QStringLiteral("ka1.ini"), QStringLiteral("Dial/MicValue"));
    return stored == told ? QString() : told + QStringLiteral(" told, stored ") + stored;
}

bool EndStates::startOnly()
{
    return session().startSimulator() && simulator().plug(QStringLiteral("ka1")) &&
           session().startPanel();
}
