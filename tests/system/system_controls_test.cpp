#include "support/panel_table.h"
#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <QFile>
#include <QRegularExpression>

#include <functional>

namespace {

constexpr quint32 mixerCode = 0xFFDC2040;
constexpr quint32 commandCode = 0xFFDC209C;

QString withoutHandle(const QString& line)
{
    return line.mid(line.indexOf(QLatin1Char(' ')) + 1);
}

bool isWrite(const QString& line)
{
    const quint32 code = withoutHandle(line).left(8).toUInt(nullptr, 16);
    return code == mixerCode || code == commandCode;
}

QStringList contentOf(const QString& name)
{
    QFile file(name);
    if (!file.open(QFile::ReadOnly | QFile::Text))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// The settings file's entries as "[group]key=value", sorted: Windows keeps the order in which
/// they were first stored.
QStringList settingsIn(const QString& name)
{
    QStringList entries;
    QString group;
    for (const QString& line : contentOf(name)) {
        if (line.startsWith(QLatin1Char('[')))
            group = line;
        else
            entries.append(group + line);
    }
    entries.sort();
    return entries;
}

/// A traced write, without its handle and with the zeros at its end counted: "00*31".
QString readable(const QString& line)
{
    static const QRegularExpression zeros(QStringLiteral("((?: 00){2,})(?= out=)"));
    QString text = withoutHandle(line);
    const QRegularExpressionMatch match = zeros.match(text);
    if (match.hasMatch())
        text.replace(match.capturedStart(), match.capturedLength(),
                     QStringLiteral(" 00*%1").arg(match.capturedLength() / 3));
    return text;
}

/// The lines that are in `lines` but not in `others`, with a sign in front.
QStringList marked(const QString& sign, QStringList lines, const QStringList& others)
{
    lines.removeIf([&](const QString& line) { return others.contains(line); });
    return lines.replaceInStrings(QRegularExpression(QStringLiteral("^")), sign);
}

/// What came of one act, one line each.
struct Step
{
    QString act;
    QStringList lines;
};

/// The record of a model as it is kept: below "== act" what came of it.
class Record
{
public:
    explicit Record(const QString& model)
        : name(QStringLiteral(QUORVEL_RECORD_DIR "/controls-%1.txt").arg(model))
    {
        for (const QString& line : contentOf(name)) {
            if (line.startsWith(mark))
                steps.append({line.mid(mark.size()), {}});
            else if (!steps.isEmpty())
                steps.last().lines.append(line);
        }
    }

    QList<Step> all() const { return steps; }

    bool replace(const QList<Step>& newSteps)
    {
        QFile file(name);
        QByteArray text;
        for (const Step& step : newSteps)
            text += (mark + step.act + QLatin1Char('\n') + step.lines.join(QLatin1Char('\n')) +
                     QLatin1Char('\n'))
                        .toUtf8();
        return file.open(QFile::WriteOnly) && file.write(text) == text.size();
    }

private:
    const QString mark = QStringLiteral("== ");
    QString name;
    QList<Step> steps;
};

} // namespace

/// A hand on every control of every model, and what came of it: the writes that the device got and
/// the changes in the settings file, held against the kept record of that model. The native and the
/// Windows program share it. With QUORVEL_UPDATE_RECORDS=1 in the environment the native program
/// writes it anew.
class SystemControls : public SystemTest
{
    Q_OBJECT

private slots:
    void everyControl_data();
    void everyControl();

private:
    bool openPanel(const QString& model, int knobCount, int buttonCount);
    /// Acts and waits until all has come of it that should.
    bool operate(const QString& act, const std::function<bool()>& hand);
    /// Drags upwards by so many pixels, each of which must reach the device.
    bool drag(QPoint from, int pixels);
    /// Takes up what the device has got since it was asked last.
    bool listen();
    /// What has come of the current act so far.
    QStringList outcome();
    /// Whether nothing has come after what belonged to the last act.
    bool staysQuiet();

