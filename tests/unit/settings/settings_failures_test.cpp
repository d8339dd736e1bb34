#include "settings_fixture.h"
#include "support/test_main.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QTest>

#include <functional>

using Change = std::function<void(SettingsFixture&)>;
Q_DECLARE_METATYPE(Change)

/// A failure at each step of each sequence: the log line that ends it, the calls that reached the
/// driver, and that nothing was saved or undone.
class SettingsFailuresTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void steps_data();
    void steps();
    void nestedLatency_data();
    void nestedLatency();
    void unknownChoices_data();
    void unknownChoices();

private:
    SettingsFixture fixture;
};

namespace {

const QString cause = QStringLiteral("，可能是驱动未正确加载或设备未连接。");

/// The control codes of the trace.
QStringList codes(const QStringList& trace)
{
    QStringList result;
    for (const QString& line : trace)
        result.append(line.section(u' ', 1, 1).mid(4));
    return result;
}

} // namespace

void SettingsFailuresTest::init()
{
    fixture.reset();
}

void SettingsFailuresTest::steps_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("failingCode");
    QTest::addColumn<int>("skip");
    QTest::addColumn<QString>("called");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, const Change& change, int code, int skip,
                        const char* called, const char* text) {
        QTest::newRow(name) << change << code << skip << QString::fromLatin1(called)
                            << QString::fromUtf8(text);
    };
    const Change buffer = [](SettingsFixture& f) { f.bufferSize()->setCurrentText("256"); };
    row("buffer: read size", buffer, 0x2048, 0, "2048", "获取音频缓冲区大小失败");
    row("buffer: read latency", buffer, 0x204C, 0, "2048 204C", "获取USB延迟大小失败");
    row("buffer: stop", buffer, 0x2078, 0, "2048 204C 2078", "停止音频失败");
    row("buffer: set", buffer, 0x2044, 0, "2048 204C 2078 2044", "设置音频缓冲区大小失败");
    row("buffer: start", buffer, 0x2080, 0, "2048 204C 2078 2044 2080", "重新启动音频失败");

    const Change latency = [](SettingsFixture& f) { f.latency()->setCurrentText("32"); };
    row("latency: stop", latency, 0x2078, 0, "204C 2078", "停止音频失败");
    row("latency: set", latency, 0x2050, 0, "204C 2078 2050", "设置USB延迟大小失败");
    row("latency: start", latency, 0x2080, 0, "204C 2078 2050 2080", "重新启动音频失败");

    const Change slow = [](SettingsFixture& f) { f.slowMode()->setCurrentText("Enabled"); };
    row("slow mode: stop", slow, 0x2078, 0, "2078", "停止音频失败");
    row("slow mode: enable", slow, 0x2090, 0, "2078 2090", "设置USB慢速模式失败");
    const Change fast = [](SettingsFixture& f) {
        const QSignalBlocker blocker(f.slowMode());
        f.slowMode()->setCurrentText("Enabled");
        f.slowMode()->blockSignals(false);
        f.slowMode()->setCurrentText("Disabled");
    };
    row("slow mode: disable", fast, 0x2094, 0, "2078 2094", "设置USB慢速模式失败");
    row("slow mode: start", slow, 0x2080, 0, "2078 2090 2080", "重新启动音频失败");

    const Change rate = [](SettingsFixture& f) { f.sampleRate()->setCurrentText("48000"); };
    row("rate: stop", rate, 0x2078, 0, "2078", "停止音频失败");
    row("rate: set", rate, 0x2038, 0, "2078 2038", "设置音频采样率失败");
    row("rate: WDM channels", rate, 0x2088, 0, "2078 2038 2088", "设置WDM通道数量失败");
    row("rate: init", rate, 0x207C, 0, "2078 2038 2088 207C", "重新启动音频失败");

    // Opens with the choices that the dialog already shows, so that loading changes nothing but
    // the buffer, which the device already has.
    const Change refresh = [](SettingsFixture& f) { f.dialog->refreshFromDevice(); };
    row("refresh: stop", refresh, 0x2078, 0, "2048 2020 2078", "停止音频失败");
    row("refresh: set rate", refresh, 0x2038, 0, "2048 2020 2078 2038", "设置音频采样率失败");
    row("refresh: WDM channels", refresh, 0x2088, 0, "2048 2020 2078 2038 2088",
        "设置WDM通道数量失败");
    row("refresh: init", refresh, 0x207C, 0, "2048 2020 2078 2038 2088 209C 209C 207C",
        "初始化音频失败");
}

