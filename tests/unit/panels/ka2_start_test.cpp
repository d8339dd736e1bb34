#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka2.h"
#include "support/test_main.h"

#include <QTest>

using namespace TraceText;

/// What a KA2 panel sends and logs while it is built.
class Ka2StartTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(SimulatorControl::ka2); }
    void firstStart();
    void startWithEveryKeyChanged();

private:
    PanelFixture fixture;
};

namespace {

const QString saved = "控件状态已保存到配置文件";

} // namespace

void Ka2StartTest::firstStart()
{
    fixture.start<ka2>();
    QCOMPARE(fixture.simulated.takeTrace(), (QStringList{
                                                command(1, "01 03 00 02 01 64 00"),
                                                command(1, "01 03 00 02 02 64 00"),
                                                command(1, "01 03 00 02 05 64 00"),
                                                command(1, "01 03 00 02 06 64 00"),
                                                command(1, "01 5A 00 00 01"),
                                                command(1, "01 5B 00 00 01"),
                                                table(1, unityOutputs()),
                                                command(1, "01 07 00 02 01 00 00"),
                                                command(1, "01 07 00 02 02 00 00"),
                                                command(1, "01 5A 00 00 02"),
                                                command(1, "01 5B 00 00 02"),
                                                table(1, ""),
                                                table(1, "8192=0 8193=0"),
                                                table(1, ""),
                                                table(1, ""),
                                                table(1, "8196=0 8197=0"),
                                                table(1, ""),
                                                table(1, ""),
                                                table(1, "2178=1 2211=1"),
                                                table(1, "2050=1 2083=1"),
                                            }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Mic 20dB Button Clicked false",
                                       "Mic 20dB switched for channel 1.",
                                       saved,
                                       "Mic 48V Button Clicked false",
                                       "Mic 48V switched for channel 1.",
                                       saved,
                                       "Monitor Mic set to: false",
                                       saved,
                                       "Mic volume set to: 0",
                                       saved,
                                       "Mic volume set to: 0",
                                       saved,
                                       "Mic 20dB Button Clicked false",
                                       "Mic 20dB switched for channel 1.",
                                       saved,
                                       "Mic 48V Button Clicked false",
                                       "Mic 48V switched for channel 1.",
                                       saved,
                                       "Monitor Mic set to: false",
                                       saved,
                                       "Speaker Knob value changed: -80",
                                       "Speaker volume set to: -80",
                                       saved,
                                       "Speaker Knob value changed: -80",
                                       "Speaker volume set to: -80",
                                       saved,
                                       "Speaker Mute Button Clicked: Mute OFF",
                                       saved,
                                       "Speaker Knob value changed: -80",
                                       "Speaker volume set to: -80",
                                       saved,
                                       saved,
                                       "Headphone Knob value changed: -80",
                                       "Headphone volume set to: -80",
                                       saved,
                                       "Headphone Knob value changed: -80",
                                       "Headphone volume set to: -80",
                                       saved,
                                       saved,
                                       "Headphone Knob value changed: -80",
                                       "Headphone volume set to: -80",
                                       saved,
                                       saved,
                                       "OTG to HP volume set to: 1",
                                       saved,
                                       "OTG to SP volume set to: 1",
                                       saved,
                                       "已从配置文件加载控件状态",
                                   }));
    const QMap<QString, QString> expected{
        {"Button/HeadphoneDimIsChecked", "false"},
        {"Button/HeadphoneMuteIsChecked", "false"},
        {"Button/Mic120dBIsChecked", "false"},
        {"Button/Mic148VIsChecked", "false"},
        {"Button/Mic220dBIsChecked", "false"},
        {"Button/Mic248VIsChecked", "false"},
        {"Button/MonitorMic1IsChecked", "false"},
        {"Button/MonitorMic2IsChecked", "false"},
        {"Button/SpeakerDimIsChecked", "false"},
        {"Button/SpeakerMuteIsChecked", "false"},
        {"Dial/HeadphoneValue", "-80"},
        {"Dial/Mic1Value", "0"},
        {"Dial/Mic2Value", "0"},
        {"Dial/OtgToHpValue", "0"},
        {"Dial/OtgToSPValue", "0"},
        {"Dial/SpeakerValue", "-80"},
    };
    QCOMPARE(IniFile::read("ka2.ini"), expected);
}

