#include "system/end_states.h"

#include "system/desktop/picture_search.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <QDir>

#include <algorithm>
#include <utility>

namespace {

const QString mainWindow = QStringLiteral("^Quorvel KA1 ");
const QString anyMainWindow = QStringLiteral("^Quorvel ");
const QString settingsDialog = QStringLiteral("^Settings$");
const QString initialised = QStringLiteral("设置初始化完成");
const QString explorerRestarted = QStringLiteral("资源管理器已成功重启");
const QString resetOpened = QStringLiteral("Pipe opened successfully.");
const QString resetFailed = QStringLiteral("Error: Failed to send ASIO reset signal.");
const QString gainSet = QStringLiteral("Mic volume set to: ");

} // namespace

const QList<EndStates::State>& EndStates::states()
{
    static const QList<State> table{
        {"never shown", &EndStates::start, &EndStates::nothingIsShown},
        {"hidden again", &EndStates::hideWindowAgain, &EndStates::nothingIsShown},
        {"minimised", &EndStates::minimiseWindow, &EndStates::windowIsMinimised},
        {"both shown", &EndStates::showBoth, &EndStates::bothAreShown},
        {"tray menu open", &EndStates::openTrayMenu, &EndStates::popupIsShown},
        {"warning box open", &EndStates::openWarningBox, &EndStates::popupIsShown},
        {"list of a combo open", &EndStates::openComboList, &EndStates::popupIsShown},
        {"editor of a knob open", &EndStates::openKnobEditor, &EndStates::editorIsOpen},
        {"waiting in a sequence", &EndStates::waitInSequence, &EndStates::sampleRateIsAwaited},
        {"between timed steps", &EndStates::waitBetweenTimedSteps, &EndStates::firmwareIsAwaited},
        {"restarting the Explorer", &EndStates::restartExplorer, &EndStates::interpreterIsAwaited},
        {"reset blocked by the ASIO driver", &EndStates::blockReset, &EndStates::resetIsAwaited},
        {"starting", &EndStates::startOnly, &EndStates::nothingIsShown},
    };
    return table;
}

void EndStates::addStates(const QStringList& names)
{
    QTest::addColumn<int>("state");
    for (int i = 0; i < states().size(); ++i) {
        if (names.isEmpty() || names.contains(QLatin1String(states().at(i).name)))
            QTest::newRow(states().at(i).name) << i;
    }
}

bool EndStates::reachState()
{
    QFETCH(int, state);
    peer.reset();
    return (this->*states().at(state).reach)();
}

bool EndStates::stateHolds()
{
    QFETCH(int, state);
    return (this->*states().at(state).holds)();
}

bool EndStates::release()
{
    if (Target::isWindows())
        return true;
    // A call that waits for its answer fails then.
    if (initialisationIsDue && !session().restartSimulator())
        return false;
    const QString place = interpreter();
    return !QFile::exists(place) ||
           QFile(place + QStringLiteral(".released")).open(QFile::WriteOnly);
}

