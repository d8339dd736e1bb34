#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <QDir>

namespace {

const QString iniFile = QStringLiteral("ka1.ini");
const QString gainKey = QStringLiteral("Dial/MicValue");

/// The command record that sets the gain, as text.
QString gainPacket(int dB)
{
    const QByteArray start = QByteArray::fromHex("0107000201") + char(2 * dB);
    return QString::fromLatin1(start.leftJustified(37, '\0').toHex());
}

} // namespace

/// A knob of the KA1 by wheel, keys and mouse, and its panel's end with the cable.
class SystemKa1 : public SystemTest
{
    Q_OBJECT

private slots:
    void oneNotchReachesDeviceAndFile();
    void whatWaitsIsSavedAtTheEnd();

private:
    bool openPanel();
    QString storedGain(const QString& expected) { return stored(iniFile, gainKey, expected); }

    DesktopWindow window;
    QPoint gain;
};

bool SystemKa1::openPanel()
{
    if (!arrive(QStringLiteral("ka1")))
        return false;
    // The window has its final size a moment after its title.
    return waitUntil([this] {
        window = Desktop::window(QStringLiteral("^Quorvel KA1 ")).value_or(DesktopWindow());
        const QList<QPoint> knobs = knobsIn(PanelSession::pictureOf(window));
        gain = window.area.topLeft() + knobs.value(0);
        return knobs.size() == 3;
    });
}

void SystemKa1::oneNotchReachesDeviceAndFile()
{
    QVERIFY(openPanel());
    QVERIFY(simulator().clearTrace());
    QVERIFY(Desktop::wheel(gain, 1));
    QCOMPARE(storedGain(QStringLiteral("1")), QStringLiteral("1"));
    QVERIFY(Target::actUntil(
        [this] {
            return Desktop::doubleClick(gain) && Desktop::type(QStringLiteral("21dB")) &&
                   Desktop::key(QStringLiteral("Return"));
        },
        [this] { return session().storedValue(iniFile, gainKey) == QLatin1String("21"); }));
    QVERIFY(Desktop::controlClick(gain));
    QCOMPARE(storedGain(QStringLiteral("0")), QStringLiteral("0"));
    QVERIFY(waitForWatch(1));
    const QStringList steps{gainPacket(1), gainPacket(21), gainPacket(0)};
    QCOMPARE(packets(steps), steps);
}

/// A folder is in the file's place until just before the end.
void SystemKa1::whatWaitsIsSavedAtTheEnd()
{
    QVERIFY(openPanel());
    const QString path = folder().settingsFile(iniFile);
    QVERIFY(QFile::remove(path) && QDir().mkdir(path));
    QVERIFY(Desktop::wheel(gain, 1));
    QVERIFY(panel().waitForLine(QStringLiteral("Mic volume set to: 1")));

    QVERIFY(simulator().unplug());
    QVERIFY(panel().waitForLine(QStringLiteral("Cleared all widgets from base layout.")));
    QVERIFY(waitUntil([this] { return knobsIn(PanelSession::pictureOf(window)).isEmpty(); }));
    // The settings dialog keeps its own handle until a device arrives again.
    QCOMPARE(handles(1), 1);

    QVERIFY(QDir().rmdir(path));
    QVERIFY(session().askToEnd(panel()));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);
    QCOMPARE(session().storedValue(iniFile, gainKey), QStringLiteral("1"));
}

QUORVEL_TEST_MAIN(SystemKa1)
#include "system_ka1_test.moc"