void SettingsFailuresTest::steps()
{
    QFETCH(Change, change);
    QFETCH(int, failingCode);
    QFETCH(int, skip);
    QFETCH(QString, called);
    QFETCH(QString, text);
    fixture.connect(44100, 192, 8);
    fixture.simulated.control().fail(0xFFDC0000U | static_cast<std::uint32_t>(failingCode),
                                     SimulatorControl::always, 31,
                                     static_cast<std::uint32_t>(skip));
    change(fixture);
    QTest::qWait(500);
    QCOMPARE(codes(fixture.takeTrace()).join(u' '), called);
    QCOMPARE(fixture.takeLog().constLast(), text + cause);
    QVERIFY(IniFile::read("setting.ini").isEmpty());
}

void SettingsFailuresTest::nestedLatency_data()
{
    QTest::addColumn<int>("failingCode");
    QTest::addColumn<QString>("called");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, int code, const char* called, const char* text) {
        QTest::newRow(name) << code << QString::fromLatin1(called) << QString::fromUtf8(text);
    };
    row("stop", 0x2078, "2048 204C 204C 2078 2078 2044 2080", "停止音频失败");
    row("set", 0x2050, "2048 204C 204C 2078 2050 2078 2044 2080", "设置USB延迟大小失败");
    row("start", 0x2080, "2048 204C 204C 2078 2050 2080 2078 2044 2080", "重新启动音频失败");
}

/// The latency that a small buffer needs is a change of its own: its failure does not keep the
/// buffer from being set and saved.
void SettingsFailuresTest::nestedLatency()
{
    QFETCH(int, failingCode);
    QFETCH(QString, called);
    QFETCH(QString, text);
    fixture.connect(44100, 192, 24);
    {
        const QSignalBlocker blocker(fixture.latency());
        fixture.latency()->setCurrentText("24");
    }
    fixture.simulated.control().fail(0xFFDC0000U | static_cast<std::uint32_t>(failingCode), 1, 31);
    fixture.bufferSize()->setCurrentText("64");
    QCOMPARE(codes(fixture.takeTrace()).join(u' '), called);
    const QStringList log = fixture.takeLog();
    QCOMPARE(log.count(text + cause), 1);
    QCOMPARE(log.constLast(), QString("音频缓冲区大小设置已保存： \"64\""));
    QCOMPARE(fixture.latency()->currentText(), QString("8"));
    QCOMPARE(IniFile::read("setting.ini"), (QMap<QString, QString>{{"Audio/BufferSize", "64"}}));
}

void SettingsFailuresTest::unknownChoices_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("called");
    QTest::addColumn<QString>("line");
    QTest::newRow("buffer") << 0 << ""
                            << "未知的音频缓冲区大小选项： \"odd\"";
    QTest::newRow("rate") << 2 << "2078"
                          << "未知的音频采样率选项： \"odd\"";
    QTest::newRow("slow mode") << 3 << "2078"
                               << "未知的USB慢速模式选项： \"odd\"";
}

/// The dialog has no such choices: a text beyond them ends the sequence all the same.
void SettingsFailuresTest::unknownChoices()
{
    QFETCH(int, index);
    QFETCH(QString, called);
    QFETCH(QString, line);
    fixture.connect(44100, 192, 8);
    auto* combo = fixture.dialog->findChildren<QComboBox*>().value(index);
    combo->addItem("odd");
    combo->setCurrentText("odd");
    QTest::qWait(500);
    QCOMPARE(codes(fixture.takeTrace()).join(u' '), called);
    QCOMPARE(fixture.takeLog(), QStringList{line});
    QVERIFY(IniFile::read("setting.ini").isEmpty());
}

QUORVEL_TEST_MAIN(SettingsFailuresTest)
#include "settings_failures_test.moc"
