#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ks.h"
#include "support/test_main.h"

#include <QTest>

using namespace TraceText;

/// What a user's hand on a KS control sends, logs and stores.
class KsControlsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void controls_data();
    void controls() { fixture.checkMove("ks.ini"); }
    void refusedTable_data();
    void refusedTable() { fixture.checkRefusal("ks.ini"); }
    void gainLimit();
    void unmuteWhileDimmed();

private:
    PanelFixture fixture;
};

void KsControlsTest::init()
{
    fixture.plug(SimulatorControl::ks);
    IniFile::write("ks.ini", {{"Dial/HeadphoneValue", "-7"}});
    fixture.start<ks>();
    fixture.settle();
}

void KsControlsTest::controls_data()
{
    addMoveColumns();
    QTest::newRow("Dial/MicValue")
        << QStringList{command(1, "01 07 00 02 01 02")} << QStringList{"Mic volume set to: 1"}
        << "1" << QStringList{command(1, "01 07 00 02 01")} << QStringList{"Mic volume set to: 0"}
        << "0";
    QTest::newRow("Dial/HeadphoneValue")
        << QStringList{table(1, "8192=0.501187 8193=0.501187")} << QStringList{} << "-6"
        << QStringList{table(1, "8192=0.446684 8193=0.446684")} << QStringList{} << "-7";
    const auto toggle = [](const char* key, const char* on, const char* onLine, const char* off,
                           const char* offLine) {
        QTest::newRow(key) << QStringList{table(1, on), table(1, "")} << twice({onLine}) << "true"
                           << QStringList{table(1, off), table(1, "")} << twice({offLine})
                           << "false";
    };
    toggle("Button/MonitorMicIsChecked", "2048=1 2081=1", "Monitor Mic set to: true",
           "2048=0 2081=0", "Monitor Mic set to: false");
    toggle("Button/HeadphoneMuteIsChecked", "8192=0 8193=0",
           "Headphone Mute Button Clicked: Mute ON", "8192=0.446684 8193=0.446684",
           "Headphone Mute Button Clicked: Mute OFF");
    toggle("Button/HeadphoneDimIsChecked", "8192=0.0446684 8193=0.0446684",
           "Headphone Dim Button Clicked: Dim ON", "8192=0.446684 8193=0.446684",
           "Headphone Dim Button Clicked: Dim OFF");
}

void KsControlsTest::refusedTable_data()
{
    addRefusalColumns();
    const QString failed = "Failed to set headphone volume.";
    QTest::newRow("Button/MonitorMicIsChecked") << twice({"Failed to set Monitor Mic."}) << "true";
    QTest::newRow("Dial/HeadphoneValue") << QStringList{failed} << "-6";
    QTest::newRow("Button/HeadphoneMuteIsChecked")
        << twice({failed, "Headphone Mute Button Clicked: Mute ON"}) << "true";
    QTest::newRow("Button/HeadphoneDimIsChecked")
        << twice({failed, "Headphone Dim Button Clicked: Dim ON"}) << "true";
}

void KsControlsTest::gainLimit()
{
    fixture.knob("Dial/MicValue")->setValue(1000);
    QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 54 00")});
    QCOMPARE(IniFile::read("ks.ini").value("Dial/MicValue"), QString("42"));
}

void KsControlsTest::unmuteWhileDimmed()
{
    fixture.click("Button/HeadphoneDimIsChecked");
    fixture.click("Button/HeadphoneMuteIsChecked");
    QCOMPARE(fixture.takeTrace().constLast(), table(1, ""));
    QCOMPARE(fixture.simulated.control().mixerTable().at(8192), 0.0);
    fixture.click("Button/HeadphoneMuteIsChecked");
    QCOMPARE(fixture.takeTrace(),
             (QStringList{table(1, "8192=0.0446684 8193=0.0446684"), table(1, "")}));
    QCOMPARE(IniFile::read("ks.ini").value("Dial/HeadphoneValue"), QString("-7"));
}

QUORVEL_TEST_MAIN(KsControlsTest)
#include "ks_controls_test.moc"
