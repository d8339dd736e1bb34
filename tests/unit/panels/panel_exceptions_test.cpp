#include "controls/button.h"
#include "controls/knob.h"
#include "panels/ka1.h"
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
    void lastOutputVolumeFails();
    void firstOutputVolumeAloneDoesNotCount();
    void micVolume();
    void instrumentKeepsItsCaption();
    void switches_data();
    void switches();

private:
    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
};

void PanelExceptionsTest::init()
{
    ScriptedPlatform::reset();
    IniFile::remove("ka1.ini");
}

void PanelExceptionsTest::lastOutputVolumeFails()
{
    ScriptedPlatform::onOpcode(0x03, Reaction::throwStandard);
    DebugLog log;
    const ka1 panel(nullptr);
    QCOMPARE(log.take(), QStringList{"Failed to set output volume."});
    QVERIFY(panel.children().isEmpty());
    QCOMPARE(ScriptedPlatform::takeRequests(), (QStringList{"3", "3"}));
}

void PanelExceptionsTest::firstOutputVolumeAloneDoesNotCount()
{
    ScriptedPlatform::onOpcode(0x03, Reaction::throwOnceStandard);
    DebugLog log;
    const ka1 panel(nullptr);
    QVERIFY(!log.lines().contains("Failed to set output volume."));
    QCOMPARE(log.lines().constLast(), QString("已从配置文件加载控件状态"));
}

void PanelExceptionsTest::micVolume()
{
    const ka1 panel(nullptr);
    ScriptedPlatform::onOpcode(0x07, Reaction::throwStandard);
    DebugLog log;
    panel.findChild<Knob*>("Dial/MicValue")->setValue(7);
    QCOMPARE(log.take(), QStringList{"Failed to set mic volume."});
    QCOMPARE(IniFile::read("ka1.ini").value("Dial/MicValue"), QString("7"));
}

void PanelExceptionsTest::instrumentKeepsItsCaption()
{
    const ka1 panel(nullptr);
    auto* button = panel.findChild<Button*>("Button/MicInstrIsChecked");
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
    QTest::addColumn<int>("opcode");
    QTest::addColumn<QString>("clicked");
    QTest::addColumn<QString>("failed");
    QTest::newRow("Button/Mic20dBIsChecked") << 0x5A << "Mic 20dB Button Clicked"
                                             << "Failed to switch mic 20dB.";
    QTest::newRow("Button/Mic48VIsChecked") << 0x5B << "Mic 48V Button Clicked"
                                            << "Failed to switch mic 48V.";
}

void PanelExceptionsTest::switches()
{
    QFETCH(int, opcode);
    QFETCH(QString, clicked);
    QFETCH(QString, failed);
    const ka1 panel(nullptr);
    ScriptedPlatform::onOpcode(static_cast<std::uint8_t>(opcode), Reaction::throwUnknown);
    DebugLog log;
    panel.findChild<Button*>(QTest::currentDataTag())->setOn(true);
    QCOMPARE(log.take(), (QStringList{clicked, failed}));
    QCOMPARE(IniFile::read("ka1.ini").value(QTest::currentDataTag()), QString("true"));
}

QUORVEL_TEST_MAIN(PanelExceptionsTest)
#include "panel_exceptions_test.moc"
