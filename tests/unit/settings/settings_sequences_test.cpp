#include "settings_fixture.h"
#include "storage/settings_file.h"
#include "support/background_lines.h"
#include "support/test_main.h"
#include "support/trace_text.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QSignalBlocker>
#include <QTest>
#include <QTimer>

using namespace TraceText;

namespace {

constexpr std::uint32_t readSampleRate = 0xFFDC2020;
constexpr std::uint32_t setSampleRate = 0xFFDC2038;
constexpr std::uint32_t setBufferSize = 0xFFDC2044;
constexpr std::uint32_t readBufferSize = 0xFFDC2048;
constexpr std::uint32_t readLatency = 0xFFDC204C;
constexpr std::uint32_t setLatency = 0xFFDC2050;
constexpr std::uint32_t stopAudio = 0xFFDC2078;
constexpr std::uint32_t initAudio = 0xFFDC207C;
constexpr std::uint32_t startAudio = 0xFFDC2080;
constexpr std::uint32_t setWdmChannels = 0xFFDC2088;
constexpr std::uint32_t enableSlowMode = 0xFFDC2090;
constexpr std::uint32_t disableSlowMode = 0xFFDC2094;

} // namespace

/// Each choice without a failure: what is called, logged and saved, in order.
class SettingsSequencesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.reset(); }
    void bufferSize();
    void bufferSizeAlreadySet();
    void bufferSizeLowersTheLatency();
    void bufferSizeNeverRaisesTheLatency();
    void latency();
    void latencyAlreadySet();
    void latencyReadFails();
    void slowMode();
    void sampleRate();
    void sampleRateTwiceInterleaves();
    void refresh();
    void refreshAppliesChangesFirst();
    void refreshWithAnUnknownSampleRate();
    void timedSteps();
    void waits();
    void timersAreDeleted();
    void closedDeviceFailsSoftly();

private:
    SettingsFixture fixture;
};

void SettingsSequencesTest::bufferSize()
{
    fixture.connect(44100, 192, 8);
    fixture.bufferSize()->setCurrentText("256");
    QCOMPARE(
        fixture.takeTrace(),
        (QStringList{request(1, readBufferSize, 4), request(1, readLatency, 4),
                     request(1, stopAudio), set32(1, setBufferSize, 256), request(1, startAudio)}));
    QCOMPARE(fixture.takeLog(),
             (QStringList{"设置音频缓冲区大小为： 256 samples", "Buffer size: 192",
                          "当前音频缓冲区大小： 192", "设置USB延迟大小为： 24 Frame",
                          "当前USB延迟大小： 8", "音频缓冲区大小设置成功： 256 samples",
                          "音频缓冲区大小设置已保存： \"256\""}));
    QCOMPARE(IniFile::read("setting.ini"), (QMap<QString, QString>{{"Audio/BufferSize", "256"}}));
}

void SettingsSequencesTest::bufferSizeAlreadySet()
{
    fixture.connect(44100, 192, 24);
    fixture.bufferSize()->setCurrentText("192");
    QCOMPARE(fixture.takeTrace(), QStringList{request(1, readBufferSize, 4)});
    QCOMPARE(fixture.takeLog(), (QStringList{"设置音频缓冲区大小为： 192 samples",
                                             "Buffer size: 192", "当前音频缓冲区大小： 192"}));
    QVERIFY(IniFile::read("setting.ini").isEmpty());
}