QString EndStates::flawOfTheEnd()
{
    if (panel().waitForExit() != 0)
        return QStringLiteral("exit code");
    const QStringList lines = panel().debugLines();
    if (std::exchange(initialisationIsDue, false) && lines.contains(initialised))
        return QStringLiteral("the timed steps went on");
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
    if (!waitUntil(iconIsGone))
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
    return waitUntil([&] { return peer->outputLines().contains(awaitedLine); });
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
    script.write("#!/bin/sh\n: >\"$0.arguments\"\n"
                 "until [ -e \"$0.released\" ]; do sleep 0.05; done\n");
    script.close();
    folder().setVariable(QStringLiteral("PATH"),
                         commands + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    return script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool EndStates::start()
{
    return session().startSimulator() && session().startPanel() &&
           Desktop::waitForTrayIcon().has_value();
}

bool EndStates::startWithKa1()
{
    return session().startSimulator() && simulator().plug(QStringLiteral("ka1")) &&
           session().startPanel() && panel().waitForLine(initialised) &&
           Desktop::waitForTrayIcon().has_value();
}

bool EndStates::nothingIsShown()
{
    return Desktop::hasNoWindow(anyMainWindow) && Desktop::hasNoWindow(settingsDialog);
}

bool EndStates::hideWindowAgain()
{
    if (!start())
        return false;
    window = session().openMainWindow();
    return window && Desktop::activate(*window) && Desktop::key(QStringLiteral("alt+F4")) &&
           Desktop::waitForNoWindow(anyMainWindow);
}

bool EndStates::minimiseWindow()
{
    if (!start())
        return false;
    window = session().openMainWindow();
    return window && Desktop::minimise(*window) &&
           waitUntil([this] { return windowIsMinimised(); });
}

bool EndStates::windowIsMinimised()
{
    return Desktop::isMinimised(*window) && Desktop::hasNoWindow(anyMainWindow);
}

bool EndStates::showWindow()
{
    return startWithKa1() && session().openMainWindow().has_value();
}

bool EndStates::showDialog()
{
    return start() && chooseFromTrayMenu(TrayEntry::Setup) &&
           Desktop::waitForWindow(settingsDialog).has_value();
}

bool EndStates::showBoth()
{
    return start() && session().openMainWindow() && chooseFromTrayMenu(TrayEntry::Setup) &&
           Desktop::waitForWindow(settingsDialog).has_value();
}

bool EndStates::bothAreShown()
{
    return Desktop::window(settingsDialog).has_value() &&
           Desktop::window(anyMainWindow).has_value();
}

bool EndStates::takePopup(const QStringList& before)
{
    return waitUntil([&] {
        QStringList further = Desktop::panelWindows().value_or(before);
        further.removeIf([&](const QString& id) { return before.contains(id); });
        popup = further.value(0);
        return further.size() == 1;
    });
}

bool EndStates::popupIsShown()
{
    return Desktop::panelWindows().value_or(QStringList()).contains(popup);
}

bool EndStates::openTrayMenu()
{
    if (!start())
        return false;
    const auto before = Desktop::panelWindows();
    return before && trayMenu.open() && takePopup(*before);
}

bool EndStates::openWarningBox()
{
    // Natively there is no such program; in this Windows nobody else needs it.
    if (Target::isWindows())
        QFile::remove(Target::systemFolder() + QStringLiteral("/control.exe"));
    if (!start())
        return false;
    const auto before = Desktop::panelWindows();
    return before && chooseFromTrayMenu(TrayEntry::SoundPanel) && takePopup(*before);
}

bool EndStates::pressInDialog(const QStringList& keys, const std::function<bool()>& done)
{
    const auto dialog = Desktop::window(settingsDialog);
    if (!dialog)
        return false;
    // A busy Wine may not yet have given the dialog the keyboard, or give it only for the second
    // key. Return presses nothing in a list then, and a later turn comes to "OK" again.
    const int turns = Target::isWindows() ? 15 : 1;
    for (int i = 0; i < turns; ++i) {
        // A window under Wine takes keys only after a click into it; this one hits the heading.
        if (!Desktop::click(QPoint(dialog->area.center().x(), dialog->area.top() + 20)))
            return false;
        for (const QString& key : keys) {
            if (!Desktop::key(key))
                return false;
        }
        if (waitUntil(done, patience / turns))
            return true;
    }
    return false;
}

bool EndStates::openComboList()
{
    if (!showDialog())
        return false;
    const auto before = Desktop::panelWindows();
    return before &&
           pressInDialog(
               {QStringLiteral("Tab"), QStringLiteral("alt+Down")},
               [&] { return Desktop::panelWindows().value_or(*before).size() > before->size(); }) &&
           takePopup(*before);
}

std::optional<QPoint> EndStates::firstKnob()
{
    std::optional<QPoint> found;
    waitUntil([&] {
        const auto shown = Desktop::window(mainWindow).value_or(DesktopWindow());
        const auto knobs = knobsIn(PanelSession::pictureOf(shown));
        if (!knobs.isEmpty())
            found = shown.area.topLeft() + knobs.first();
        return found.has_value();
    });
    return found;
}

bool EndStates::openKnobEditor()
{
    const auto first = showWindow() ? firstKnob() : std::nullopt;
    if (!first)
        return false;
    knob = *first;
    return !editorIsOpen() &&
           Target::actUntil([this] { return Desktop::doubleClick(knob); },
                            [this] { return editorIsOpen(); }) &&
           Desktop::type(QStringLiteral("5"));
}

/// By its background, which the knob has not.
bool EndStates::editorIsOpen()
{
    const QRect around(knob - QPoint(30, 15), QSize(60, 30));
    const auto patches = patchesOf(Desktop::picture(around), {QColor(0x1b, 0x1e, 0x23)});
    return std::any_of(patches.begin(), patches.end(), [](const QRect& patch) {
        return patch.width() >= 15 && patch.height() >= 10;
    });
}

bool EndStates::plugSlowKa1(const QString& code)
{
    // Under Wine the answer comes by itself, before an installer gives up. A slow one asks later
    // than that, when the steps have rightly gone on.
    const QString delay = Target::isWindows() ? QStringLiteral("5000") : QStringLiteral("60000");
    initialisationIsDue = !Target::isWindows();
    return session().startSimulator() && simulator().plug(QStringLiteral("ka1")) &&
           simulator().order({QStringLiteral("delay"), code, QStringLiteral("1"), delay}) &&
           session().startPanel();
}

bool EndStates::isHeldBack(quint32 code)
{
    const auto requests = simulator().requests();
    if (!requests || requests->isEmpty())
        return false;
    const auto isIt = [code](const TracedRequest& request) { return request.code == code; };
    // Under Wine a slow look may come after the answer.
    return Target::isWindows() ? std::any_of(requests->begin(), requests->end(), isIt)
                               : isIt(requests->last());
}

bool EndStates::waitInSequence()
{
    return plugSlowKa1(QStringLiteral("FFDC2038")) &&
           waitUntil([this] { return sampleRateIsAwaited(); });
}

bool EndStates::sampleRateIsAwaited()
{
    return isHeldBack(0xFFDC2038);
}

/// The first of them becomes due while the panel's arrival still waits for the firmware version.
bool EndStates::waitBetweenTimedSteps()
{
    return plugSlowKa1(QStringLiteral("FFDC20A0")) &&
           waitUntil([this] { return firmwareIsAwaited(); });
}

bool EndStates::firmwareIsAwaited()
{
    return isHeldBack(0xFFDC20A0);
}

bool EndStates::restartExplorer()
{
    return placeSlowInterpreter() && start() && chooseFromTrayMenu(TrayEntry::RefreshAudioDevice) &&
           waitUntil([this] { return interpreterIsAwaited(); });
}

bool EndStates::interpreterIsAwaited()
{
    return QFile::exists(interpreter() + QStringLiteral(".arguments")) &&
           !panel().debugLines().contains(explorerRestarted);
}

bool EndStates::blockReset()
{
    return startPeer({QStringLiteral("hold-unread"), QStringLiteral("60")},
                     QStringLiteral("holding")) &&
           showDialog() &&
           pressInDialog({QStringLiteral("shift+Tab"), QStringLiteral("Return")},
                         [this] { return panel().debugLines().contains(resetOpened); });
}

bool EndStates::resetIsAwaited()
{
    return panel().debugLines().contains(resetOpened) &&
           panel().debugLines().filter(resetFailed).isEmpty();
}

bool EndStates::startOnly()
{
    return session().startSimulator() && session().startPanel();
}

bool EndStates::changeGain()
{
    if (!showWindow())
        return false;
    const auto first = firstKnob();
    return first && Desktop::wheel(*first, 12) &&
           panel().waitForLine(gainSet + QStringLiteral("12"));
}

QString EndStates::flawOfTheGain()
{
    const QString told = panel().debugLines().filter(gainSet).last().mid(gainSet.size());
    const QString stored =
        session().storedValue(QStringLiteral("ka1.ini"), QStringLiteral("Dial/MicValue"));
    return stored == told ? QString() : told + QStringLiteral(" told, stored ") + stored;
}
