#include "support/test_main.h"
#include "translation_source.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

/// The translation sources against the texts that the program asks for, and the files the program
/// loads against their sources.
class TranslationFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void faults_data();
    void faults();
    void complete_data();
    void complete();
    void builtFromTheSource_data();
    void builtFromTheSource();

private:
    static void addLanguages();
    static QString sourceFile(const QString& language);

    QTemporaryDir folder;
    QList<TranslationEntry> wanted;
};

void TranslationFilesTest::initTestCase()
{
    const QString extracted = folder.filePath("extracted.ts");
    QProcess lupdate;
    lupdate.start(QUORVEL_LUPDATE,
                  {"-silent", "-locations", "none", QUORVEL_SOURCES, "-ts", extracted});
    QVERIFY2(lupdate.waitForFinished(60000), qPrintable(lupdate.errorString()));
    QCOMPARE(lupdate.exitCode(), 0);
    QCOMPARE(QString::fromLocal8Bit(lupdate.readAllStandardError()), QString());
    wanted = TranslationSource::read(extracted);
    QVERIFY(wanted.size() >= 40);
}

void TranslationFilesTest::faults_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("fault");
    const auto row = [](const char* name, const char* source, const char* translation,
                        const char* fault) {
        QTest::newRow(name) << QStringLiteral("<message><source>%1</source>%2</message>")
                                   .arg(QLatin1String(source), QLatin1String(translation))
                            << QString::fromLatin1(fault);
    };
    row("good", "Count: %1", "<translation>%1 counted</translation>", "");
    row("other text", "Total: %1", "<translation>Total: %1</translation>",
        "Meter: \"Count: %1\": missing|Meter: \"Total: %1\": not in the program");
    row("unfinished", "Count: %1", "<translation type=\"unfinished\">%1</translation>",
        "Meter: \"Count: %1\": unfinished");
    row("vanished", "Count: %1", "<translation type=\"vanished\">%1</translation>",
        "Meter: \"Count: %1\": vanished");
    row("empty", "Count: %1", "<translation> </translation>", "Meter: \"Count: %1\": empty");
    row("no translation", "Count: %1", "", "Meter: \"Count: %1\": empty");
    row("lost placeholder", "Count: %1", "<translation>Count</translation>",
        "Meter: \"Count: %1\": other placeholders");
}

void TranslationFilesTest::faults()
{
    QFETCH(QString, message);
    QFETCH(QString, fault);
    QFile file(folder.filePath("sample.ts"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<TS><context><name>Meter</name>" + message.toUtf8() + "</context></TS>");
    file.close();
    const QList<TranslationEntry> count{{"Meter", "Count: %1", {}, {}}};
    QCOMPARE(TranslationSource::faults(count, TranslationSource::read(file.fileName())).join('|'),
             fault);
}

void TranslationFilesTest::addLanguages()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en_US";
    QTest::newRow("Chinese") << "zh_CN";
}

QString TranslationFilesTest::sourceFile(const QString& language)
{
    return QUORVEL_SOURCES "/resources/translations/QuorvelDriver_" + language + ".ts";
}

void TranslationFilesTest::complete_data()
{
    addLanguages();
}

void TranslationFilesTest::complete()
{
    QFETCH(QString, language);
    const QStringList faults =
        TranslationSource::faults(wanted, TranslationSource::read(sourceFile(language)));
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

void TranslationFilesTest::builtFromTheSource_data()
{
    addLanguages();
}

void TranslationFilesTest::builtFromTheSource()
{
    QFETCH(QString, language);
    QTranslator translator;
    QVERIFY(translator.load(QCoreApplication::applicationDirPath() + "/QuorvelDriver_" + language +
                            ".qm"));
    QCOMPARE(translator.language(), language);
    const QList<TranslationEntry> entries = TranslationSource::read(sourceFile(language));
    QVERIFY(!entries.isEmpty());
    for (const TranslationEntry& entry : entries) {
        QCOMPARE(translator.translate(entry.context.toUtf8().constData(),
                                      entry.source.toUtf8().constData()),
                 entry.translation);
    }
}

QUORVEL_TEST_MAIN(TranslationFilesTest)
#include "translation_files_test.moc"
