#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/test_main.h"

#include <QLineEdit>
#include <QTest>

using namespace TraceText;

/// What a user's hand on a KA1 control sends, logs and stores.
class Ka1ControlsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void gain();
    void instrument();
    void pad();
    void phantom();
    void direct();
    void volume();
    void phoneLevel();
    void muteAtFullVolume();
    void dimLowersByTwenty();
    void typedValue();
    void refusedTable();
    void pulledCable();
    void destructionWhileTheEditorIsOpen();
    void slowDriver();

private:
    QString stored(const char* key) const { return IniFile::read("ka1.ini").value(key); }

    PanelFixture fixture;
};

void Ka1ControlsTest::init()
{
    fixture.plug(1);
    fixture.start<ka1>();
    fixture.settle();
}

void Ka1ControlsTest::gain()
{
    fixture.wheel("Dial/MicValue", true);
    QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 02 00")});
    QCOMPARE(fixture.log().take(), QStringList{"Mic volume set to: 1"});
    QCOMPARE(stored("Dial/MicValue"), QString("1"));
    fixture.wheel("Dial/MicValue", false);
    fixture.wheel("Dial/MicValue", false);
    QCOMPARE(fixture.takeTrace(),
             (QStringList{command(1, "01 07 00 02 01"), command(1, "01 07 00 02 01")}));
    QCOMPARE(stored("Dial/MicValue"), QString("0"));
    fixture.knob("Dial/MicValue")->setValue(1000);
    QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 54 00")});
    QCOMPARE(fixture.log().take().constLast(), QString("Mic volume set to: 42"));
}

void Ka1ControlsTest::instrument()
{
    fixture.click("Button/MicInstrIsChecked");
    QCOMPARE(fixture.takeTrace(), twice({command(1, "01 64 00 01 01")}));
    QCOMPARE(fixture.log().take(),
             twice({"Mic Instr Button Clicked", "Mic instruction switched for channel 1."}));
    QCOMPARE(fixture.button("Button/MicInstrIsChecked")->text(), QString("INST"));
    QCOMPARE(stored("Button/MicInstrIsChecked"), QString("true"));
    fixture.click("Button/MicInstrIsChecked");
    QCOMPARE(fixture.takeTrace(), twice({command(1, "01 64 00 00 01")}));
    QCOMPARE(fixture.button("Button/MicInstrIsChecked")->text(), QString("MIC"));
    QCOMPARE(stored("Button/MicInstrIsChecked"), QString("false"));
}

void Ka1ControlsTest::pad()
{
    fixture.click("Button/Mic20dBIsChecked");
    QCOMPARE(fixture.takeTrace(), twice({command(1, "01 5A 00 01 01")}));
    QCOMPARE(fixture.log().take(),
             twice({"Mic 20dB Button Clicked", "Mic 20dB switched for channel 1."}));
    QCOMPARE(stored("Button/Mic20dBIsChecked"), QString("true"));
}

void Ka1ControlsTest::phantom()
{
    fixture.click("Button/Mic48VIsChecked");
    QCOMPARE(fixture.takeTrace(), twice({command(1, "01 5B 00 01 01")}));
    QCOMPARE(fixture.log().take(),
             twice({"Mic 48V Button Clicked", "Mic 48V switched for channel 1."}));
    QCOMPARE(stored("Button/Mic48VIsChecked"), QString("true"));
}

void Ka1ControlsTest::direct()
{
    fixture.click("Button/MonitorMicIsChecked");
    QCOMPARE(fixture.takeTrace(), (QStringList{table(1, "2048=1 2081=1"), table(1, "")}));
    QCOMPARE(fixture.log().take(), twice({"Monitor Mic set to: 1"}));
    QCOMPARE(stored("Button/MonitorMicIsChecked"), QString("true"));
    fixture.click("Button/MonitorMicIsChecked");
    QCOMPARE(fixture.takeTrace(), (QStringList{table(1, "2048=0 2081=0"), table(1, "")}));
    QCOMPARE(fixture.log().take(), twice({"Monitor Mic set to: 0"}));
}

void Ka1ControlsTest::volume()
{
    fixture.knob("Dial/HeadphoneValue")->setValue(-7);
    fixture.takeTrace();
    fixture.log().clear();
    fixture.wheel("Dial/HeadphoneValue", true);
    QCOMPARE(fixture.takeTrace(), QStringList{table(1, "8192=0.501187 8193=0.501187")});
    QCOMPARE(fixture.log().take(), QStringList{"Headphone volume set to: 0.501187"});
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("-6"));
}

