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
#include <memory>

using ScriptedPlatform::Reaction;

/// The phone input chip, which fails only by an exception, and how requests, waits and debug lines
/// follow each other.
class SettingsExceptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void afterRateChange_data();
    void afterRateChange();
    void afterRefresh_data();
    void afterRefresh();
    void orderOfARateChange();
    void orderOfARefresh();
    void orderOfALatencyChange();
    void orderOfABufferChange();
    void orderOfASlowModeChange();
    void orderOfTheEnd();

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

void SettingsExceptionsTest::orderOfARateChange()
{
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.findChildren<QComboBox*>().value(2)->setCurrentText("48000");
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{"request ffdc2078", "wait 100", "设置音频采样率为： \"48000\"",
                          "request ffdc2038", "request ffdc2088", "wait 100", "request ffdc207c",
                          "音频采样率设置已保存： \"48000\""}));
    QTest::qWait(600);
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{"request 5e", "request 5f", "设置采样频率完成"}));
}

void SettingsExceptionsTest::orderOfARefresh()
{
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    dialog.loadSettings();
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.refreshFromDevice();
    QCOMPARE(
        withoutBackground(log.take()),
        (QStringList{"已从配置文件加载控件状态", "加载控件状态完成", "request ffdc2020",
                     "当前音频采样率为： 0", "request ffdc2078", "停止音频成功，开始加载控件状态",
                     "wait 100", "request ffdc2038", "request ffdc2088"}));
    QTest::qWait(600);
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{"request 5e", "request 5f", "request ffdc207c", "设置初始化完成"}));
}

void SettingsExceptionsTest::orderOfALatencyChange()
{
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.findChildren<QComboBox*>().value(1)->setCurrentText("32");
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{"设置USB延迟大小为： 32 Frame", "request ffdc204c", "当前USB延迟大小： 0",
                          "request ffdc2078", "request ffdc2050", "request ffdc2080",
                          "USB延迟大小设置已保存： \"32\""}));
}

void SettingsExceptionsTest::orderOfABufferChange()
{
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.findChildren<QComboBox*>().value(0)->setCurrentText("64");
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{
                 "设置音频缓冲区大小为： 64 samples", "request ffdc2048", "Buffer size: 0",
                 "当前音频缓冲区大小： 0", "设置USB延迟大小为： 8 Frame", "request ffdc204c",
                 "当前USB延迟大小： 0", "request ffdc2078", "request ffdc2044", "request ffdc2080",
                 "音频缓冲区大小设置成功： 64 samples", "音频缓冲区大小设置已保存： \"64\""}));
}

void SettingsExceptionsTest::orderOfASlowModeChange()
{
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.findChildren<QComboBox*>().value(3)->setCurrentText("Enabled");
    QCOMPARE(withoutBackground(log.take()),
             (QStringList{"request ffdc2078", "request ffdc2090", "request ffdc2080",
                          "USB慢速模式设置已保存： \"Enabled\""}));
}

/// The device is let go before the dialog says so.
void SettingsExceptionsTest::orderOfTheEnd()
{
    auto dialog = std::make_unique<Settings>();
    QVERIFY(dialog->connectDevice());
    ScriptedPlatform::narrate();
    DebugLog log;
    dialog.reset();
    QCOMPARE(withoutBackground(log.take()).mid(0, 2),
             (QStringList{"close", "Settings dialog closed and resources cleaned up."}));
}

QUORVEL_TEST_MAIN(SettingsExceptionsTest)
#include "settings_exceptions_test.moc"