void Ka2StartTest::startWithEveryKeyChanged()
{
    const QMap<QString, QString> stored{
        {"Button/HeadphoneDimIsChecked", "true"},
        {"Button/HeadphoneMuteIsChecked", "true"},
        {"Button/Mic120dBIsChecked", "true"},
        {"Button/Mic148VIsChecked", "true"},
        {"Button/Mic220dBIsChecked", "true"},
        {"Button/Mic248VIsChecked", "true"},
        {"Button/MonitorMic1IsChecked", "true"},
        {"Button/MonitorMic2IsChecked", "true"},
        {"Button/SpeakerDimIsChecked", "true"},
        {"Button/SpeakerMuteIsChecked", "true"},
        {"Dial/HeadphoneValue", "6"},
        {"Dial/Mic1Value", "21"},
        {"Dial/Mic2Value", "56"},
        {"Dial/OtgToHpValue", "-20"},
        {"Dial/OtgToSPValue", "3"},
        {"Dial/SpeakerValue", "-6"},
    };
    IniFile::write("ka2.ini", stored);
    fixture.start<ka2>();
    QCOMPARE(fixture.simulated.takeTrace(),
             (QStringList{
                 command(1, "01 03 00 02 01 64 00"),
                 command(1, "01 03 00 02 02 64 00"),
                 command(1, "01 03 00 02 05 64 00"),
                 command(1, "01 03 00 02 06 64 00"),
                 command(1, "01 5A 00 01 01"),
                 command(1, "01 5B 00 01 01"),
                 table(1, "2048=1 2080=1 2176=1 2208=1 " + unityOutputs()),
                 command(1, "01 07 00 02 01 2A 00"),
                 command(1, "01 07 00 02 02 70 00"),
                 command(1, "01 5A 00 01 02"),
                 command(1, "01 5B 00 01 02"),
                 table(1, "2049=1 2081=1 2177=1 2209=1"),
                 table(1, "8192=0.501187 8193=0.501187"),
                 table(1, "8192=0 8193=0"),
                 table(1, ""),
                 table(1, "8196=1.99526 8197=1.99526"),
                 table(1, "8196=0 8197=0"),
                 table(1, ""),
                 table(1, "2178=0.1 2211=0.1"),
                 table(1, "2050=1.41254 2083=1.41254"),
             }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Mic 20dB Button Clicked true",
                                       "Mic 20dB switched for channel 1.",
                                       saved,
                                       "Mic 48V Button Clicked true",
                                       "Mic 48V switched for channel 1.",
                                       saved,
                                       "Monitor Mic set to: true",
                                       saved,
                                       "Mic volume set to: 21",
                                       saved,
                                       "Mic volume set to: 56",
                                       saved,
                                       "Mic 20dB Button Clicked true",
                                       "Mic 20dB switched for channel 1.",
                                       saved,
                                       "Mic 48V Button Clicked true",
                                       "Mic 48V switched for channel 1.",
                                       saved,
                                       "Monitor Mic set to: true",
                                       saved,
                                       "Speaker Knob value changed: -6",
                                       "Speaker volume set to: -6",
                                       saved,
                                       "Speaker Knob value changed: -80",
                                       "Speaker volume set to: -80",
                                       saved,
                                       "Speaker Mute Button Clicked: Mute ON",
                                       saved,
                                       "Speaker Knob value changed: -6",
                                       "Speaker volume set to: -80",
                                       saved,
                                       saved,
                                       "Headphone Knob value changed: 6",
                                       "Headphone volume set to: 6",
                                       saved,
                                       "Headphone Knob value changed: 6",
                                       "Headphone volume set to: -80",
                                       saved,
                                       saved,
                                       "Headphone Knob value changed: 6",
                                       "Headphone volume set to: -80",
                                       saved,
                                       saved,
                                       "OTG to HP volume set to: 0.1",
                                       saved,
                                       "OTG to SP volume set to: 1.41254",
                                       saved,
                                       "已从配置文件加载控件状态",
                                   }));
    QCOMPARE(IniFile::read("ka2.ini"), stored);
    QCOMPARE(fixture.knob("Dial/Mic2Value")->value, 56);
    QVERIFY(fixture.button("Button/Mic248VIsChecked")->on);
}

QUORVEL_TEST_MAIN(Ka2StartTest)
#include "ka2_start_test.moc"
