#include "settings/settings.h"
#include "support/background_lines.h"
#include "support/debug_log.h"
#include "support/ini_file.h"
#include "support/scripted_platform.h"
#include "support/stream_capture.h"
#include "support/test_main.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QTest>
#include <QTimer>

#include <iostream>
#include <memory>
#include <optional>

/// What no driver and no user brings about, so that no sequence of the oracle's has it: the phone
/// input chip, which fails only by an exception, and choices that the lists do not have.
class SettingsExceptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void timedSteps_data();
    void timedSteps();
    void unknownChoices_data();
    void unknownChoices();
    void unknownSampleRateAtAnArrival();
    void orderOfTheEnd();

private:
    QComboBox* combo(int index) const { return dialog->findChildren<QComboBox*>().value(index); }
    bool fireTimedStep();
    QStringList takeLines() { return withoutBackground(log->take()); }

    StreamCapture<wchar_t> output{std::wcout};
    StreamCapture<char> errors{std::cerr};
    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

/// A connected dialog that is not told to anybody yet.
void SettingsExceptionsTest::init()
{
    ScriptedPlatform::reset();
    IniFile::remove("setting.ini");
    log.emplace();
    dialog = std::make_unique<Settings>();
    QVERIFY(dialog->connectDevice());
    log->clear();
}

void SettingsExceptionsTest::cleanup()
{
    dialog.reset();
    log.reset();
}

/// The step that waits for its time comes now. False when none waits.
bool SettingsExceptionsTest::fireTimedStep()
{
    for (QTimer* timer : dialog->findChildren<QTimer*>()) {
        if (!timer->isSingleShot() || !timer->isActive())
            continue;
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
        return true;
    }
    return false;
}

void SettingsExceptionsTest::timedSteps_data()
{
    QTest::addColumn<bool>("arrival");
    QTest::addColumn<int>("throwing");
    QTest::addColumn<QString>("requests");
    QTest::addColumn<QString>("line");
    const QString cause = "，可能是驱动未正确加载或设备未连接。";
    const QString off = "关闭OTG芯片失败" + cause;
    const QString on = "开启OTG芯片失败" + cause;
    QTest::newRow("arrival") << true << 0 << "5e 5f ffdc207c"
                             << "设置初始化完成";
    QTest::newRow("arrival, off") << true << 0x5E << "5e" << off;
    QTest::newRow("arrival, on") << true << 0x5F << "5e 5f" << on;
    QTest::newRow("sample rate") << false << 0 << "5e 5f"
                                 << "设置采样频率完成";
    QTest::newRow("sample rate, off") << false << 0x5E << "5e" << off;
    QTest::newRow("sample rate, on") << false << 0x5F << "5e 5f" << on;
}

void SettingsExceptionsTest::timedSteps()
{
    QFETCH(const bool, arrival);
    QFETCH(const int, throwing);
    QFETCH(const QString, requests);
    QFETCH(const QString, line);
    ScriptedPlatform::throwOn(static_cast<std::uint8_t>(throwing));
    if (arrival)
        dialog->refreshFromDevice();
    else
        combo(2)->setCurrentText("48000");
    ScriptedPlatform::takeRequests();
    log->clear();
    while (fireTimedStep()) {
    }
    QCOMPARE(takeLines(), QStringList{line});
    QCOMPARE(ScriptedPlatform::takeRequests().join(u' '), requests);
    // No timer of a step stays.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(dialog->findChildren<QTimer*>().size(), 1);
}

void SettingsExceptionsTest::unknownChoices_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("requests");
    QTest::addColumn<QString>("line");
    QTest::newRow("buffer") << 0 << ""
                            << "未知的音频缓冲区大小选项： \"odd\"";
    QTest::newRow("sample rate") << 2 << "ffdc2078"
                                 << "未知的音频采样率选项： \"odd\"";
    QTest::newRow("slow mode") << 3 << "ffdc2078"
                               << "未知的USB慢速模式选项： \"odd\"";
}

void SettingsExceptionsTest::unknownChoices()
{
    QFETCH(const int, index);
    QFETCH(const QString, requests);
    QFETCH(const QString, line);
    combo(index)->addItem("odd");
    combo(index)->setCurrentText("odd");
    QVERIFY(!fireTimedStep());
    QCOMPARE(ScriptedPlatform::takeRequests().join(u' '), requests);
    QCOMPARE(takeLines(), QStringList{line});
    QVERIFY(IniFile::read("setting.ini").isEmpty());
}

/// The stored text is none of the list's, so the list keeps what it shows.
void SettingsExceptionsTest::unknownSampleRateAtAnArrival()
{
    IniFile::write("setting.ini", {{"Audio/SampleRate", "other"}, {"Audio/BufferSize", "48"}});
    {
        const QSignalBlocker blocker(combo(2));
        combo(2)->addItem("odd");
        combo(2)->setCurrentText("odd");
    }
    dialog->refreshFromDevice();
    QVERIFY(!fireTimedStep());
    QCOMPARE(ScriptedPlatform::takeRequests(), QStringList{"ffdc2020"});
    QCOMPARE(takeLines(), (QStringList{"已从配置文件加载控件状态", "加载控件状态完成",
                                       "当前音频采样率为： 0", "未知的音频采样率选项： \"odd\""}));
}

/// The device is let go before the dialog says so.
void SettingsExceptionsTest::orderOfTheEnd()
{
    ScriptedPlatform::narrate();
    dialog.reset();
    QCOMPARE(takeLines().mid(0, 2),
             (QStringList{"close", "Settings dialog closed and resources cleaned up."}));
}

QUORVEL_TEST_MAIN(SettingsExceptionsTest)
#include "settings_exceptions_test.moc"
