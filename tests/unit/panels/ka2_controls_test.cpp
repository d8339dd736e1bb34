#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka2.h"
#include "support/test_main.h"

#include <QLineEdit>
#include <QTest>

using namespace TraceText;

/// What a user's hand on a KA2 control sends, logs and stores.
class Ka2ControlsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void microphones_data();
    void microphones() { fixture.checkMove("ka2.ini"); }
    void outputs_data();
    void outputs() { fixture.checkMove("ka2.ini"); }
    void refusedTable_data();
    void refusedTable() { fixture.checkRefusal("ka2.ini"); }
    void gainLimits_data();
    void gainLimits();
    void gainIsShownNineHigher();
    void unmuteWhileDimmed();
    void turningWhileMuted();

private:
    QString stored(const char* key) const { return IniFile::read("ka2.ini").value(key); }

    PanelFixture fixture;
};

namespace {

const QString saved = "控件状态已保存到配置文件";

/// One handler's lines after another's, each ended by the note that its control was saved.
QStringList savedTwice(QStringList lines)
{
    return twice(lines << saved);
}

} // namespace

void Ka2ControlsTest::init()
{
    fixture.plug(SimulatorControl::ka2);
    IniFile::write("ka2.ini", {{"Dial/SpeakerValue", "-7"}, {"Dial/HeadphoneValue", "-7"}});
    fixture.start<ka2>();
    fixture.settle();
}

void Ka2ControlsTest::microphones_data()
{
    addMoveColumns();
    const auto gain = [](const char* key, const char* up, const char* down) {
        QTest::newRow(key) << QStringList{command(1, up)}
                           << QStringList{"Mic volume set to: 1", saved} << "1"
                           << QStringList{command(1, down)}
                           << QStringList{"Mic volume set to: 0", saved} << "0";
    };
    gain("Dial/Mic1Value", "01 07 00 02 01 02", "01 07 00 02 01");
    gain("Dial/Mic2Value", "01 07 00 02 02 02", "01 07 00 02 02");

    const auto toggle = [](const char* key, const char* on, const char* off, const char* name) {
        const QString clicked = QStringLiteral("Mic %1 Button Clicked ").arg(name);
        const QString switched = QStringLiteral("Mic %1 switched for channel 1.").arg(name);
        QTest::newRow(key) << twice({command(1, on)}) << savedTwice({clicked + "true", switched})
                           << "true" << twice({command(1, off)})
                           << savedTwice({clicked + "false", switched}) << "false";
    };
    toggle("Button/Mic120dBIsChecked", "01 5A 00 01 01", "01 5A 00 00 01", "20dB");
    toggle("Button/Mic148VIsChecked", "01 5B 00 01 01", "01 5B 00 00 01", "48V");
    toggle("Button/Mic220dBIsChecked", "01 5A 00 01 02", "01 5A 00 00 02", "20dB");
    toggle("Button/Mic248VIsChecked", "01 5B 00 01 02", "01 5B 00 00 02", "48V");

    const auto direct = [](const char* key, const char* on, const char* off) {
        QTest::newRow(key) << QStringList{table(1, on), table(1, "")}
                           << savedTwice({"Monitor Mic set to: true"}) << "true"
                           << QStringList{table(1, off), table(1, "")}
                           << savedTwice({"Monitor Mic set to: false"}) << "false";
    };
    direct("Button/MonitorMic1IsChecked", "2048=1 2080=1 2176=1 2208=1",
           "2048=0 2080=0 2176=0 2208=0");
    direct("Button/MonitorMic2IsChecked", "2049=1 2081=1 2177=1 2209=1",
           "2049=0 2081=0 2177=0 2209=0");
}

void Ka2ControlsTest::outputs_data()
{
    addMoveColumns();
    const auto knob = [](const char* key, const QStringList& tables, const QStringList& lines,
                         const char* up, const QStringList& backLines, const char* down) {
        QTest::newRow(key) << QStringList{table(1, tables[0])} << (lines + QStringList{saved}) << up
                           << QStringList{table(1, tables[1])} << (backLines + QStringList{saved})
                           << down;
    };
    knob("Dial/SpeakerValue", {"8192=0.501187 8193=0.501187", "8192=0.446684 8193=0.446684"},
         {"Speaker Knob value changed: -6", "Speaker volume set to: -6"}, "-6",
         {"Speaker Knob value changed: -7", "Speaker volume set to: -7"}, "-7");
    knob("Dial/HeadphoneValue", {"8196=0.501187 8197=0.501187", "8196=0.446684 8197=0.446684"},
         {"Headphone Knob value changed: -6", "Headphone volume set to: -6"}, "-6",
         {"Headphone Knob value changed: -7", "Headphone volume set to: -7"}, "-7");
    knob("Dial/OtgToSPValue", {"2050=1.12202 2083=1.12202", "2050=1 2083=1"},
         {"OTG to SP volume set to: 1.12202"}, "1", {"OTG to SP volume set to: 1"}, "0");
    knob("Dial/OtgToHpValue", {"2178=1.12202 2211=1.12202", "2178=1 2211=1"},
         {"OTG to HP volume set to: 1.12202"}, "1", {"OTG to HP volume set to: 1"}, "0");

    const auto toggle = [](const char* key, const QStringList& tables, const QStringList& lines,
                           const QStringList& backLines) {
        QTest::newRow(key) << QStringList{table(1, tables[0]), table(1, "")} << savedTwice(lines)
                           << "true" << QStringList{table(1, tables[1]), table(1, "")}
                           << savedTwice(backLines) << "false";
    };
    const QStringList speakerBack{"Speaker Knob value changed: -7", "Speaker volume set to: -7",
                                  saved};
    const QStringList headphoneBack{"Headphone Knob value changed: -7",
                                    "Headphone volume set to: -7", saved};
    toggle("Button/SpeakerMuteIsChecked", {"8192=0 8193=0", "8192=0.446684 8193=0.446684"},
           {"Speaker Knob value changed: -80", "Speaker volume set to: -80", saved,
            "Speaker Mute Button Clicked: Mute ON"},
           speakerBack + QStringList{"Speaker Mute Button Clicked: Mute OFF"});
    toggle("Button/SpeakerDimIsChecked",
           {"8192=0.0446684 8193=0.0446684", "8192=0.446684 8193=0.446684"},
           {"Speaker Knob value changed: -7", "Speaker volume set to: -27", saved}, speakerBack);
    toggle("Button/HeadphoneMuteIsChecked", {"8196=0 8197=0", "8196=0.446684 8197=0.446684"},
           {"Headphone Knob value changed: -7", "Headphone volume set to: -80", saved},
           headphoneBack);
    toggle("Button/HeadphoneDimIsChecked",
           {"8196=0.0446684 8197=0.0446684", "8196=0.446684 8197=0.446684"},
           {"Headphone Knob value changed: -7", "Headphone volume set to: -27", saved},
           headphoneBack);
}

