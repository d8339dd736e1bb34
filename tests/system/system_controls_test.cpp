#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <QDir>

#include <functional>

using namespace std::chrono_literals;

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

QStringList removedFrom(QStringList lines, const QStringList& others)
{
    lines.removeIf([&](const QString& line) { return others.contains(line); });
    return lines;
}

} // namespace

/// A hand on every control of every model, and what came of it: the device's traffic and the
/// settings file. The native program's record is kept in the folder QUORVEL_RECORDS, when there
/// is one; that of the Windows program must be the same.
class SystemControls : public SystemTest
{
    Q_OBJECT

private slots:
    void everyControl_data();
    void everyControl();

private:
    bool openPanel(const QString& model, int knobCount, int buttonCount);
    QStringList writes();
    QStringList settledWrites();
    /// Acts, waits for all that follows and notes it.
    bool operate(const QString& what, const std::function<bool()>& act);
    /// Drags upwards by so many pixels, each of which must reach the device.
    bool drag(QPoint from, int pixels);
    bool keepOrCompare(const QString& model);

    DesktopWindow window;
    QList<QPoint> knobs;
    QList<QRect> buttons;
    QString settingsFile;
    QStringList record;
};

bool SystemControls::openPanel(const QString& model, int knobCount, int buttonCount)
{
    if (!arrive(model))
        return false;
    settingsFile = folder().settingsFile(model + QStringLiteral(".ini"));
    return waitUntil(
        [&] {
            const auto now = Desktop::windows(QStringLiteral("^Quorvel %1 ").arg(model.toUpper()));
            if (now.isEmpty())
                return false;
            window = now.first();
            const QImage picture = PanelSession::pictureOf(window);
            knobs = knobsIn(picture);
            buttons = buttonsIn(picture);
            return knobs.size() == knobCount && buttons.size() == buttonCount;
        },
        15s);
}

QStringList SystemControls::writes()
{
    QStringList lines = simulator().traceLines();
    lines.removeIf([](const QString& line) { return !isWrite(line); });
    for (QString& line : lines)
        line = withoutHandle(line);
    return lines;
}

QStringList SystemControls::settledWrites()
{
    QStringList now = writes();
    waitUntil(
        [&] {
            QThread::msleep(250);
            const QStringList before = now;
            now = writes();
            return now == before;
        },
        10s);
    return now;
}

bool SystemControls::drag(QPoint from, int pixels)
{
    int moves = 0;
    return Desktop::drag(from, from - QPoint(0, pixels), [&] {
        ++moves;
        return waitUntil([&] { return writes().size() >= moves; }, 5s);
    });
}

bool SystemControls::operate(const QString& what, const std::function<bool()>& act)
{
    const QStringList before = settingsIn(settingsFile);
    if (!simulator().clearTrace() || !act() ||
        !waitUntil([&] { return settingsIn(settingsFile) != before && !writes().isEmpty(); }, 10s))
        return false;
    const QStringList sent = settledWrites();
    record << QStringLiteral("== ") + what;
    record << sent;
    record << removedFrom(settingsIn(settingsFile), before);
    return true;
}

bool SystemControls::keepOrCompare(const QString& model)
{
    const QString folderName = qEnvironmentVariable("QUORVEL_RECORDS");
    if (folderName.isEmpty())
        return !Target::isWindows();
    const QString name = folderName + QLatin1Char('/') + model + QStringLiteral(".txt");
    if (Target::isWindows()) {
        const QStringList expected = contentOf(name);
        for (qsizetype i = 0; i < std::max(expected.size(), record.size()); ++i) {
            if (expected.value(i) == record.value(i))
                continue;
            qWarning("line %lld: natively '%s', here '%s'", static_cast<long long>(i + 1),
                     qPrintable(expected.value(i)), qPrintable(record.value(i)));
            return false;
        }
        return !expected.isEmpty();
    }
    QFile file(name);
    const QByteArray text = record.join(QLatin1Char('\n')).toUtf8() + '\n';
    return QDir().mkpath(folderName) && file.open(QFile::WriteOnly) &&
           file.write(text) == text.size();
}

void SystemControls::everyControl_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("knobCount");
    QTest::addColumn<int>("buttonCount");
    QTest::newRow("KA1") << QStringLiteral("ka1") << 3 << 6;
    QTest::newRow("KA2") << QStringLiteral("ka2") << 6 << 10;
    QTest::newRow("KS") << QStringLiteral("ks") << 2 << 3;
}

void SystemControls::everyControl()
{
    QFETCH(QString, model);
    QFETCH(int, knobCount);
    QFETCH(int, buttonCount);
    record.clear();
    QVERIFY2(
        openPanel(model, knobCount, buttonCount),
        qPrintable(QStringLiteral("%1 knobs, %2 buttons").arg(knobs.size()).arg(buttons.size())));

    // The arrival itself counts as well.
    record << QStringLiteral("== arrival") << settledWrites() << settingsIn(settingsFile);
    const QPoint corner = window.area.topLeft();
    for (int i = 0; i < knobs.size(); ++i) {
        const QPoint middle = corner + knobs.at(i);
        const QString name = QStringLiteral("knob %1, ").arg(i + 1);
        QVERIFY2(operate(name + QStringLiteral("wheel"), [&] { return Desktop::wheel(middle, 3); }),
                 qPrintable(name + QStringLiteral("wheel")));
        QVERIFY2(operate(name + QStringLiteral("drag"), [&] { return drag(middle, 12); }),
                 qPrintable(name + QStringLiteral("drag")));
    }
    for (int i = 0; i < buttons.size(); ++i) {
        const QPoint middle = corner + buttons.at(i).center();
        const QString name = QStringLiteral("button %1, click").arg(i + 1);
        QVERIFY2(operate(name, [&] { return Desktop::click(middle); }), qPrintable(name));
    }
    QVERIFY(keepOrCompare(model));
    QVERIFY(panel().isRunning());
}

QUORVEL_TEST_MAIN(SystemControls)
#include "system_controls_test.moc"
