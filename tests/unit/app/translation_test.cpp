#include "app/translation.h"
#include "support/debug_log.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// The look-up of the translation file in all its branches. The files hold no texts: loading is
/// all that is looked at.
class TranslationTest : public QObject
{
    Q_OBJECT

private slots:
    void locales_data();
    void locales();
    void missingFileFallsBackToEnglish();
    void noFileAtAll();
    void folderWithPlaceholder();
    void damagedFileIsNoFile();

private:
    static void addFile(const QString& folder, const char* code);
};

namespace {

/// The magic number that every .qm file begins with, and nothing else.
const QByteArray emptyTranslation = QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd");

} // namespace

void TranslationTest::addFile(const QString& folder, const char* code)
{
    QDir().mkpath(folder);
    QFile file(folder + "/QuorvelDriver_" + code + ".qm");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(emptyTranslation), emptyTranslation.size());
}

void TranslationTest::locales_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("en_001") << "en_US";
    QTest::newRow("en_US") << "en_US";
    QTest::newRow("en_GB") << "en_US";
    QTest::newRow("zh_CN") << "zh_CN";
    QTest::newRow("zh_TW") << "zh_CN";
    QTest::newRow("de_DE") << "en_US";
    QTest::newRow("fr_FR") << "en_US";
    QTest::newRow("zh_HK") << "en_US";
    QTest::newRow("EN_us") << "en_US";
    QTest::newRow("C") << "en_US";
}

void TranslationTest::locales()
{
    QFETCH(QString, code);
    const QTemporaryDir folder;
    addFile(folder.path(), "en_US");
    addFile(folder.path(), "zh_CN");
    const QString name = QTest::currentDataTag();
    const QString path = folder.path() + "/QuorvelDriver_" + code + ".qm";
    QTranslator translator;
    DebugLog log;
    installTranslation(translator, name, folder.path());
    QCOMPARE(log.take(),
             (QStringList{"系统返回的语言代码： \"" + name + '"', "拼接后的路径： \"" + path + '"',
                          "成功加载翻译文件： \"" + path + '"'}));
    QCOMPARE(QFileInfo(translator.filePath()).fileName(), "QuorvelDriver_" + code + ".qm");
    // True only when it was installed.
    QVERIFY(QCoreApplication::removeTranslator(&translator));
}

void TranslationTest::missingFileFallsBackToEnglish()
{
    const QTemporaryDir folder;
    addFile(folder.path(), "en_US");
    QTranslator translator;
    DebugLog log;
    installTranslation(translator, "zh_CN", folder.path());
    const QString english = folder.path() + "/QuorvelDriver_en_US.qm";
    QCOMPARE(log.take().mid(1),
             (QStringList{"拼接后的路径： \"" + folder.path() + "/QuorvelDriver_zh_CN.qm\"",
                          "加载默认翻译文件： \"" + english + '"'}));
    QVERIFY(!translator.filePath().isEmpty());
    QVERIFY(QCoreApplication::removeTranslator(&translator));
}

void TranslationTest::noFileAtAll()
{
    const QTemporaryDir folder;
    QTranslator translator;
    DebugLog log;
    installTranslation(translator, "fr_FR", folder.path());
    QCOMPARE(log.take().mid(1),
             (QStringList{"拼接后的路径： \"" + folder.path() + "/QuorvelDriver_en_US.qm\"",
                          "warning: 未找到任何翻译文件，使用原始文本"}));
    QVERIFY(!QCoreApplication::removeTranslator(&translator));
}

void TranslationTest::folderWithPlaceholder()
{
    const QTemporaryDir folder;
    // The first "%1" of the joined path is in the folder's name, and both are replaced.
    addFile(folder.path() + "/app zh_CN", "zh_CN");
    QTranslator translator;
    DebugLog log;
    installTranslation(translator, "zh_CN", folder.path() + "/app %1");
    QCOMPARE(log.lines().constLast(),
             "成功加载翻译文件： \"" + folder.path() + "/app zh_CN/QuorvelDriver_zh_CN.qm\"");
}

void TranslationTest::damagedFileIsNoFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("QuorvelDriver_en_US.qm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no translation");
    file.close();
    QTranslator translator;
    DebugLog log;
    installTranslation(translator, "en_US", folder.path());
    QCOMPARE(log.lines().constLast(), QString("warning: 未找到任何翻译文件，使用原始文本"));
}

QUORVEL_TEST_MAIN(TranslationTest)
#include "translation_test.moc"