    bool renewing = false;
    DesktopWindow window;
    QList<QPoint> knobs;
    QList<QRect> buttons;
    QString settingsFile;
    QList<Step> expected;
    QList<Step> seen;
    QStringList writes;   ///< Since the last act ended.
    QStringList settings; ///< As the last act left them.
};

bool SystemControls::openPanel(const QString& model, int knobCount, int buttonCount)
{
    if (!arrive(model))
        return false;
    settingsFile = folder().settingsFile(model + QStringLiteral(".ini"));
    return waitUntil([&] {
        const auto now = Desktop::window(QStringLiteral("^Quorvel %1 ").arg(model.toUpper()));
        if (!now)
            return false;
        window = *now;
        const QImage picture = PanelSession::pictureOf(window);
        knobs = knobsIn(picture);
        buttons = buttonsIn(picture);
        return knobs.size() == knobCount && buttons.size() == buttonCount;
    });
}

bool SystemControls::listen()
{
    const auto lines = simulator().takeTraceLines();
    if (!lines)
        return false;
    for (const QString& line : *lines) {
        if (isWrite(line))
            writes.append(readable(line));
    }
    return true;
}

QStringList SystemControls::outcome()
{
    if (!listen())
        return {QStringLiteral("the simulator does not answer")};
    const QStringList now = settingsIn(settingsFile);
    return writes + marked(QStringLiteral("- "), settings, now) +
           marked(QStringLiteral("+ "), now, settings);
}

bool SystemControls::operate(const QString& act, const std::function<bool()>& hand)
{
    if (!hand())
        return false;
    Step step{act, {}};
    if (renewing) {
        if (!waitForWatch(1))
            return false;
        step.lines = outcome();
    } else {
        const Step wanted = expected.value(seen.size());
        step.lines = awaited(wanted.lines, [this] { return outcome(); });
        if (step.lines != wanted.lines || wanted.act != act) {
            qWarning("kept as '%s':\n%s\nhere:\n%s", qPrintable(wanted.act),
                     qPrintable(wanted.lines.join(QLatin1Char('\n'))),
                     qPrintable(step.lines.join(QLatin1Char('\n'))));
            return false;
        }
    }
    seen.append(step);
    writes.clear();
    settings = settingsIn(settingsFile);
    return true;
}

bool SystemControls::drag(QPoint from, int pixels)
{
    qsizetype moves = 0;
    return Desktop::drag(from, from - QPoint(0, pixels), [&] {
        ++moves;
        return waitUntil([&] { return listen() && writes.size() >= moves; });
    });
}

bool SystemControls::staysQuiet()
{
    return waitForWatch() && outcome().isEmpty();
}

void SystemControls::everyControl_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("knobCount");
    QTest::addColumn<int>("buttonCount");
    using PanelTable::Control;
    for (const PanelTable::Model& model : PanelTable::models) {
        QTest::newRow(model.name) << QString(model.name) << model.count(&Control::isKnob)
                                  << model.count(&Control::isButton);
    }
}

void SystemControls::everyControl()
{
    QFETCH(QString, model);
    QFETCH(int, knobCount);
    QFETCH(int, buttonCount);
    Record record(model);
    renewing = !Target::isWindows() && qEnvironmentVariable("QUORVEL_UPDATE_RECORDS") == u"1";
    expected = record.all();
    seen.clear();
    writes.clear();
    settings.clear();
    QVERIFY2(
        openPanel(model, knobCount, buttonCount),
        qPrintable(QStringLiteral("%1 knobs, %2 buttons").arg(knobs.size()).arg(buttons.size())));

    // The arrival itself counts as well.
    QVERIFY(operate(QStringLiteral("arrival"), [] { return true; }));
    const QPoint corner = window.area.topLeft();
    for (int i = 0; i < knobs.size(); ++i) {
        const QPoint middle = corner + knobs.at(i);
        const QString name = QStringLiteral("knob %1, ").arg(i + 1);
        QVERIFY2(operate(name + QStringLiteral("wheel"), [&] { return Desktop::wheel(middle, 3); }),
                 qPrintable(name + QStringLiteral("wheel")));
        QVERIFY2(operate(name + QStringLiteral("drag"), [&] { return drag(middle, 3); }),
                 qPrintable(name + QStringLiteral("drag")));
    }
    for (int i = 0; i < buttons.size(); ++i) {
        const QPoint middle = corner + buttons.at(i).center();
        // Each is at another place, so that no two clicks become one double click.
        const QString name = QStringLiteral("button %1, click").arg(i + 1);
        QVERIFY2(operate(name, [&] { return Desktop::clickAgain(middle); }), qPrintable(name));
    }
    QVERIFY(staysQuiet());
    QVERIFY(panel().isRunning());
    QVERIFY(!renewing || record.replace(seen));
    QVERIFY(renewing || seen.size() == expected.size());
}

QUORVEL_TEST_MAIN(SystemControls)
#include "system_controls_test.moc"
