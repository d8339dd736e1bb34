#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/wait_until.h"

#include <QtMath>

#include <cmath>

namespace {

/// The controls of the panel in the order in which a picture shows them.
enum { Gain, Volume, PhoneToHeadphone, KnobCount };
enum { Instrument, Pad, Phantom, Direct, Mute, Dim, ButtonCount };

constexpr int leftMonitorCell = 2048;
constexpr int rightMonitorCell = 2081;
constexpr int leftPhoneCell = 2050;
constexpr int rightPhoneCell = 2083;
constexpr int leftHeadphoneCell = 8192;
constexpr int rightHeadphoneCell = 8193;

const QString iniFile = QStringLiteral("ka1.ini");

/// A command record as text: the bytes that matter, then zeros.
QString packet(const char* start)
{
    return QString::fromLatin1(QByteArray::fromHex(start).leftJustified(37, '\0').toHex());
}

/// All that is white in a picture.
QRect whiteArea(const QImage& picture)
{
    QRect area;
    for (const QRect& patch : patchesOf(picture, {Qt::white}))
        area |= patch;
    return area;
}

bool isGain(std::optional<double> cell, double gain)
{
    return cell && std::abs(*cell - gain) <= 1e-5 * gain;
}

} // namespace

/// The whole road of a KA1: it arrives, is operated, is unplugged and comes back.
class SystemKa1 : public SystemTest
{
    Q_OBJECT

private slots:
    void arrivalShowsThePanel();
    void oneNotchReachesDeviceAndFile();
    void whatWaitsIsSavedAtTheEnd();
    void knobsAreDraggedTypedAndReset();
    void aClickCommandsTwice();
    void pulledCableRemovesThePanel();
    void returningDeviceGetsEverySavedValue();

private:
    bool openPanel();
    QPoint knob(int index) const;
    QPoint button(int index) const;
    /// Turns the knob until its saved value is reached.
    bool turn(int index, int notches, const QString& key, const QString& saved);
    bool switchOn(int index, const QString& key);
    bool cellsAre(int left, int right, double gain);

    DesktopWindow window;
    QList<QPoint> knobs;
    QList<QRect> buttons;
};

bool SystemKa1::openPanel()
{
    const auto arrived = arrive(QStringLiteral("ka1"));
    if (!arrived)
        return false;
    // The window has its final size a moment after its title.
    return waitUntil([this] {
        const auto now = Desktop::window(QStringLiteral("^Quorvel KA1 "));
        if (!now)
            return false;
        window = *now;
        const QImage picture = PanelSession::pictureOf(window);
        knobs = knobsIn(picture);
        buttons = buttonsIn(picture);
        return knobs.size() == KnobCount && buttons.size() == ButtonCount;
    });
}

QPoint SystemKa1::knob(int index) const
{
    return window.area.topLeft() + knobs.at(index);
}

QPoint SystemKa1::button(int index) const
{
    return window.area.topLeft() + buttons.at(index).center();
}

bool SystemKa1::turn(int index, int notches, const QString& key, const QString& saved)
{
    return Desktop::wheel(knob(index), notches) && stored(iniFile, key, saved) == saved;
}

bool SystemKa1::switchOn(int index, const QString& key)
{
    const QString on = QStringLiteral("true");
    return Desktop::click(button(index)) && stored(iniFile, key, on) == on;
}

bool SystemKa1::cellsAre(int left, int right, double gain)
{
    return waitUntil([&] {
        return isGain(simulator().mixerCell(left), gain) &&
               isGain(simulator().mixerCell(right), gain);
    });
}

void SystemKa1::arrivalShowsThePanel()
{
    QVERIFY(session().startSimulator());
    QVERIFY(session().startPanel());
    QVERIFY(panel().waitForLine(QStringLiteral("Device PID: 0")));
    const auto waiting = session().openMainWindow();
    QVERIFY(waiting.has_value());
    QVERIFY(Desktop::window(QStringLiteral("^Quorvel Driver$")).has_value());
    QVERIFY(knobsIn(PanelSession::pictureOf(*waiting)).isEmpty());

    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(Desktop::waitForWindow(QStringLiteral("^Quorvel KA1 - FW: 1\\.0\\.7$")).has_value());
    QVERIFY(waitUntil([] {
        const auto shown = Desktop::window(QStringLiteral("^Quorvel KA1 "));
        const QImage picture = shown ? PanelSession::pictureOf(*shown) : QImage();
        return knobsIn(picture).size() == KnobCount && buttonsIn(picture).size() == ButtonCount;
    }));
    QVERIFY(panel().waitForLine(QStringLiteral("Device found with PID: 1")));

    QStringList milestones = panel().debugLines();
    milestones.removeIf([](const QString& line) {
        static const QStringList wanted{QStringLiteral("Settings dialog created."),
                                        QStringLiteral("Device PID: 1"),
                                        QStringLiteral("Adding ka1 widget to layout."),
                                        QStringLiteral("Device found with PID: 1")};
        return !wanted.contains(line);
    });
    QCOMPARE(milestones, QStringList({QStringLiteral("Settings dialog created."),
                                      QStringLiteral("Device PID: 1"),
                                      QStringLiteral("Adding ka1 widget to layout."),
                                      QStringLiteral("Device found with PID: 1")}));
}