void Ka2ControlsTest::refusedTable_data()
{
    addRefusalColumns();
    QTest::newRow("Button/MonitorMic1IsChecked")
        << savedTwice({"Failed to set Monitor Mic."}) << "true";
    QTest::newRow("Button/MonitorMic2IsChecked")
        << savedTwice({"Failed to set Monitor Mic."}) << "true";
    QTest::newRow("Dial/SpeakerValue")
        << QStringList{"Speaker Knob value changed: -6", "Failed to set speaker volume.", saved}
        << "-6";
    QTest::newRow("Button/SpeakerMuteIsChecked")
        << savedTwice({"Speaker Knob value changed: -80", "Failed to set speaker volume.", saved,
                       "Speaker Mute Button Clicked: Mute ON"})
        << "true";
    QTest::newRow("Button/SpeakerDimIsChecked")
        << savedTwice({"Speaker Knob value changed: -7", "Failed to set speaker volume.", saved})
        << "true";
    QTest::newRow("Dial/HeadphoneValue")
        << QStringList{"Headphone Knob value changed: -6", "Failed to set headphone volume.", saved}
        << "-6";
    QTest::newRow("Button/HeadphoneMuteIsChecked")
        << savedTwice(
               {"Headphone Knob value changed: -7", "Failed to set headphone volume.", saved})
        << "true";
    QTest::newRow("Button/HeadphoneDimIsChecked")
        << savedTwice(
               {"Headphone Knob value changed: -7", "Failed to set headphone volume.", saved})
        << "true";
    // The speakers' text names the headphones.
    QTest::newRow("Dial/OtgToSPValue")
        << QStringList{"Failed to set OTG to HP volume.", saved} << "1";
    QTest::newRow("Dial/OtgToHpValue")
        << QStringList{"Failed to set OTG to HP volume.", saved} << "1";
}

void Ka2ControlsTest::gainLimits_data()
{
    QTest::addColumn<QString>("top");
    QTest::newRow("Dial/Mic1Value") << "01 07 00 02 01 70 00";
    QTest::newRow("Dial/Mic2Value") << "01 07 00 02 02 70 00";
}

void Ka2ControlsTest::gainLimits()
{
    QFETCH(QString, top);
    const char* key = QTest::currentDataTag();
    fixture.knob(key)->setValue(55);
    fixture.takeTrace();
    fixture.wheel(key, true);
    fixture.wheel(key, true);
    QCOMPARE(fixture.takeTrace(), twice({command(1, top)}));
    QCOMPARE(fixture.log().take().constFirst(), QString("Mic volume set to: 55"));
    QCOMPARE(stored(key), QString("56"));
}

void Ka2ControlsTest::gainIsShownNineHigher()
{
    Knob* knob = fixture.knob("Dial/Mic2Value");
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QCOMPARE(knob->editor->text(), QString("9"));
    knob->editor->clear();
    QTest::keyClicks(knob->editor, "12dB");
    QTest::keyClick(knob->editor, Qt::Key_Return);
    QCOMPARE(knob->value, 3);
    QCOMPARE(fixture.takeTrace().constFirst(), command(1, "01 07 00 02 02 06 00"));
    QCOMPARE(stored("Dial/Mic2Value"), QString("3"));
}

void Ka2ControlsTest::unmuteWhileDimmed()
{
    fixture.click("Button/SpeakerDimIsChecked");
    fixture.click("Button/SpeakerMuteIsChecked");
    fixture.takeTrace();
    fixture.log().clear();
    fixture.click("Button/SpeakerMuteIsChecked");
    QCOMPARE(fixture.takeTrace(),
             (QStringList{table(1, "8192=0.0446684 8193=0.0446684"), table(1, "")}));
    QCOMPARE(fixture.log().take(),
             savedTwice({"Speaker Knob value changed: -7", "Speaker volume set to: -27", saved,
                         "Speaker Mute Button Clicked: Mute OFF"}));
}

void Ka2ControlsTest::turningWhileMuted()
{
    fixture.click("Button/HeadphoneMuteIsChecked");
    fixture.takeTrace();
    fixture.log().clear();
    fixture.wheel("Dial/HeadphoneValue", true);
    QCOMPARE(fixture.takeTrace(), QStringList{table(1, "")});
    QCOMPARE(fixture.log().take(), (QStringList{"Headphone Knob value changed: -6",
                                                "Headphone volume set to: -80", saved}));
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("-6"));
}

QUORVEL_TEST_MAIN(Ka2ControlsTest)
#include "ka2_controls_test.moc"
