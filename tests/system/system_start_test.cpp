#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QFile>

namespace {

/// In the time of so many reads of the levels, which a connected panel's timers leave at 18
/// wake-ups; a frame rate is far above.
constexpr int reads = 4;
constexpr qint64 mostWakeUps = 80;

} // namespace

/// The start with nothing there, what is found later, the language, and a further copy.
class SystemStart : public SystemTest
{
    Q_OBJECT

private slots:
    void findsWhatIsPluggedInLater();
    void speaksTheLanguageOfTheDesktop();

private:
    bool waitForReads();
};

bool SystemStart::waitForReads()
{
    constexpr quint32 readLevels = 0xFFDC2074;
    return simulator().clearTrace() && waitUntil([this] {
               const auto requests = simulator().requests();
               return requests && std::count_if(requests->begin(), requests->end(),
                                                [](const TracedRequest& request) {
                                                    return request.code == readLevels;
                                                }) >= reads;
           });
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
    const auto before = ProcessFigures::of(panel().processId());
    QVERIFY(waitForReads());
    const auto after = ProcessFigures::of(panel().processId());
    QVERIFY(before && after);
    const qint64 wakeUps = after->wakeUps - before->wakeUps;
    qInfo("%lld wake-ups, window shown and levels moving", wakeUps);
    // Under Wine each call that waits for its server counts as well.
    QVERIFY2(Target::isWindows() || (wakeUps > 0 && wakeUps <= mostWakeUps),
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