void SystemKa1::oneNotchReachesDeviceAndFile()
{
    QVERIFY(openPanel());
    QVERIFY(simulator().clearTrace());
    QVERIFY(Desktop::wheel(knob(Gain), 1));
    QVERIFY(panel().waitForLine(QStringLiteral("Mic volume set to: 1")));
    const QStringList oneStep{packet("01070002010200")};
    QCOMPARE(packets(oneStep), oneStep);
    QVERIFY(waitForWatch());
    QCOMPARE(packets(oneStep), oneStep);

    QFile file(folder().settingsFile(iniFile));
    QVERIFY(file.open(QFile::ReadOnly));
    const QStringList lines =
        QString::fromUtf8(file.readAll()).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    const auto group = lines.indexOf(QStringLiteral("[Dial]"));
    const auto value = lines.indexOf(QStringLiteral("MicValue=1"));
    QVERIFY2(group >= 0 && value > group, qPrintable(lines.join(QLatin1Char('|'))));
    for (auto i = group + 1; i < value; ++i)
        QVERIFY(!lines.at(i).startsWith(QLatin1Char('[')));
}

/// A folder is in the file's place until just before the end.
void SystemKa1::whatWaitsIsSavedAtTheEnd()
{
    QVERIFY(openPanel());
    const QString path = folder().settingsFile(iniFile);
    QVERIFY(QFile::remove(path) && QDir().mkdir(path));
    QVERIFY(Desktop::wheel(knob(Gain), 1));
    QVERIFY(waitUntil([this] {
        return !panel()
                    .debugLines()
                    .filter(QStringLiteral("Cannot save the settings yet"))
                    .isEmpty();
    }));
    QVERIFY(QDir().rmdir(path));
    QVERIFY(session().askToEnd(panel()));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    QCOMPARE(session().storedValue(iniFile, QStringLiteral("Dial/MicValue")), QStringLiteral("1"));
}

void SystemKa1::knobsAreDraggedTypedAndReset()
{
    const QString key = QStringLiteral("Dial/MicValue");
    QVERIFY(openPanel());
    QVERIFY(turn(Gain, 5, key, QStringLiteral("5")));

    const QPoint middle = knob(Gain);
    QVERIFY(simulator().clearTrace());
    qsizetype moves = 0;
    QVERIFY(Desktop::drag(middle, middle - QPoint(0, 12), [&] {
        ++moves;
        return waitUntil(
            [&] { return simulator().packets().value_or(QStringList()).size() >= moves; });
    }));
    // The first move, compared with the corner, goes one step each way.
    QCOMPARE(stored(iniFile, key, QStringLiteral("16")), QStringLiteral("16"));

    QVERIFY(waitForWatch());
    QVERIFY(simulator().clearTrace());
    QVERIFY(Desktop::doubleClick(middle));
    QVERIFY(Desktop::type(QStringLiteral("21dB")));
    QVERIFY(Desktop::key(QStringLiteral("Return")));
    QCOMPARE(stored(iniFile, key, QStringLiteral("21")), QStringLiteral("21"));
    const QStringList typed{packet("01070002012a00")};
    QCOMPARE(packets(typed), typed);

    QVERIFY(Desktop::controlClick(middle));
    QCOMPARE(stored(iniFile, key, QStringLiteral("0")), QStringLiteral("0"));
}

