#include "panel_fixture.h"
#include "panels/ks.h"
#include "support/test_main.h"

#include <QTest>

using namespace TraceText;

/// What a KS panel sends and logs while it is built.
class KsStartTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(SimulatorControl::ks); }
    void firstStart();
    void startWithEveryKeyChanged();

private:
    PanelFixture fixture;
};

void KsStartTest::firstStart()
{
    fixture.start<ks>();
    QCOMPARE(fixture.simulated.takeTrace(), (QStringList{
                                                command(1, "01 03 00 02 01 64 00"),
                                                command(1, "01 03 00 02 02 64 00"),
                                                table(1, unityOutputs()),
                                                command(1, "01 07 00 02 01 00 00"),
                                                table(1, "8192=0 8193=0"),
                                                table(1, ""),
                                                table(1, ""),
                                            }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Monitor Mic set to: false",
                                       "Mic volume set to: 0",
                                       "Headphone Mute Button Clicked: Mute OFF",
                                       "Headphone Dim Button Clicked: Dim OFF",
                                       "已从配置文件加载控件状态",
                                   }));
    const QMap<QString, QString> expected{
        {"Button/HeadphoneDimIsChecked", "false"},
        {"Button/HeadphoneMuteIsChecked", "false"},
        {"Button/MonitorMicIsChecked", "false"},
        {"Dial/HeadphoneValue", "-80"},
        {"Dial/MicValue", "0"},
    };
    QCOMPARE(IniFile::read("ks.ini"), expected);
}

void KsStartTest::startWithEveryKeyChanged()
{
    const QMap<QString, QString> stored{
        {"Button/HeadphoneDimIsChecked", "true"},
        {"Button/HeadphoneMuteIsChecked", "true"},
        {"Button/MonitorMicIsChecked", "true"},
        {"Dial/HeadphoneValue", "-6"},
        {"Dial/MicValue", "42"},
    };
    IniFile::write("ks.ini", stored);
    fixture.start<ks>();
    QCOMPARE(fixture.simulated.takeTrace(), (QStringList{
                                                command(1, "01 03 00 02 01 64 00"),
                                                command(1, "01 03 00 02 02 64 00"),
                                                table(1, "2048=1 2081=1 " + unityOutputs()),
                                                command(1, "01 07 00 02 01 54 00"),
                                                table(1, "8192=0.501187 8193=0.501187"),
                                                table(1, "8192=0 8193=0"),
                                                table(1, ""),
                                            }));
    QCOMPARE(fixture.log().take(), (QStringList{
                                       "Monitor Mic set to: true",
                                       "Mic volume set to: 42",
                                       "Headphone Mute Button Clicked: Mute ON",
                                       "Headphone Dim Button Clicked: Dim ON",
                                       "已从配置文件加载控件状态",
                                   }));
    QCOMPARE(IniFile::read("ks.ini"), stored);
}

QUORVEL_TEST_MAIN(KsStartTest)
#include "ks_start_test.moc"
