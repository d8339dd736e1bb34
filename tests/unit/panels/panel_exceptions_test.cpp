#include "controls/button.h"
#include "controls/knob.h"
#include "panel_models.h"
#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/scripted_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QTest>

#include <iostream>

using ScriptedPlatform::Reaction;

/// The failure texts of the commands that fail only by an exception.
class PanelExceptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void outputVolumes_data();
    void outputVolumes();
    void micVolume_data();
    void micVolume();
    void instrumentKeepsItsCaption();
    void switches_data();
    void switches();
    void order_data();
    void order();

private:
    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
};

namespace {

const QString saved = "控件状态已保存到配置文件";

} // namespace

void PanelExceptionsTest::init()
{
    ScriptedPlatform::reset();
    for (const char* file : {"ka1.ini", "ka2.ini", "ks.ini"})
        IniFile::remove(file);
}

void PanelExceptionsTest::outputVolumes_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QList<Reaction>>("verdicts");
    QTest::addColumn<bool>("empty");
    constexpr Reaction good = Reaction::answer;
    constexpr Reaction bad = Reaction::throwStandard;
    const QList<Reaction> lastOfTwo{good, bad};
    const QList<Reaction> firstOfTwo{bad, good};
    QTest::newRow("ka1, last") << "ka1" << lastOfTwo << true;
    QTest::newRow("ka1, all but the last") << "ka1" << firstOfTwo << false;
    QTest::newRow("ka2, last") << "ka2" << QList<Reaction>{good, good, good, bad} << true;
    QTest::newRow("ka2, all") << "ka2" << QList<Reaction>(4, bad) << true;
    QTest::newRow("ka2, all but the last")
        << "ka2" << QList<Reaction>{bad, bad, bad, good} << false;
    QTest::newRow("ka2, second") << "ka2" << QList<Reaction>{good, bad, good, good} << false;
    QTest::newRow("ks, last") << "ks" << lastOfTwo << true;
    QTest::newRow("ks, all but the last") << "ks" << firstOfTwo << false;
}

/// Only the verdict on the last output volume counts.
void PanelExceptionsTest::outputVolumes()
{
    QFETCH(QString, model);
    QFETCH(QList<Reaction>, verdicts);
    QFETCH(bool, empty);
    ScriptedPlatform::onOpcode(0x03, verdicts);
    DebugLog log;
    const auto panel = PanelModels::make(model);
    const QStringList requests = ScriptedPlatform::takeRequests();
    QCOMPARE(requests.count(QString("3")), verdicts.size());
    if (!empty) {
        QVERIFY(!log.lines().contains("Failed to set output volume."));
        QCOMPARE(log.lines().constLast(), QString("已从配置文件加载控件状态"));
        QVERIFY(panel->layout() != nullptr);
        return;
    }
    QCOMPARE(log.take(), QStringList{"Failed to set output volume."});
    QCOMPARE(requests.size(), verdicts.size());
    QVERIFY(panel->children().isEmpty());
    QVERIFY(IniFile::read(model + ".ini").isEmpty());
}

void PanelExceptionsTest::micVolume_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("lines");
    const QString failed = "Failed to set mic volume.";
    QTest::newRow("ka1") << "ka1"
                         << "Dial/MicValue" << QStringList{failed};
    QTest::newRow("ka2, first") << "ka2"
                                << "Dial/Mic1Value" << QStringList{failed, saved};
    QTest::newRow("ka2, second") << "ka2"
                                 << "Dial/Mic2Value" << QStringList{failed, saved};
    QTest::newRow("ks") << "ks"
                        << "Dial/MicValue" << QStringList{failed};
}

void PanelExceptionsTest::micVolume()
{
    QFETCH(QString, model);
    QFETCH(QString, key);
    QFETCH(QStringList, lines);
    const auto panel = PanelModels::make(model);
    ScriptedPlatform::onOpcode(0x07, Reaction::throwStandard);
    DebugLog log;
    panel->findChild<Knob*>(key)->setValue(7);
    QCOMPARE(log.take(), lines);
    QCOMPARE(IniFile::read(model + ".ini").value(key), QString("7"));
}

void PanelExceptionsTest::instrumentKeepsItsCaption()
{
    const auto panel = PanelModels::make("ka1");
    auto* button = panel->findChild<Button*>("Button/MicInstrIsChecked");
    ScriptedPlatform::onOpcode(0x64, Reaction::throwStandard);
    DebugLog log;
    button->setOn(true);
    QCOMPARE(log.take(),
             (QStringList{"Mic Instr Button Clicked", "Failed to switch mic instruction."}));
    QCOMPARE(button->text(), QString("MIC"));
    QVERIFY(button->on);
    QCOMPARE(IniFile::read("ka1.ini").value("Button/MicInstrIsChecked"), QString("true"));
}

