#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/panel.h"
#include "support/file_access.h"
#include "support/settings_files.h"
#include "support/test_main.h"

#include <QRegularExpression>
#include <QTest>

#include <optional>

using namespace TraceText;

/// A panel whose file cannot be read or saved, and saveState().
class PanelStorageTest : public QObject
{
    Q_OBJECT

private slots:
    void unreadFile_data() { addModelRows(); }
    void unreadFile();
    void unreadFileAndTheUsersHand();
    void unreadFileAndAPanelThatIsGone();
    void unsavedFile();
    void saveState_data();
    void saveState();
    void saveStateSavesWhatWaits();
    void saveStateOfAnEmptyPanel_data() { addModelRows(); }
    void saveStateOfAnEmptyPanel();

private:
    Panel& panel() { return dynamic_cast<Panel&>(*fixture.panel); }
    /// For each key of the present panel a value that is not its default.
    QMap<QString, QString> otherValues() const;
    /// What the controls show.
    QMap<QString, QString> shown() const;

    PanelFixture fixture;
};

namespace {

const QMap<QString, std::uint32_t> models{
    {"ka1", SimulatorControl::ka1}, {"ka2", SimulatorControl::ka2}, {"ks", SimulatorControl::ks}};

QStringList troubles(const QStringList& lines)
{
    return lines.filter(QRegularExpression(QStringLiteral("^Cannot (read|save) the settings yet")));
}

} // namespace

QMap<QString, QString> PanelStorageTest::otherValues() const
{
    QMap<QString, QString> values = shown();
    for (auto value = values.begin(); value != values.end(); ++value)
        *value = value.key().startsWith(QStringLiteral("Dial/")) ? "5" : "true";
    return values;
}

QMap<QString, QString> PanelStorageTest::shown() const
{
    QMap<QString, QString> values;
    const auto knobs = fixture.panel->findChildren<Knob*>();
    for (const Knob* knob : knobs)
        values.insert(knob->objectName(), QString::number(knob->value));
    const auto buttons = fixture.panel->findChildren<Button*>();
    for (const Button* button : buttons)
        values.insert(button->objectName(), button->on ? "true" : "false");
    return values;
}

/// Another program has the file for itself when the interface comes: no value of it is lost.
void PanelStorageTest::unreadFile()
{
    QFETCH(const std::uint32_t, productId);
    const QString model = QTest::currentDataTag();
    const QString ini = model + ".ini";
    fixture.plug(productId);
    fixture.start(model);
    const QMap<QString, QString> defaults = shown();
    const QMap<QString, QString> before = otherValues();
    forgetSettingsFiles();
    IniFile::write(ini, before);
    fixture.start(model);
    const QStringList replay = fixture.takeTrace();
    const QStringList lines = fixture.log().lines();

    forgetSettingsFiles();
    std::optional<Unreadable> holder(IniFile::path(ini));
    fixture.start(model);
    QCOMPARE(shown(), defaults);
    QCOMPARE(troubles(fixture.log().take()),
             QStringList{
                 QStringLiteral("Cannot read the settings yet: \"%1\"").arg(IniFile::path(ini))});
    QVERIFY(retrySettingsFile());
    panel().saveState();
    QCOMPARE(troubles(fixture.log().take()), QStringList());
    holder.reset();
    QCOMPARE(IniFile::read(ini), before);

    fixture.takeTrace();
    QVERIFY(retrySettingsFile());
    QCOMPARE(shown(), before);
    QCOMPARE(IniFile::read(ini), before);
    // What an arrival sends and says of the controls, once more.
    const QStringList again = fixture.takeTrace();
    QVERIFY(!again.isEmpty());
    QCOMPARE(again.size(), replay.size() - (model == u"ka2" ? 4 : 2));
    const QStringList linesAgain = fixture.log().take();
    QCOMPARE(linesAgain, lines.mid(lines.size() - linesAgain.size()));
    QCOMPARE(linesAgain.constLast(), QString("已从配置文件加载控件状态"));
    QVERIFY(!retrySettingsFile());
}

