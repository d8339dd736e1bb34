#include "support/test_main.h"
#include "system/desktop/system_test.h"

#include <QDir>

namespace {

const QString english = QStringLiteral("QuorvelDriver_en_US.qm");
const QString chinese = QStringLiteral("QuorvelDriver_zh_CN.qm");

} // namespace

/// Which translation file is taken, by the desktop's language and by what lies beside the program.
class SystemLocalisation : public SystemTest
{
    Q_OBJECT

private slots:
    void fileFollowsLanguage_data();
    void fileFollowsLanguage();
};

void SystemLocalisation::fileFollowsLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("tried");
    QTest::addColumn<QString>("outcome");

    const QStringList both{english, chinese};
    const QString loaded = QStringLiteral("成功加载翻译文件： ");
    const QString fallback = QStringLiteral("加载默认翻译文件： ");
    const QString none = QStringLiteral("未找到任何翻译文件，使用原始文本");
    const auto row = [](const char* name, const char* locale, const char* language,
                        const QStringList& present, const QString& tried, const QString& outcome) {
        QTest::newRow(name) << QString::fromLatin1(locale) << QString::fromLatin1(language)
                            << present << tried << outcome;
    };
    row("American", "en_US.UTF-8", "en_US", both, english, loaded + english);
    row("British", "en_GB.UTF-8", "en_GB", both, english, loaded + english);
    row("Simplified Chinese", "zh_CN.UTF-8", "zh_CN", both, chinese, loaded + chinese);
    row("Traditional Chinese", "zh_TW.UTF-8", "zh_TW", both, chinese, loaded + chinese);
    row("German", "de_DE.UTF-8", "de_DE", both, english, loaded + english);
    row("none", "C", "C", both, english, loaded + english);
    row("Chinese without its file", "zh_CN.UTF-8", "zh_CN", {english}, chinese, fallback + english);
    row("German without English", "de_DE.UTF-8", "de_DE", {chinese}, english, none);
    row("Chinese without files", "zh_CN.UTF-8", "zh_CN", {}, chinese, none);
}

void SystemLocalisation::fileFollowsLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QString, name);
    QFETCH(QStringList, present);
    QFETCH(QString, tried);
    QFETCH(QString, outcome);

    const QString place = folder().path(QStringLiteral("installed"));
    QVERIFY(QDir().mkpath(place));
    const QString program = place + QStringLiteral("/QuorvelDriver");
    QVERIFY(QFile::copy(session().programFile(), program));
    for (const QString& file : present)
        QVERIFY(QFile::copy(QStringLiteral(QUORVEL_SAMPLE_QM), place + QLatin1Char('/') + file));
    session().setProgram(program);
    folder().setVariable(QStringLiteral("LC_ALL"), locale);
    QVERIFY(session().startPanel());

    const auto path = [&](const QString& file) {
        return QLatin1Char('"') + place + QLatin1Char('/') + file + QLatin1Char('"');
    };
    const QStringList lines = panel().debugLines();
    const auto first = lines.indexOf(QStringLiteral("系统返回的语言代码： \"%1\"").arg(name));
    QVERIFY(first >= 0);
    QCOMPARE(lines.value(first + 1), QStringLiteral("拼接后的路径： ") + path(tried));
    const QString file = outcome.section(QLatin1Char(' '), 1);
    const QString expected =
        file.isEmpty() ? outcome : outcome.section(QLatin1Char(' '), 0, 0) + ' ' + path(file);
    QCOMPARE(lines.value(first + 2), expected);
    QCOMPARE(lines.value(first + 3), QStringLiteral("Settings dialog created."));
}

QUORVEL_TEST_MAIN(SystemLocalisation)
#include "system_localisation_test.moc"