void PanelExceptionsTest::switches_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("opcode");
    QTest::addColumn<QStringList>("lines");
    const QString padFailed = "Failed to switch mic 20dB.";
    const QString phantomFailed = "Failed to switch mic 48V.";
    const QStringList pad{"Mic 20dB Button Clicked true", padFailed, saved};
    const QStringList phantom{"Mic 48V Button Clicked true", phantomFailed, saved};
    QTest::newRow("Button/Mic20dBIsChecked")
        << "ka1" << 0x5A << QStringList{"Mic 20dB Button Clicked", padFailed};
    QTest::newRow("Button/Mic48VIsChecked")
        << "ka1" << 0x5B << QStringList{"Mic 48V Button Clicked", phantomFailed};
    QTest::newRow("Button/Mic120dBIsChecked") << "ka2" << 0x5A << pad;
    QTest::newRow("Button/Mic148VIsChecked") << "ka2" << 0x5B << phantom;
    QTest::newRow("Button/Mic220dBIsChecked") << "ka2" << 0x5A << pad;
    QTest::newRow("Button/Mic248VIsChecked") << "ka2" << 0x5B << phantom;
}

void PanelExceptionsTest::switches()
{
    QFETCH(QString, model);
    QFETCH(int, opcode);
    QFETCH(QStringList, lines);
    const auto panel = PanelModels::make(model);
    ScriptedPlatform::onOpcode(static_cast<std::uint8_t>(opcode), Reaction::throwUnknown);
    DebugLog log;
    panel->findChild<Button*>(QTest::currentDataTag())->setOn(true);
    QCOMPARE(log.take(), lines);
    QCOMPARE(IniFile::read(model + ".ini").value(QTest::currentDataTag()), QString("true"));
}

void PanelExceptionsTest::order_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char* model, const char* key, const QStringList& lines) {
        QTest::addRow("%s %s", model, key) << model << key << lines;
    };
    const QString table = "request ffdc2040";
    const QString pad = "Mic 20dB Button Clicked";
    const QString phantom = "Mic 48V Button Clicked";
    const char* padDone = "Mic 20dB switched for channel 1.";
    const char* phantomDone = "Mic 48V switched for channel 1.";
    row("ka1", "Button/MicInstrIsChecked",
        {"Mic Instr Button Clicked", "request 64", "Mic instruction switched for channel 1."});
    row("ka1", "Button/Mic20dBIsChecked", {pad, "request 5a", padDone});
    row("ka1", "Button/Mic48VIsChecked", {phantom, "request 5b", phantomDone});
    row("ka1", "Button/MonitorMicIsChecked", {table, "Monitor Mic set to: 1"});
    row("ka1", "Button/HeadphoneMuteIsChecked",
        {"Headphone Mute Button Clicked: Mute ON", table, "Headphone volume set to: 0"});
    row("ka1", "Button/HeadphoneDimIsChecked",
        {"Headphone Dim Button Clicked: Dim ON", table, "Headphone volume set to: 0.0446684"});
    for (const char* mic : {"1", "2"}) {
        const QByteArray key = QByteArray("Button/Mic") + mic;
        row("ka2", key + "20dBIsChecked", {pad + " true", "request 5a", padDone, saved});
        row("ka2", key + "48VIsChecked", {phantom + " true", "request 5b", phantomDone, saved});
        row("ka2", QByteArray("Button/MonitorMic") + mic + "IsChecked",
            {table, "Monitor Mic set to: true", saved});
    }
    const auto changed = [&](const QString& name, int argument, int level) {
        return QStringList{QStringLiteral("%1 Knob value changed: %2").arg(name).arg(argument),
                           table, QStringLiteral("%1 volume set to: %2").arg(name).arg(level),
                           saved};
    };
    row("ka2", "Button/SpeakerMuteIsChecked",
        changed("Speaker", -80, -80) + QStringList{"Speaker Mute Button Clicked: Mute ON", saved});
    row("ka2", "Button/SpeakerDimIsChecked", changed("Speaker", -7, -27) + QStringList{saved});
    row("ka2", "Button/HeadphoneMuteIsChecked", changed("Headphone", -7, -80) + QStringList{saved});
    row("ka2", "Button/HeadphoneDimIsChecked", changed("Headphone", -7, -27) + QStringList{saved});
    row("ks", "Button/MonitorMicIsChecked", {table, "Monitor Mic set to: true"});
    row("ks", "Button/HeadphoneMuteIsChecked", {table, "Headphone Mute Button Clicked: Mute ON"});
    row("ks", "Button/HeadphoneDimIsChecked", {table, "Headphone Dim Button Clicked: Dim ON"});
}

/// What is logged before the device is asked, and what after it.
void PanelExceptionsTest::order()
{
    QFETCH(QString, model);
    QFETCH(QString, key);
    QFETCH(QStringList, lines);
    const auto panel = PanelModels::make(model);
    const auto knobs = panel->findChildren<Knob*>();
    for (Knob* const knob : knobs)
        knob->setValue(-7);
    ScriptedPlatform::narrate();
    DebugLog log;
    panel->findChild<Button*>(key)->setOn(true);
    QCOMPARE(log.take(), lines);
}

QUORVEL_TEST_MAIN(PanelExceptionsTest)
#include "panel_exceptions_test.moc"
