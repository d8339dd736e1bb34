#include "settings/settings.h"
#include "support/background_lines.h"
#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/scripted_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QComboBox>
#include <QTest>

#include <iostream>

using ScriptedPlatform::Reaction;

/// The phone input chip fails only by an exception.
class SettingsExceptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void afterRateChange_data();
    void afterRateChange();
    void afterRefresh_data();
    void afterRefresh();

private:
    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
};

namespace {

constexpr std::uint8_t otgOff = 0x5E;
constexpr std::uint8_t otgOn = 0x5F;

void addRows(const char* afterOff, const char* afterOn)
{
    QTest::addColumn<int>("opcode");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("called");
    QTest::newRow("off") << int{otgOff} << "关闭OTG芯片失败，可能是驱动未正确加载或设备未连接。"
                         << afterOff;
    QTest::newRow("on") << int{otgOn} << "开启OTG芯片失败，可能是驱动未正确加载或设备未连接。"
                        << afterOn;
}

} // namespace

void SettingsExceptionsTest::init()
{
    ScriptedPlatform::reset();
    IniFile::remove("setting.ini");
}

void SettingsExceptionsTest::afterRateChange_data()
{
    addRows("5e", "5e 5f");
}

void SettingsExceptionsTest::afterRateChange()
{
    QFETCH(int, opcode);
    QFETCH(QString, text);
    QFETCH(QString, called);
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::onOpcode(static_cast<std::uint8_t>(opcode), Reaction::throwStandard);
    dialog.findChildren<QComboBox*>().value(2)->setCurrentText("48000");
    QCOMPARE(IniFile::read("setting.ini").value("Audio/SampleRate"), QString("48000"));
    ScriptedPlatform::takeRequests();
    DebugLog log;
    QTest::qWait(600);
    QCOMPARE(withoutBackground(log.take()), QStringList{text});
    QCOMPARE(ScriptedPlatform::takeRequests().join(u' '), called);
}

void SettingsExceptionsTest::afterRefresh_data()
{
    addRows("5e", "5e 5f");
}

void SettingsExceptionsTest::afterRefresh()
{
    QFETCH(int, opcode);
    QFETCH(QString, text);
    QFETCH(QString, called);
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::onOpcode(static_cast<std::uint8_t>(opcode), Reaction::throwStandard);
    dialog.refreshFromDevice();
    ScriptedPlatform::takeRequests();
    DebugLog log;
    QTest::qWait(600);
    QCOMPARE(withoutBackground(log.take()), QStringList{text});
    QCOMPARE(ScriptedPlatform::takeRequests().join(u' '), called);
}

QUORVEL_TEST_MAIN(SettingsExceptionsTest)
#include "settings_exceptions_test.moc"