/// What the user changes meanwhile wins; what is stored along with it does not.
void PanelStorageTest::unreadFileAndTheUsersHand()
{
    fixture.plug(SimulatorControl::ka1);
    IniFile::write("ka1.ini", {{"Dial/HeadphoneValue", "-20"},
                               {"Dial/MicValue", "30"},
                               {"Dial/OtgToHpValue", "-10"},
                               {"Button/Mic48VIsChecked", "true"},
                               {"Button/Mic20dBIsChecked", "true"},
                               {"Button/HeadphoneMuteIsChecked", "false"}});
    {
        const Unreadable holder(IniFile::path("ka1.ini"));
        fixture.start("ka1");
        fixture.wheel("Dial/MicValue", true);
        // There and back: also a choice.
        fixture.click("Button/Mic20dBIsChecked");
        fixture.click("Button/Mic20dBIsChecked");
    }
    // The file is free again, but has not been read.
    fixture.click("Button/HeadphoneMuteIsChecked");
    fixture.takeTrace();
    QVERIFY(retrySettingsFile());
    const QMap<QString, QString> expected{{"Dial/HeadphoneValue", "-20"},
                                          {"Dial/MicValue", "1"},
                                          {"Dial/OtgToHpValue", "-10"},
                                          {"Button/Mic48VIsChecked", "true"},
                                          {"Button/Mic20dBIsChecked", "false"},
                                          {"Button/HeadphoneMuteIsChecked", "true"},
                                          {"Button/HeadphoneDimIsChecked", "false"},
                                          {"Button/MicInstrIsChecked", "false"},
                                          {"Button/MonitorMicIsChecked", "false"}};
    QCOMPARE(shown(), expected);
    QCOMPARE(IniFile::read("ka1.ini"), expected);
    const QStringList trace = fixture.takeTrace();
    QVERIFY(trace.contains(command(1, "01 5B 00 01 01")));
    QVERIFY(trace.contains(command(1, "01 07 00 02 01 02")));
}

void PanelStorageTest::unreadFileAndAPanelThatIsGone()
{
    fixture.plug(SimulatorControl::ka1);
    IniFile::write("ka1.ini", {{"Dial/MicValue", "30"}, {"Dial/OtgToHpValue", "-10"}});
    {
        const Unreadable holder(IniFile::path("ka1.ini"));
        fixture.start("ka1");
        fixture.wheel("Dial/MicValue", true);
        fixture.panel.reset();
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(IniFile::read("ka1.ini"),
             (QMap<QString, QString>{{"Dial/MicValue", "1"}, {"Dial/OtgToHpValue", "-10"}}));
}

/// The panel works on, the next panel takes up what waits, and the file gets it in the end.
void PanelStorageTest::unsavedFile()
{
    fixture.plug(SimulatorControl::ka2);
    IniFile::write("ka2.ini", {{"Dial/Mic1Value", "5"}, {"Button/Mic148VIsChecked", "true"}});
    fixture.start("ka2");
    {
        const ReadOnly guard(IniFile::path("ka2.ini"));
        fixture.takeTrace();
        fixture.log().clear();
        fixture.wheel("Dial/Mic1Value", true);
        QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 0C")});
        const QStringList lines = fixture.log().take();
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.constFirst(), QString("Mic volume set to: 6"));
        QCOMPARE(troubles(lines), lines.mid(1, 1));
        QCOMPARE(lines.constLast(), QString("控件状态已保存到配置文件"));
        fixture.click("Button/Mic148VIsChecked");

        fixture.start("ka2");
        QCOMPARE(fixture.knob("Dial/Mic1Value")->value, 6);
        QVERIFY(!fixture.button("Button/Mic148VIsChecked")->on);
        QCOMPARE(troubles(fixture.log().lines()), QStringList());
        QCOMPARE(IniFile::read("ka2.ini").value("Dial/Mic1Value"), QString("5"));
        fixture.panel.reset();
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(IniFile::read("ka2.ini").value("Dial/Mic1Value"), QString("6"));
    QCOMPARE(IniFile::read("ka2.ini").value("Button/Mic148VIsChecked"), QString("false"));
}

void PanelStorageTest::saveState_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("ka1") << QStringList();
    QTest::newRow("ka2") << QStringList{"控件状态已保存到配置文件"};
    QTest::newRow("ks") << QStringList();
}

void PanelStorageTest::saveState()
{
    QFETCH(const QStringList, lines);
    const QString model = QTest::currentDataTag();
    fixture.plug(models.value(model));
    fixture.start(model);
    fixture.takeTrace();
    fixture.log().clear();
    const QMap<QString, QString> before = IniFile::read(model + ".ini");
    panel().saveState();
    QCOMPARE(fixture.log().take(), lines);
    QCOMPARE(fixture.takeTrace(), QStringList());
    QCOMPARE(IniFile::read(model + ".ini"), before);
}

void PanelStorageTest::saveStateSavesWhatWaits()
{
    for (const QString& model : models.keys()) {
        const QString ini = model + ".ini";
        fixture.plug(models.value(model));
        fixture.start(model);
        {
            const ReadOnly guard(IniFile::path(ini));
            fixture.wheel("Dial/HeadphoneValue", true);
            QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-80"));
        }
        panel().saveState();
        QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-79"));
    }
}

void PanelStorageTest::saveStateOfAnEmptyPanel()
{
    QFETCH(const std::uint32_t, productId);
    const QString model = QTest::currentDataTag();
    fixture.plug(productId);
    fixture.simulated.control().unplug();
    fixture.start(model);
    fixture.log().clear();
    panel().saveState();
    QCOMPARE(fixture.log().take(), QStringList());
    QVERIFY(!QFile::exists(IniFile::path(model + ".ini")));
}

QUORVEL_TEST_MAIN(PanelStorageTest)
#include "panel_storage_test.moc"
