#include "support/rounds.h"
#include "support/test_main.h"
#include "system/desktop/line_follower.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/stored_story.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

using namespace std::chrono_literals;

namespace {

const QString panelIni = QStringLiteral("ka1.ini");
const QString dialogIni = QStringLiteral("setting.ini");
const QString shown = QStringLiteral("Device found with PID: 1");
const QString unsaved = QStringLiteral("Cannot save the settings yet:");

/// In this many rounds the program is asked to end instead, for comparison.
constexpr int askedOnce = 5;
/// And in this many it is killed while it starts.
constexpr int earlyOnce = 3;

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.value(values.size() / 2);
}

double gainOf(const QString& decibels)
{
    return decibels.toInt() <= -80 ? 0 : std::pow(10, decibels.toInt() / 20.0);
}

} // namespace

/// The program is killed at random moments while many hands change everything at once. What it
/// told has been saved, and the next start finds it, as fast as ever. Of what it was saving no more
/// is left than a half-written file, which the next save overwrites.
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
    /// Waits until the interface is served and notes how long that took.
    bool awaitReplay();
    /// What is stored, in words, when the interface did not get it.
    QString flawOfReplay();
    bool openWindows();
    /// The window with this title, opened and moved there.
    std::optional<DesktopWindow> placed(const QString& title, QPoint place,
                                        const std::function<bool()>& open);
    bool findControls(const DesktopWindow& window);
    QStringList storm();
    bool endInStorm(Ending way);
    bool endsInOrder();
    /// Reads the files and holds them against the lines.
    QString flawOfFiles();
    /// What lies beside the settings files; half-written ones among them are counted.
    QStringList leavings();
    void report() const;
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }

    const int rounds = Rounds::number(10);
    std::mt19937 random{Rounds::seed()};
    StoredStory::Entries files; ///< As the round before has left them.
    std::unique_ptr<ChildProgram> program;
    std::unique_ptr<LineFollower> lines;
    std::unique_ptr<StoredStory> story;
    QElapsedTimer clock;
    Ending lastEnding = Ending::asked;
    QList<QPoint> knobs;
    QList<QRect> buttons;
    QRect panelArea;
    QRect dialogArea;

    QList<qint64> startsAfterKill;
    QList<qint64> startsAfterEnd;
    int stormKills = 0;
    int earlyKills = 0;
    int changes = 0;
    int lastMomentSaves = 0;
    qsizetype halvesLeft = 0;
};

bool SystemKill::awaitReplay()
{
    // Longer than it may take, so that the report tells how long it took.
    const bool came = waitUntil(
        [&] {
            const QStringList arrived = lines->take();
            for (const QString& line : arrived)
                story->take(line);
            return arrived.contains(shown);
        },
        2 * patience);
    if (!came)
        qWarning("the interface is not served\n%s",
                 qPrintable(program->debugLines().join(QLatin1Char('\n'))));
    (lastEnding == Ending::killed ? startsAfterKill : startsAfterEnd).append(clock.elapsed());
    return came;
}

QString SystemKill::flawOfReplay()
{
    const auto table = simulator().mixer();
    const auto commands = simulator().lastCommands();
    const auto state = simulator().state();
    if (!table || !commands || !state)
        return QStringLiteral("the simulator does not answer");
    const auto stored = [&](const char* key, const char* missing) {
        return files.value(QStringLiteral("ka1.ini/") + QLatin1String(key), QLatin1String(missing));
    };
    const auto on = [&](const char* key) { return stored(key, "false") == u"true"; };
    const auto hasGain = [&](int cell, double gain) {
        return std::abs(table->value(cell) - gain) <= gain * 1e-4;
    };
    const auto hasSwitch = [&](const char* opcode, const char* key) {
        const QString record = QStringLiteral("01") + QLatin1String(opcode) +
                               (on(key) ? QStringLiteral("0001") : QStringLiteral("0000"));
        return commands->contains(record + QStringLiteral("010000"));
    };
    const int gain = stored("Dial/MicValue", "0").toInt() * 2;
    const QString level = stored("Dial/HeadphoneValue", "-80");
    const int dim = on("Button/HeadphoneDimIsChecked") ? 20 : 0;
    const double volume =
        on("Button/HeadphoneMuteIsChecked") ? 0 : gainOf(QString::number(level.toInt() - dim));

    QStringList flaws;
    if (!commands->contains(QStringLiteral("0107000201%1%2")
                                .arg(gain % 256, 2, 16, QLatin1Char('0'))
                                .arg(gain / 256, 2, 16, QLatin1Char('0'))))
        flaws.append(QStringLiteral("gain"));
    if (!hasSwitch("64", "Button/MicInstrIsChecked") ||
        !hasSwitch("5a", "Button/Mic20dBIsChecked") || !hasSwitch("5b", "Button/Mic48VIsChecked"))
        flaws.append(QStringLiteral("switches"));
    if (!hasGain(2048, on("Button/MonitorMicIsChecked") ? 1 : 0))
        flaws.append(QStringLiteral("monitor"));
    if (!hasGain(2050, gainOf(stored("Dial/OtgToHpValue", "0"))))
        flaws.append(QStringLiteral("phone"));
    if (!hasGain(8192, volume))
        flaws.append(QStringLiteral("volume"));
    if (state->value(QStringLiteral("sample rate")) !=
        files.value(QStringLiteral("setting.ini/Audio/SampleRate"), QStringLiteral("44100")) +
            QStringLiteral(" Hz"))
        flaws.append(QStringLiteral("sample rate"));
    if (flaws.isEmpty())
        return {};
    return flaws.join(QLatin1Char(' ')) + QLatin1Char('\n') + commands->join(QLatin1Char('\n'));
}

