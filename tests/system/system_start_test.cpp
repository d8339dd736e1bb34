#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/wait_until.h"

#include <algorithm>

namespace {

/// For each read of the levels, which a connected panel's timers leave at 4 to 8; a frame rate is
/// far above.
constexpr qint64 mostWakeUps = 20;

} // namespace

/// The start with nothing there, what is found later, the language, and a further copy.
class SystemStart : public SystemTest
{
    Q_OBJECT

private slots:
    void findsWhatIsPluggedInLater();
    void speaksTheLanguageOfTheDesktop();

private:
    /// How often the levels have been read since the trace was cleared; 0 without an answer.
    qint64 reads();
};

qint64 SystemStart::reads()
{
    constexpr quint32 readLevels = 0xFFDC2074;
    const auto requests = simulator().requests().value_or(QList<TracedRequest>());
    return std::ranges::count(requests, readLevels, &TracedRequest::code);
}

void SystemStart::findsWhatIsPluggedInLater()
{
    QVERIFY(session().startPanel());
    QVERIFY(waitForLooks(1));
    QVERIFY(session().startSimulator());
    QVERIFY(simulator().plug(QStringLiteral("7")));
    QVERIFY(panel().waitForLine(QStringLiteral("Unknown device PID: 7")));
    QVERIFY(session().openMainWindow().has_value());
    QVERIFY(Desktop::window(QStringLiteral("^Quorvel Driver$")).has_value());

    QVERIFY(simulator().plug(QStringLiteral("ka1")));
    QVERIFY(Desktop::waitForWindow(QStringLiteral("^Quorvel KA1 - FW: 1\\.0\\.7$")).has_value());
    QVERIFY(panel().waitForLine(QStringLiteral("设置初始化完成")));

    const auto copy = session().startCopy();
    QCOMPARE(copy->waitForExit().value_or(-1), 0);
    QCOMPARE(Desktop::trayIcons().value_or(QList<QRect>()).size(), 1);

    QVERIFY(simulator().moveLevels());
    // The reads are counted around the wake-ups, however long the looks take.
    QVERIFY(simulator().clearTrace());
    const auto before = ProcessFigures::of(panel().processId());
    QVERIFY(waitUntil([this] { return reads() >= 4; }));
    const auto after = ProcessFigures::of(panel().processId());
    const qint64 readCount = reads();
    QVERIFY(before && after);
    const qint64 wakeUps = after->wakeUps - before->wakeUps;
    qInfo("%lld wake-ups in %lld reads, window shown and levels moving", wakeUps, readCount);
    // Under Wine each call that waits for its server counts as well.
    QVERIFY2(Target::isWindows() || (wakeUps > 0 && wakeUps <= mostWakeUps * readCount),
             qPrintable(QString::number(wakeUps)));
}

void SystemStart::speaksTheLanguageOfTheDesktop()
{
    // Wine takes its language from the locale in which it writes.
    const bool chinese = !Target::isWindows();
    if (chinese)
        folder().setVariable(QStringLiteral("LC_ALL"), QStringLiteral("zh_CN.UTF-8"));
    QVERIFY(session().startPanel());
    const QString name = QLatin1String(chinese ? "zh_CN" : "hi_IN");
    const QString file =
        QLatin1String(chinese ? "/QuorvelDriver_zh_CN.qm\"" : "/QuorvelDriver_en_US.qm\"");
    const QStringList lines = panel().debugLines();
    const auto first = lines.indexOf(QStringLiteral("系统返回的语言代码： \"%1\"").arg(name));
    QVERIFY(first >= 0);
    QVERIFY2(lines.value(first + 2).startsWith(QStringLiteral("成功加载翻译文件： ")) &&
                 lines.value(first + 2).endsWith(file),
             qPrintable(lines.join(u'\n')));
    QCOMPARE(lines.value(first + 3), QStringLiteral("Settings dialog created."));
}

QUORVEL_TEST_MAIN(SystemStart)
#include "system_start_test.moc"
