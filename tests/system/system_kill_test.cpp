#include "support/panel_table.h"
#include "support/rounds.h"
#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/stored_story.h"

#include <QDir>
#include <QProcess>

#include <functional>
#include <random>

using namespace std::chrono_literals;

namespace {

const QString panelIni = QStringLiteral("ka1.ini");
const QString dialogIni = QStringLiteral("setting.ini");
const QString shown = QStringLiteral("Device found with PID: 1");
const QString unsaved = QStringLiteral("Cannot save the settings yet:");

/// In this many rounds the program is asked to end instead.
constexpr int askedOnce = 5;
/// And in this many it is killed while it starts.
constexpr int earlyOnce = 3;

} // namespace

/// The program is killed at random moments while many hands change everything at once. What the
/// interface got has been saved, and gets there again with the next start. Of what was being saved
/// no more is left than a half-written file, which the next save overwrites.
class SystemKill : public SystemTest
{
    Q_OBJECT

public:
    SystemKill() { Rounds::allowTimeFor(rounds); }

private slots:
    void killedAtAnyMoment();

private:
    enum class Ending { killed, asked };

    void playRound(int round);
    /// Kills it while it starts.
    void cutStartShort();
    bool openWindows();
    /// The window with this title, opened and moved there.
    std::optional<DesktopWindow> placed(const QString& title, QPoint place,
                                        const std::function<bool()>& open);
    bool findControls(const DesktopWindow& window);
    QStringList storm();
    bool endInStorm(Ending way);
    bool endsInOrder();
    /// Takes up what the interface has received from the program, which has ended.
    bool listen();
    /// Reads the files and holds them against that.
    QString flawOfFiles();
    /// What lies beside the settings files; half-written ones among them are counted.
    QStringList leavings();
    void report() const;
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }

    const int rounds = Rounds::number(7);
    std::mt19937 random{Rounds::seed()};
    StoredStory::Entries files; ///< As the round before has left them.
    std::unique_ptr<ChildProgram> program;
    std::unique_ptr<StoredStory> story;
    QList<QPoint> knobs;
    QList<QRect> buttons;
    QRect panelArea;
    QRect dialogArea;

    int stormKills = 0;
    int earlyKills = 0;
    int changes = 0;
    int choices = 0;
    int lastMomentSaves = 0;
    qsizetype halvesLeft = 0;
};

bool SystemKill::findControls(const DesktopWindow& window)
{
    panelArea = window.area;
    if (knobs.isEmpty()) {
        const bool found = waitUntil([&] {
            const QImage picture = PanelSession::pictureOf(window);
            knobs = knobsIn(picture);
            buttons = buttonsIn(picture);
            return knobs.size() == PanelTable::models[0].count(&PanelTable::Control::isKnob) &&
                   buttons.size() == PanelTable::models[0].count(&PanelTable::Control::isButton);
        });
        if (!found)
            return false;
    }
    return true;
}

std::optional<DesktopWindow> SystemKill::placed(const QString& title, QPoint place,
                                                const std::function<bool()>& open)
{
    std::optional<DesktopWindow> window;
    const auto isThere = [&] {
        // Near by: the frame comes on top.
        return window && (window->area.topLeft() - place).manhattanLength() < 80;
    };
    const bool done = waitUntil([&] {
        window = Desktop::window(title);
        if (!window) {
            if (open())
                waitUntil([&] { return (window = Desktop::window(title)).has_value(); }, 1s);
            return false;
        }
        // A window manager that has not placed it yet does so afterwards.
        if (!isThere())
            runTool(QStringLiteral("xdotool"),
                    {QStringLiteral("windowmove"), window->id, QString::number(place.x()),
                     QString::number(place.y())});
        return isThere();
    });
    if (!done) {
        qWarning("no %s at its place", qPrintable(title));
        return std::nullopt;
    }
    return window;
}

bool SystemKill::openWindows()
{
    const auto panelWindow = placed(QStringLiteral("^Quorvel KA1 "), QPoint(20, 20), [] {
        // The icon of a killed program may still be there for a moment.
        const auto icons = Desktop::trayIcons();
        return icons && icons->size() == 1 && Desktop::clickAgain(icons->first().center());
    });
    const auto dialog = placed(QStringLiteral("^Settings$"), QPoint(800, 20), [this] {
        const auto tool = Target::tool(QStringLiteral("quorvel-asio-peer"));
        return runTool(tool.first(), tool.mid(1) << QStringLiteral("open-settings"),
                       folder().environment())
            .has_value();
    });
    if (!panelWindow || !dialog)
        return false;
    dialogArea = dialog->area;
    return findControls(*panelWindow);
}

/// Words for one call of xdotool: the wheel over knobs, clicks on buttons, keys for the lists.
QStringList SystemKill::storm()
{
    QStringList words;
    const auto click = [&](QPoint place, int button, int times) {
        words << QStringLiteral("mousemove") << QString::number(place.x())
              << QString::number(place.y()) << QStringLiteral("click") << QStringLiteral("--repeat")
              << QString::number(times) << QStringLiteral("--delay") << QString::number(below(8))
              << QString::number(button);
    };
    for (int i = 0; i < 120; ++i) {
        const int way = below(100);
        if (way < 55) {
            click(panelArea.topLeft() + knobs.at(below(static_cast<int>(knobs.size()))),
                  below(3) == 0 ? 5 : 4, 1 + below(8));
        } else if (way < 85) {
            click(panelArea.topLeft() +
                      buttons.at(below(static_cast<int>(buttons.size()))).center(),
                  1, 1 + below(2));
        } else {
            // The heading takes the click, the next list the keys.
            click(QPoint(dialogArea.center().x(), dialogArea.top() + 20), 1, 1);
            words << QStringLiteral("sleep") << QStringLiteral("0.05") << QStringLiteral("key")
                  << QStringLiteral("Tab") << QStringLiteral("key")
                  << (below(2) == 0 ? QStringLiteral("Up") : QStringLiteral("Down"));
        }
    }
    return words;
}