void SettingsSequencesTest::bufferSizeLowersTheLatency()
{
    fixture.connect(44100, 192, 24);
    fixture.latency()->setCurrentText("24");
    fixture.takeTrace();
    fixture.takeLog();
    fixture.bufferSize()->setCurrentText("64");
    QCOMPARE(fixture.takeTrace(),
             (QStringList{request(1, readBufferSize, 4), request(1, readLatency, 4),
                          request(1, readLatency, 4), request(1, stopAudio),
                          set32(1, setLatency, 8), request(1, startAudio), request(1, stopAudio),
                          set32(1, setBufferSize, 64), request(1, startAudio)}));
    QCOMPARE(
        fixture.takeLog(),
        (QStringList{"设置音频缓冲区大小为： 64 samples", "Buffer size: 192",
                     "当前音频缓冲区大小： 192", "设置USB延迟大小为： 8 Frame",
                     "当前USB延迟大小： 24", "设置USB延迟大小为： 8 Frame", "当前USB延迟大小： 24",
                     "USB延迟大小设置已保存： \"8\"", "音频缓冲区大小设置成功： 64 samples",
                     "音频缓冲区大小设置已保存： \"64\""}));
    QCOMPARE(fixture.latency()->currentText(), QString("8"));
    QCOMPARE(fixture.stored("USB/LatencySize"), QString("8"));
    QCOMPARE(fixture.stored("Audio/BufferSize"), QString("64"));
}

void SettingsSequencesTest::bufferSizeNeverRaisesTheLatency()
{
    fixture.connect(44100, 192, 8);
    fixture.bufferSize()->setCurrentText("1024");
    QCOMPARE(fixture.latency()->currentText(), QString("8"));
    QCOMPARE(fixture.simulated.control().state().engine.usbLatency, 8U);
    QCOMPARE(fixture.stored("Audio/BufferSize"), QString("1024"));
    QCOMPARE(fixture.stored("USB/LatencySize"), QString());
}

void SettingsSequencesTest::latency()
{
    fixture.connect(44100, 192, 8);
    fixture.latency()->setCurrentText("32");
    QCOMPARE(fixture.takeTrace(), (QStringList{request(1, readLatency, 4), request(1, stopAudio),
                                               set32(1, setLatency, 32), request(1, startAudio)}));
    QCOMPARE(fixture.takeLog(), (QStringList{"设置USB延迟大小为： 32 Frame", "当前USB延迟大小： 8",
                                             "USB延迟大小设置已保存： \"32\""}));
    QCOMPARE(IniFile::read("setting.ini"), (QMap<QString, QString>{{"USB/LatencySize", "32"}}));
}

void SettingsSequencesTest::latencyAlreadySet()
{
    fixture.connect(44100, 192, 16);
    fixture.latency()->setCurrentText("16");
    QCOMPARE(fixture.takeTrace(), QStringList{request(1, readLatency, 4)});
    QCOMPARE(fixture.takeLog(),
             (QStringList{"设置USB延迟大小为： 16 Frame", "当前USB延迟大小： 16"}));
    QVERIFY(IniFile::read("setting.ini").isEmpty());
}

void SettingsSequencesTest::latencyReadFails()
{
    fixture.connect(44100, 192, 16);
    fixture.simulated.control().fail(readLatency, 1, 31);
    fixture.latency()->setCurrentText("16");
    QCOMPARE(fixture.takeLog(), (QStringList{"设置USB延迟大小为： 16 Frame", "当前USB延迟大小： 0",
                                             "USB延迟大小设置已保存： \"16\""}));
}

void SettingsSequencesTest::slowMode()
{
    fixture.connect(44100, 192, 8);
    fixture.slowMode()->setCurrentText("Enabled");
    QCOMPARE(fixture.takeTrace(), (QStringList{request(1, stopAudio), request(1, enableSlowMode),
                                               request(1, startAudio)}));
    QCOMPARE(fixture.takeLog(), QStringList{"USB慢速模式设置已保存： \"Enabled\""});
    QCOMPARE(fixture.stored("USB/SlowMode"), QString("Enabled"));
    fixture.slowMode()->setCurrentText("Disabled");
    QCOMPARE(fixture.takeTrace(), (QStringList{request(1, stopAudio), request(1, disableSlowMode),
                                               request(1, startAudio)}));
    QCOMPARE(fixture.takeLog(), QStringList{"USB慢速模式设置已保存： \"Disabled\""});
    QCOMPARE(fixture.stored("USB/SlowMode"), QString("Disabled"));
}

