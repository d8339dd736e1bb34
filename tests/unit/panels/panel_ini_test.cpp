#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/file_access.h"
#include "support/test_main.h"

#include <QTest>

using namespace TraceText;

/// Damaged, absurd and unwritable INI files.
class PanelIniTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(1); }
    void numbersOutOfRange();
    void textWhereANumberBelongs();
    void textWhereABooleanBelongs();
    void damagedBytes_data();
    void damagedBytes();
    void readOnlyFile();
    void missingKeysAreFilledIn();
    void unknownKeysSurvive();

private:
    void startAndUse();

    PanelFixture fixture;
};

void PanelIniTest::startAndUse()
{
    fixture.start<ka1>();
    QCOMPARE(fixture.log().take().constLast(), QString("已从配置文件加载控件状态"));
    fixture.simulated.control().clearTrace();
    fixture.wheel("Dial/MicValue", true);
    QCOMPARE(fixture.takeTrace().size(), 1);
}

void PanelIniTest::numbersOutOfRange()
{
    IniFile::write("ka1.ini", {{"Dial/MicValue", "43"},
                               {"Dial/HeadphoneValue", "-2000000000"},
                               {"Dial/OtgToHpValue", "2147483647"}});
    fixture.start<ka1>();
    QCOMPARE(fixture.knob("Dial/MicValue")->value, 42);
    QCOMPARE(fixture.knob("Dial/HeadphoneValue")->value, -80);
    QCOMPARE(fixture.knob("Dial/OtgToHpValue")->value, 6);
    QCOMPARE(IniFile::read("ka1.ini").value("Dial/MicValue"), QString("42"));
    QVERIFY(fixture.takeTrace().contains(command(1, "01 07 00 02 01 54 00")));
}

void PanelIniTest::textWhereANumberBelongs()
{
    IniFile::write("ka1.ini", {{"Dial/MicValue", "loud"},
                               {"Dial/HeadphoneValue", "12dB"},
                               {"Dial/OtgToHpValue", "99999999999999999999"}});
    fixture.start<ka1>();
    QCOMPARE(fixture.knob("Dial/MicValue")->value, 0);
    QCOMPARE(fixture.knob("Dial/HeadphoneValue")->value, -80);
    QCOMPARE(fixture.knob("Dial/OtgToHpValue")->value, 0);
}

void PanelIniTest::textWhereABooleanBelongs()
{
    IniFile::write("ka1.ini", {{"Button/Mic48VIsChecked", "tr\\x1e"},
                               {"Button/Mic20dBIsChecked", "1"},
                               {"Button/MonitorMicIsChecked", "TRUE"},
                               {"Button/HeadphoneDimIsChecked", "0"}});
    fixture.start<ka1>();
    QVERIFY(!fixture.button("Button/Mic48VIsChecked")->on);
    QVERIFY(fixture.button("Button/Mic20dBIsChecked")->on);
    QVERIFY(fixture.button("Button/MonitorMicIsChecked")->on);
    QVERIFY(!fixture.button("Button/HeadphoneDimIsChecked")->on);
}

void PanelIniTest::damagedBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("noise") << QByteArray::fromHex("fffe00ff5b5d3d0a5b44696c0a3d3d3d0d0d0a5b");
    QTest::newRow("cut off") << QByteArray("[Dial]\nMicValue=1\n[Butt");
    QTest::newRow("list") << QByteArray("[Dial]\nMicValue=1, 2, 3\nHeadphoneValue=\"\n");
    QTest::newRow("variant") << QByteArray("[Dial]\nMicValue=@Variant(\\0\\0\\0\\x1)\n");
    QTest::newRow("nested variants")
        << QByteArray("[Dial]\nMicValue=@Variant(") +
               QByteArray("\\0\\0\\0\\x9\\0\\0\\0\\0\\x1").repeated(50000) + ")\n";
    QTest::newRow("long line") << QByteArray("[Dial]\nMicValue=") + QByteArray(1 << 20, '9');
}

void PanelIniTest::damagedBytes()
{
    QFETCH(QByteArray, bytes);
    IniFile::writeRaw("ka1.ini", bytes);
    startAndUse();
    const int value = fixture.knob("Dial/MicValue")->value;
    QVERIFY(value >= 0 && value <= 42);
}

void PanelIniTest::readOnlyFile()
{
    IniFile::write("ka1.ini", {{"Dial/MicValue", "9"}});
    fixture.start<ka1>();
    {
        const ReadOnly guard(IniFile::path("ka1.ini"));
        fixture.takeTrace();
        fixture.wheel("Dial/MicValue", true);
        fixture.click("Button/Mic48VIsChecked");
        QCOMPARE(fixture.knob("Dial/MicValue")->value, 10);
        QCOMPARE(fixture.takeTrace(),
                 (QStringList{command(1, "01 07 00 02 01 14 00"), command(1, "01 5B 00 01 01"),
                              command(1, "01 5B 00 01 01")}));
        QCOMPARE(IniFile::read("ka1.ini").value("Dial/MicValue"), QString("9"));
    }
    fixture.wheel("Dial/MicValue", true);
    QCOMPARE(IniFile::read("ka1.ini").value("Dial/MicValue"), QString("11"));
    QCOMPARE(IniFile::read("ka1.ini").value("Button/Mic48VIsChecked"), QString("true"));
}

void PanelIniTest::missingKeysAreFilledIn()
{
    IniFile::write("ka1.ini", {{"Dial/MicValue", "5"}});
    fixture.start<ka1>();
    const auto stored = IniFile::read("ka1.ini");
    QCOMPARE(stored.size(), 9);
    QCOMPARE(stored.value("Dial/MicValue"), QString("5"));
    QCOMPARE(stored.value("Dial/OtgToHpValue"), QString("0"));
}

void PanelIniTest::unknownKeysSurvive()
{
    IniFile::write("ka1.ini", {{"Dial/FutureValue", "77"}});
    startAndUse();
    QCOMPARE(IniFile::read("ka1.ini").value("Dial/FutureValue"), QString("77"));
}

QUORVEL_TEST_MAIN(PanelIniTest)
#include "panel_ini_test.moc"