void Ka1ControlsTest::phoneLevel()
{
    fixture.wheel("Dial/OtgToHpValue", true);
    QCOMPARE(fixture.takeTrace(), QStringList{table(1, "2050=1.12202 2083=1.12202")});
    QCOMPARE(fixture.log().take(), QStringList{"OTG to HP volume set to: 1.12202"});
    QCOMPARE(stored("Dial/OtgToHpValue"), QString("1"));
}

void Ka1ControlsTest::muteAtFullVolume()
{
    fixture.knob("Dial/HeadphoneValue")->setValue(0);
    fixture.takeTrace();
    fixture.log().clear();
    fixture.click("Button/HeadphoneMuteIsChecked");
    QCOMPARE(fixture.takeTrace(), (QStringList{table(1, "8192=0 8193=0"), table(1, "")}));
    QCOMPARE(fixture.log().take(),
             twice({"Headphone Mute Button Clicked: Mute ON", "Headphone volume set to: 0"}));
    QCOMPARE(stored("Button/HeadphoneMuteIsChecked"), QString("true"));
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("0"));
    fixture.click("Button/HeadphoneMuteIsChecked");
    QCOMPARE(fixture.takeTrace(), (QStringList{table(1, "8192=1 8193=1"), table(1, "")}));
    QCOMPARE(fixture.log().take(),
             twice({"Headphone Mute Button Clicked: Mute OFF", "Headphone volume set to: 1"}));
}

void Ka1ControlsTest::dimLowersByTwenty()
{
    fixture.knob("Dial/HeadphoneValue")->setValue(6);
    fixture.takeTrace();
    fixture.log().clear();
    fixture.click("Button/HeadphoneDimIsChecked");
    QCOMPARE(fixture.takeTrace(),
             (QStringList{table(1, "8192=0.199526 8193=0.199526"), table(1, "")}));
    QCOMPARE(fixture.log().take(),
             twice({"Headphone Dim Button Clicked: Dim ON", "Headphone volume set to: 0.199526"}));
    QCOMPARE(stored("Button/HeadphoneDimIsChecked"), QString("true"));
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("6"));
}

void Ka1ControlsTest::typedValue()
{
    Knob* knob = fixture.knob("Dial/MicValue");
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QVERIFY(knob->editor->isVisible());
    knob->editor->clear();
    QTest::keyClicks(knob->editor, "12dB");
    QTest::keyClick(knob->editor, Qt::Key_Return);
    QCOMPARE(knob->value, 12);
    QCOMPARE(fixture.takeTrace().constFirst(), command(1, "01 07 00 02 01 18 00"));
    QCOMPARE(stored("Dial/MicValue"), QString("12"));
}

void Ka1ControlsTest::refusedTable()
{
    auto& control = fixture.simulated.control();
    control.fail(0xFFDC2040, SimulatorControl::always, 31);
    fixture.wheel("Dial/HeadphoneValue", true);
    QCOMPARE(fixture.log().take(), QStringList{"Failed to set headphone volume."});
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("-79"));
    QCOMPARE(fixture.knob("Dial/HeadphoneValue")->value, -79);
    fixture.wheel("Dial/OtgToHpValue", false);
    QCOMPARE(fixture.log().take(), QStringList{"Failed to set OTG to HP volume."});
    QCOMPARE(stored("Dial/OtgToHpValue"), QString("-1"));
    fixture.click("Button/MonitorMicIsChecked");
    QCOMPARE(fixture.log().take(), twice({"Failed to set Monitor Mic."}));
    QCOMPARE(stored("Button/MonitorMicIsChecked"), QString("true"));
    QVERIFY(fixture.button("Button/MonitorMicIsChecked")->on);
}

void Ka1ControlsTest::pulledCable()
{
    fixture.simulated.control().unplug();
    fixture.wheel("Dial/MicValue", true);
    fixture.click("Button/Mic48VIsChecked");
    fixture.click("Button/HeadphoneMuteIsChecked");
    QCOMPARE(stored("Dial/MicValue"), QString("1"));
    QCOMPARE(stored("Button/Mic48VIsChecked"), QString("true"));
    QCOMPARE(stored("Button/HeadphoneMuteIsChecked"), QString("true"));
}

void Ka1ControlsTest::destructionWhileTheEditorIsOpen()
{
    Knob* knob = fixture.knob("Dial/MicValue");
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QTest::keyClicks(knob->editor, "7");
    fixture.panel.reset();
    QCOMPARE(stored("Dial/MicValue"), QString("0"));
}

void Ka1ControlsTest::slowDriver()
{
    fixture.simulated.control().delay(0xFFDC209C, 1, 300);
    fixture.wheel("Dial/MicValue", true);
    QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 02 00")});
    QCOMPARE(stored("Dial/MicValue"), QString("1"));
}

QUORVEL_TEST_MAIN(Ka1ControlsTest)
#include "ka1_controls_test.moc"