void SettingsSequencesTest::sampleRate()
{
    fixture.connect(44100, 192, 8);
    QElapsedTimer clock;
    clock.start();
    fixture.sampleRate()->setCurrentText("48000");
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(fixture.stored("Audio/SampleRate"), QString("48000"));
    QStringList trace = fixture.takeTrace();
    QCOMPARE(trace, (QStringList{request(1, stopAudio), set32(1, setSampleRate, 48000),
                                 set32(1, setWdmChannels, 4), request(1, initAudio)}));
    QStringList log = fixture.takeLog();
    QCOMPARE(log,
             (QStringList{"设置音频采样率为： \"48000\"", "音频采样率设置已保存： \"48000\""}));
    QTRY_COMPARE_WITH_TIMEOUT((trace = trace + fixture.takeTrace()).size(), 6, 2000);
    QVERIFY(clock.elapsed() >= 200 + 350);
    QCOMPARE(trace.mid(4), (QStringList{command(1, "01 5E"), command(1, "01 5F")}));
    QTRY_VERIFY_WITH_TIMEOUT(!withoutBackground(fixture.log().lines()).isEmpty(), 500);
    QCOMPARE(fixture.takeLog(), QStringList{"设置采样频率完成"});
}

void SettingsSequencesTest::sampleRateTwiceInterleaves()
{
    fixture.connect(44100, 192, 8);
    fixture.sampleRate()->setCurrentText("48000");
    fixture.sampleRate()->setCurrentText("44100");
    fixture.takeTrace();
    QStringList trace;
    QTRY_COMPARE_WITH_TIMEOUT((trace = trace + fixture.takeTrace()).size(), 4, 3000);
    QCOMPARE(trace.count(command(1, "01 5E")), 2);
    QCOMPARE(trace.count(command(1, "01 5F")), 2);
    QCOMPARE(fixture.takeLog().count("设置采样频率完成"), 2);
    QCOMPARE(fixture.stored("Audio/SampleRate"), QString("44100"));
}

void SettingsSequencesTest::refresh()
{
    fixture.connect(48000, 192, 24);
    fixture.dialog->loadSettings();
    fixture.takeTrace();
    fixture.takeLog();
    QElapsedTimer clock;
    clock.start();
    fixture.dialog->refreshFromDevice();
    QVERIFY(clock.elapsed() >= 100);
    QStringList trace = fixture.takeTrace();
    QCOMPARE(trace, (QStringList{request(1, readSampleRate, 4), request(1, stopAudio),
                                 set32(1, setSampleRate, 44100), set32(1, setWdmChannels, 4)}));
    QStringList log = fixture.takeLog();
    QTRY_COMPARE_WITH_TIMEOUT((trace = trace + fixture.takeTrace()).size(), 7, 2000);
    QVERIFY(clock.elapsed() >= 100 + 350);
    QCOMPARE(trace.mid(4),
             (QStringList{command(1, "01 5E"), command(1, "01 5F"), request(1, initAudio)}));
    log += fixture.takeLog();
    QCOMPARE(log, (QStringList{"已从配置文件加载控件状态", "加载控件状态完成",
                               "当前音频采样率为： 48000", "停止音频成功，开始加载控件状态",
                               "设置初始化完成"}));
}

void SettingsSequencesTest::refreshAppliesChangesFirst()
{
    IniFile::write("setting.ini", {{"USB/SlowMode", "Enabled"}, {"Audio/BufferSize", "48"}});
    fixture.connect(44100, 192, 8);
    fixture.dialog->refreshFromDevice();
    const QStringList trace = fixture.takeTrace();
    QCOMPARE(trace.mid(0, 3), (QStringList{request(1, stopAudio), request(1, enableSlowMode),
                                           request(1, startAudio)}));
    QCOMPARE(trace.mid(3, 1), QStringList{request(1, readSampleRate, 4)});
    QCOMPARE(fixture.takeLog().mid(0, 3),
             (QStringList{"USB慢速模式设置已保存： \"Enabled\"", "已从配置文件加载控件状态",
                          "加载控件状态完成"}));
}