void SystemKa1::aClickCommandsTwice()
{
    QVERIFY(openPanel());
    QVERIFY(simulator().clearTrace());
    QVERIFY(switchOn(Phantom, QStringLiteral("Button/Mic48VIsChecked")));
    const QStringList twice(2, packet("015b000101"));
    QCOMPARE(packets(twice), twice);
    QVERIFY(waitForWatch());
    QCOMPARE(packets(twice), twice);
    QCOMPARE(panel().debugLines().count(QStringLiteral("Mic 48V Button Clicked")), 3);
}

void SystemKa1::pulledCableRemovesThePanel()
{
    QVERIFY(openPanel());
    const QImage before = PanelSession::pictureOf(window);
    QVERIFY(simulator().unplug());
    QVERIFY(panel().waitForLine(QStringLiteral("Cleared all widgets from base layout.")));

    QStringList end = panel().debugLines();
    end.removeIf([](const QString& line) {
        return !line.startsWith(QStringLiteral("Error reading device PID")) &&
               !line.startsWith(QStringLiteral("Meter driver handle")) &&
               !line.startsWith(QStringLiteral("Cleared all widgets"));
    });
    const QString error = QStringLiteral("Error reading device PID from driver, error count: %1");
    QCOMPARE(end, QStringList({error.arg(1), error.arg(2), error.arg(3),
                               QStringLiteral("Meter driver handle deleted."),
                               QStringLiteral("Cleared all widgets from base layout.")}));

    // What stands there instead is one line of white text.
    constexpr int oneLine = 25;
    QVERIFY(whiteArea(before).height() > oneLine);
    QImage after;
    QVERIFY(waitUntil([&] {
        after = PanelSession::pictureOf(window);
        return knobsIn(after).isEmpty() && buttonsIn(after).isEmpty() &&
               !whiteArea(after).isEmpty();
    }));
    QVERIFY2(whiteArea(after).height() <= oneLine,
             qPrintable(QString::number(whiteArea(after).height())));
    QVERIFY(waitForLooks());
    QVERIFY(panel().isRunning());
    QVERIFY(Desktop::window(QStringLiteral("^Quorvel KA1 - FW: ")).has_value());
    // The settings dialog keeps its own handle until a device arrives again.
    QCOMPARE(handles(1), 1);
}

void SystemKa1::returningDeviceGetsEverySavedValue()
{
    QVERIFY(openPanel());
    QVERIFY(turn(Gain, 3, QStringLiteral("Dial/MicValue"), QStringLiteral("3")));
    QVERIFY(turn(Volume, 60, QStringLiteral("Dial/HeadphoneValue"), QStringLiteral("-20")));
    QVERIFY(turn(PhoneToHeadphone, 1, QStringLiteral("Dial/OtgToHpValue"), QStringLiteral("1")));
    QVERIFY(switchOn(Instrument, QStringLiteral("Button/MicInstrIsChecked")));
    QVERIFY(switchOn(Pad, QStringLiteral("Button/Mic20dBIsChecked")));
    QVERIFY(switchOn(Phantom, QStringLiteral("Button/Mic48VIsChecked")));
    QVERIFY(switchOn(Direct, QStringLiteral("Button/MonitorMicIsChecked")));
    QVERIFY(switchOn(Dim, QStringLiteral("Button/HeadphoneDimIsChecked")));

    QVERIFY(simulator().unplug());
    QVERIFY(panel().waitForLine(QStringLiteral("Meter driver handle deleted.")));
    QVERIFY(simulator().reset());
    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(panel().waitForLine(QStringLiteral("Device found with PID: 1"), 2));

    QVERIFY(cellsAre(leftMonitorCell, rightMonitorCell, 1.0));
    QVERIFY(cellsAre(leftPhoneCell, rightPhoneCell, qPow(10, 1 / 20.0)));
    QVERIFY(cellsAre(leftHeadphoneCell, rightHeadphoneCell, qPow(10, -40 / 20.0)));
    const QStringList received = simulator().packets().value_or(QStringList());
    const QStringList expected{packet("01030002016400"), packet("01030002026400"),
                               packet("0164000101"),     packet("015a000101"),
                               packet("015b000101"),     packet("01070002010600")};
    qsizetype previous = -1;
    for (const QString& wanted : expected) {
        const qsizetype place = received.indexOf(wanted);
        QVERIFY2(place > previous, qPrintable(wanted + QLatin1Char('\n') + received.join('\n')));
        previous = place;
    }
    QVERIFY(
        waitUntil([&] { return knobsIn(PanelSession::pictureOf(window)).size() == KnobCount; }));
}

QUORVEL_TEST_MAIN(SystemKa1)
#include "system_ka1_test.moc"
