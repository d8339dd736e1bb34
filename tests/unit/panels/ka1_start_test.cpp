#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/test_main.h"

#include <QTest>

using namespace TraceText;

/// What a KA1 panel sends and logs while it is built.
class Ka1StartTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(1); }
    void firstStart();
    void startWithEveryKeyChanged();

private:
    PanelFixture fixture;
};

namespace {

/// The routes that the KA1 always has, which travel with the first table.
QString fixedRoutes()
{
    return cellsAt({128,  161,  194,  227,  260,  293,  326,  359,  3072, 3105, 4096,
                    4129, 4160, 4193, 5120, 5153, 5186, 5219, 5252, 5285, 5318, 5351},
                   "1");
}

} // namespace

void Ka1StartTest::firstStart()
{
    fixture.start<ka1>();
    QCOMPARE(fixture.simulated.takeTrace(), (QStringList{
                                                command(1, "01 03 00 02 01 64 00"),
                                                command(1, "01 03 00 02 02 64 00"),
                                                command(1, "01 64 00 00 01"),
                                                command(1, "01 5A 00 00 01"),
                                                command(1, "01 5B 00 00 01"),
                                                table(1, fixedRoutes() + u' ' + unityOutputs()),
                                                command(1, "01 07 00 02 01 00 00"),
                                                table(1, "8192=0 8193=0"),
                                                table(1, ""),
                                                table(1, ""),
                                                table(1, "2050=1 2083=1"),
                                            }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Mic Instr Button Clicked",
                                       "Mic instruction switched for channel 1.",
                                       "Mic 20dB Button Clicked",
                                       "Mic 20dB switched for channel 1.",
                                       "Mic 48V Button Clicked",
                                       "Mic 48V switched for channel 1.",
                                       "Monitor Mic set to: 0",
                                       "Mic volume set to: 0",
                                       "Headphone volume set to: 0",
                                       "Headphone Mute Button Clicked: Mute OFF",
                                       "Headphone volume set to: 0",
                                       "Headphone Dim Button Clicked: Dim OFF",
                                       "Headphone volume set to: 0",
                                       "OTG to HP volume set to: 1",
                                       "已从配置文件加载控件状态",
                                   }));
    const QMap<QString, QString> expected{
        {"Button/HeadphoneDimIsChecked", "false"},
        {"Button/HeadphoneMuteIsChecked", "false"},
        {"Button/Mic20dBIsChecked", "false"},
        {"Button/Mic48VIsChecked", "false"},
        {"Button/MicInstrIsChecked", "false"},
        {"Button/MonitorMicIsChecked", "false"},
        {"Dial/HeadphoneValue", "-80"},
        {"Dial/MicValue", "0"},
        {"Dial/OtgToHpValue", "0"},
    };
    QCOMPARE(IniFile::read("ka1.ini"), expected);
}

void Ka1StartTest::startWithEveryKeyChanged()
{
    const QMap<QString, QString> stored{
        {"Button/HeadphoneDimIsChecked", "true"},
        {"Button/HeadphoneMuteIsChecked", "true"},
        {"Button/Mic20dBIsChecked", "true"},
        {"Button/Mic48VIsChecked", "true"},
        {"Button/MicInstrIsChecked", "true"},
        {"Button/MonitorMicIsChecked", "true"},
        {"Dial/HeadphoneValue", "-6"},
        {"Dial/MicValue", "21"},
        {"Dial/OtgToHpValue", "-20"},
    };
    IniFile::write("ka1.ini", stored);
    fixture.start<ka1>();
    QCOMPARE(fixture.simulated.takeTrace(),
             (QStringList{
                 command(1, "01 03 00 02 01 64 00"),
                 command(1, "01 03 00 02 02 64 00"),
                 command(1, "01 64 00 01 01"),
                 command(1, "01 5A 00 01 01"),
                 command(1, "01 5B 00 01 01"),
                 table(1, cellsAt({128,  161,  194,  227,  260,  293,  326,  359,
                                   2048, 2081, 3072, 3105, 4096, 4129, 4160, 4193,
                                   5120, 5153, 5186, 5219, 5252, 5285, 5318, 5351},
                                  "1") +
                              u' ' + unityOutputs()),
                 command(1, "01 07 00 02 01 2A 00"),
                 table(1, "8192=0.501187 8193=0.501187"),
                 table(1, "8192=0 8193=0"),
                 table(1, ""),
                 table(1, "2050=0.1 2083=0.1"),
             }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Mic Instr Button Clicked",
                                       "Mic instruction switched for channel 1.",
                                       "Mic 20dB Button Clicked",
                                       "Mic 20dB switched for channel 1.",
                                       "Mic 48V Button Clicked",
                                       "Mic 48V switched for channel 1.",
                                       "Monitor Mic set to: 1",
                                       "Mic volume set to: 21",
                                       "Headphone volume set to: 0.501187",
                                       "Headphone Mute Button Clicked: Mute ON",
                                       "Headphone volume set to: 0",
                                       "Headphone Dim Button Clicked: Dim ON",
                                       "Headphone volume set to: 0",
                                       "OTG to HP volume set to: 0.1",
                                       "已从配置文件加载控件状态",
                                   }));
    QCOMPARE(IniFile::read("ka1.ini"), stored);
    QCOMPARE(fixture.knob("Dial/MicValue")->value, 21);
    QCOMPARE(fixture.button("Button/MicInstrIsChecked")->text(), QString("INST"));
    QVERIFY(fixture.button("Button/Mic48VIsChecked")->on);
}

QUORVEL_TEST_MAIN(Ka1StartTest)
#include "ka1_start_test.moc"