bool SystemKill::findControls(const DesktopWindow& window)
{
    panelArea = window.area;
    if (knobs.isEmpty()) {
        const bool found = waitUntil([&] {
            const QImage picture = PanelSession::pictureOf(window);
            knobs = knobsIn(picture);
            buttons = buttonsIn(picture);
            return knobs.size() == 3 && buttons.size() == 6;
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

/// Words for one call of xdotool: the wheel over knobs and lists, clicks on buttons.
QStringList SystemKill::storm()
{
    QStringList words;
    for (int i = 0; i < 120; ++i) {
        const int way = below(100);
        QPoint place;
        int button = below(3) == 0 ? 5 : 4;
        int times = 1 + below(8);
        if (way < 55) {
            place = panelArea.topLeft() + knobs.at(below(static_cast<int>(knobs.size())));
        } else if (way < 85) {
            place =
                panelArea.topLeft() + buttons.at(below(static_cast<int>(buttons.size()))).center();
            button = 1;
            times = 1 + below(2);
        } else {
            place = QPoint(dialogArea.center().x(),
                           dialogArea.top() + dialogArea.height() * (15 + below(60)) / 100);
            times = 1 + below(2);
        }
        words << QStringLiteral("mousemove") << QString::number(place.x())
              << QString::number(place.y()) << QStringLiteral("click") << QStringLiteral("--repeat")
              << QString::number(times) << QStringLiteral("--delay") << QString::number(below(8))
              << QString::number(button);
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

QString SystemKill::flawOfFiles()
{
    for (const QString& line : lines->take()) {
        story->take(line);
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
    lastMomentSaves += story->lastMomentSaves(files);
    return story->flawOf(files);
}

void SystemKill::playRound(int round)
{
    // Whatever the interface still has is not what the next start sends.
    QVERIFY(simulator().reset());
    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    story = std::make_unique<StoredStory>(files);
    clock.start();
    program = session().startCopy();
    lines = std::make_unique<LineFollower>(program->debugFile());
    Ending ending = Ending::killed;
    if (round % earlyOnce == earlyOnce - 1) {
        cutStartShort();
    } else {
        QVERIFY(awaitReplay());
        QCOMPARE(flawOfReplay(), QString());
        QVERIFY(openWindows());
        if (round % askedOnce == askedOnce - 1)
            ending = Ending::asked;
        QVERIFY(endInStorm(ending));
    }
    const QString left = leavings().join(QLatin1Char(' '));
    QVERIFY2(left.isEmpty(), qPrintable(left));
    const QString flaw = flawOfFiles();
    QVERIFY2(flaw.isEmpty(),
             qPrintable(flaw + QLatin1Char('\n') + program->debugLines().join(QLatin1Char('\n'))));
    lastEnding = ending;
    QFile::remove(program->debugFile());
}

void SystemKill::report() const
{
    qInfo("%d kills in the storm, %d during the start; %d changes told, %d of them saved in the "
          "last moment",
          stormKills, earlyKills, changes, lastMomentSaves);
    qInfo("found after a round: %lld half-written files", halvesLeft);
    const auto longest = [](const QList<qint64>& times) {
        return times.isEmpty() ? 0 : *std::max_element(times.begin(), times.end());
    };
    qInfo("start until all is replayed: %lld ms in the middle, %lld at most after %lld kills; "
          "%lld, %lld after %lld ends",
          median(startsAfterKill), longest(startsAfterKill), startsAfterKill.size(),
          median(startsAfterEnd), longest(startsAfterEnd), startsAfterEnd.size());
}

void SystemKill::killedAtAnyMoment()
{
    qInfo("%d rounds, seed %u", rounds, Rounds::seed());
    QVERIFY(session().startSimulator());
    for (int round = 0; round < rounds; ++round) {
        playRound(round);
        if (QTest::currentTestFailed()) {
            qWarning("round %d", round);
            break;
        }
        if (round % 100 == 99)
            report();
    }
    report();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(changes > 0);
    // Other programs' load is in both.
    const qint64 usual = median(startsAfterEnd);
    QVERIFY2(median(startsAfterKill) <= usual * 3 / 2 + 100, qPrintable(QString::number(usual)));
    for (const qint64 start : startsAfterKill)
        QVERIFY2(start <= 2 * usual + 8000, qPrintable(QString::number(start)));
}

QUORVEL_TEST_MAIN(SystemKill)
#include "system_kill_test.moc"