bool SystemKill::endInStorm(Ending way)
{
    QProcess hands;
    hands.start(QStringLiteral("xdotool"), storm());
    if (!hands.waitForStarted())
        return false;
    QThread::msleep(static_cast<unsigned long>(below(700)));
    bool asked = true;
    if (way == Ending::killed) {
        program->kill();
        ++stormKills;
    } else {
        asked = session().askToEnd(*program);
    }
    // An orderly end comes after what the hands have done already, but not while they go on.
    hands.kill();
    hands.waitForFinished();
    // They may have had a button or the wheel down, with which no icon takes a click.
    QStringList release;
    for (const char* button : {"1", "4", "5"})
        release << QStringLiteral("mouseup") << QLatin1String(button);
    const bool released = runTool(QStringLiteral("xdotool"), release).has_value();
    return asked && released && (way == Ending::killed || endsInOrder()) && !program->isRunning();
}

bool SystemKill::endsInOrder()
{
    const auto code = program->waitForExit();
    if (code == 0)
        return true;
    const QString end = code ? QStringLiteral("ended with %1").arg(*code)
                             : QLatin1String(program->isRunning() ? "runs on" : "crashed");
    qWarning("asked to end, it %s", qPrintable(end));
    return false;
}

void SystemKill::cutStartShort()
{
    QThread::msleep(static_cast<unsigned long>(below(Target::isWindows() ? 4000 : 1800)));
    program->kill();
    ++earlyKills;
}

QStringList SystemKill::leavings()
{
    QStringList names = QFileInfo(folder().settingsFile(panelIni)).dir().entryList(QDir::Files);
    for (const QString& name : {panelIni, dialogIni}) {
        names.removeAll(name);
        halvesLeft += names.removeAll(name + QStringLiteral(".saving"));
    }
    return names;
}

bool SystemKill::listen()
{
    // It has closed its connections behind the last of its requests.
    if (handles(0) != 0)
        return false;
    const auto received = simulator().requests();
    const auto state = simulator().state();
    // No more than the interface keeps.
    if (!received || !state ||
        state->value(QStringLiteral("requests")) != QString::number(received->size()))
        return false;
    for (const TracedRequest& request : *received)
        story->take(request);
    return true;
}

QString SystemKill::flawOfFiles()
{
    for (const QString& line : program->debugLines()) {
        if (line.startsWith(unsaved))
            return line;
    }
    files.clear();
    for (const QString& name : {panelIni, dialogIni}) {
        const auto entries = StoredStory::read(folder().settingsFile(name));
        if (!entries)
            return name + QStringLiteral(" does not parse");
        files.insert(*entries);
    }
    changes += story->changes();
    choices += story->choices();
    lastMomentSaves += story->lastMomentSaves(files);
    return story->flawOf(files);
}

void SystemKill::playRound(int round)
{
    // Whatever the interface still has is not what the next start sends.
    QVERIFY(simulator().reset());
    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    story = std::make_unique<StoredStory>(files);
    program = session().startCopy();
    Ending ending = round % askedOnce == askedOnce - 1 ? Ending::asked : Ending::killed;
    if (round % earlyOnce == earlyOnce - 1) {
        ending = Ending::killed;
        cutStartShort();
    } else {
        QVERIFY(program->waitForLine(shown));
        QVERIFY(openWindows());
        QVERIFY(endInStorm(ending));
    }
    const QString left = leavings().join(QLatin1Char(' '));
    QVERIFY2(left.isEmpty(), qPrintable(left));
    QVERIFY(listen());
    if (ending == Ending::asked)
        story->endInOrder();
    QCOMPARE(story->flawOfReplay(), QString());
    QCOMPARE(flawOfFiles(), QString());
    QFile::remove(program->debugFile());
}

void SystemKill::report() const
{
    qInfo("%d kills in the storm, %d during the start; %d changes received, %d choices, %d saved "
          "in the last moment; %lld half-written files found",
          stormKills, earlyKills, changes, choices, lastMomentSaves, halvesLeft);
}

void SystemKill::killedAtAnyMoment()
{
    qInfo("%d rounds, seed %u", rounds, Rounds::seed());
    QVERIFY(session().startSimulator());
    for (int round = 0; round < rounds; ++round) {
        playRound(round);
        if (QTest::currentTestFailed()) {
            qWarning("round %d\n%s", round, qPrintable(program->debugLines().join(u'\n')));
            qWarning("%s",
                     qPrintable(simulator().traceLines().value_or(QStringList()).join(u'\n')));
            break;
        }
        if (round % 100 == 99)
            report();
    }
    report();
    QVERIFY(QTest::currentTestFailed() || changes > 0);
}

QUORVEL_TEST_MAIN(SystemKill)
#include "system_kill_test.moc"