void SettingsSequencesTest::refreshWithAnUnknownSampleRate()
{
    fixture.connect(48000, 192, 8);
    {
        const QSignalBlocker blocker(fixture.sampleRate());
        fixture.sampleRate()->addItem("odd");
        fixture.sampleRate()->setCurrentText("odd");
    }
    IniFile::write("setting.ini", {{"Audio/SampleRate", "other"}, {"Audio/BufferSize", "48"}});
    SettingsFile::open("setting.ini");
    fixture.dialog->refreshFromDevice();
    QCOMPARE(fixture.takeTrace(), QStringList{request(1, readSampleRate, 4)});
    QCOMPARE(fixture.takeLog(),
             (QStringList{"已从配置文件加载控件状态", "加载控件状态完成",
                          "当前音频采样率为： 48000", "未知的音频采样率选项： \"odd\""}));
}

/// The timed steps' timers: one at a time for each chain, 200 ms each.
void SettingsSequencesTest::timedSteps()
{
    const auto steps = [this] {
        QList<int> intervals;
        for (const auto* timer : fixture.dialog->findChildren<const QTimer*>()) {
            if (timer->isSingleShot() && timer->isActive())
                intervals.append(timer->interval());
        }
        return intervals;
    };
    for (const bool afterRefresh : {true, false}) {
        fixture.reset();
        fixture.connect(44100, 192, 8);
        QCOMPARE(steps(), QList<int>());
        if (afterRefresh)
            fixture.dialog->refreshFromDevice();
        else
            fixture.sampleRate()->setCurrentText("48000");
        QCOMPARE(steps(), QList<int>{200});
        fixture.takeTrace();
        QStringList trace;
        QTRY_VERIFY(!(trace += fixture.takeTrace()).isEmpty());
        QCOMPARE(trace, QStringList{command(1, "01 5E")});
        QCOMPARE(steps(), QList<int>{200});
        QTRY_VERIFY((trace += fixture.takeTrace()).contains(command(1, "01 5F")));
        QCOMPARE(steps(), QList<int>());
    }
}

/// The engine has a tenth of a second between its stop and the new rate, and again before it is
/// initialised.
void SettingsSequencesTest::waits()
{
    const auto gaps = [this] {
        QStringList found;
        std::uint32_t before = 0;
        for (const SimulatedRequest& each : fixture.simulated.control().takeTrace()) {
            if (before != 0 && each.timeMs - before >= 99)
                found.append(QString::number(each.code & 0xFFFFU, 16));
            before = each.timeMs;
        }
        return found.join(u' ');
    };
    fixture.connect(44100, 192, 8);
    fixture.sampleRate()->setCurrentText("48000");
    QCOMPARE(gaps(), QString("2038 207c"));
    fixture.connect(48000, 192, 8);
    fixture.dialog->loadSettings();
    fixture.simulated.control().clearTrace();
    fixture.dialog->refreshFromDevice();
    QCOMPARE(gaps(), QString("2038"));
}

void SettingsSequencesTest::timersAreDeleted()
{
    fixture.connect(44100, 192, 8);
    const auto timers = [this] { return fixture.dialog->findChildren<QTimer*>().size(); };
    const qsizetype before = timers();
    for (const char* rate : {"48000", "44100", "48000"})
        fixture.sampleRate()->setCurrentText(rate);
    QCOMPARE(timers(), before + 3);
    QTRY_COMPARE_WITH_TIMEOUT(timers(), before, 3000);
}

void SettingsSequencesTest::closedDeviceFailsSoftly()
{
    fixture.create();
    fixture.log().clear();
    fixture.latency()->setCurrentText("16");
    QCOMPARE(fixture.takeLog(), (QStringList{"设置USB延迟大小为： 16 Frame", "当前USB延迟大小： 0",
                                             "停止音频失败，可能是驱动未正确加载或设备未连接。"}));
    QCOMPARE(fixture.latency()->currentText(), QString("16"));
    QVERIFY(IniFile::read("setting.ini").isEmpty());
    fixture.dialog->refreshFromDevice();
    QCOMPARE(fixture.takeLog().constLast(),
             QString("停止音频失败，可能是驱动未正确加载或设备未连接。"));
}

QUORVEL_TEST_MAIN(SettingsSequencesTest)
#include "settings_sequences_test.moc"
