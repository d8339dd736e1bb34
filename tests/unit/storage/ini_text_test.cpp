#include "storage/ini_text.h"
#include "support/test_main.h"

#include <QTest>

/// The lines of an INI file: what is understood of them, and that no other line changes.
class IniTextTest : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void lastOfSeveralCounts();
    void placeOfANewLine_data();
    void placeOfANewLine();
};

void IniTextTest::texts_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* line, const char* text) {
        QTest::newRow(line) << "[Group]\n" + QByteArray(line) << QString::fromUtf8(text);
    };
    row("Key=48", "48");
    row("Key=", "");
    row("Key=\"\"", "");
    row("Key=\"", "");
    row("Key=\" 5\"", " 5");
    row(" Key = 5 ; five", "5");
    row("Key=\"5;6\"", "5;6");
    row("Key=5\r", "5");
    row("KEY=5", "5");
    row("Key=声卡", "声卡");
    row("Key=1, 2", "");
    row("Key=\"1, 2\"", "1, 2");
    row("Key=\"1\", \"2\"", "");
    row("Key=\\x31", "");
    row("Key=@Invalid()", "");
    row("Key=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)", "");
    row("Key=\"@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)\"", "");
    row("Key=@ByteArray(48)", "");
    row("Other=1", "the default");
    row(";Key=1", "the default");
    row("=1", "the default");
    row("[Key=1", "the default");
    row("[Other]\nKey=1", "the default");
    row("[Other]\n[ group ] \nKey=1", "1");
    QTest::newRow("nothing") << QByteArray() << "the default";
    QTest::newRow("marked as UTF-8") << QByteArray("\xEF\xBB\xBF[Group]\nKey=7") << "7";
    QTest::newRow("without a group") << QByteArray("Group/Key=7") << "7";
}

void IniTextTest::texts()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, text);
    IniText ini(content);
    QCOMPARE(ini.text("Group/Key", "the default"), text);
    ini.set("Group/Key", "other");
    QCOMPARE(ini.text("Group/Key", "the default"), QString("other"));
    QCOMPARE(IniText(ini.content()).text("Group/Key", "the default"), QString("other"));
}

void IniTextTest::lastOfSeveralCounts()
{
    IniText ini("[Group]\nKey=1\n[Other]\nKey=2\n[Group]\nKey=3\n");
    QCOMPARE(ini.text("Group/Key", {}), QString("3"));
    ini.set("Group/Key", "4");
    QCOMPARE(ini.content(), QByteArray("[Group]\nKey=1\n[Other]\nKey=2\n[Group]\nKey=4\n"));
}

void IniTextTest::placeOfANewLine_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("new file") << QByteArray() << QByteArray("[Dial]\nKey=5\n");
    QTest::newRow("new group") << QByteArray("[Button]\nKey=1")
                               << QByteArray("[Button]\nKey=1\n\n[Dial]\nKey=5\n");
    QTest::newRow("end of its group") << QByteArray("[Dial]\nOther=1\n\n[Button]\nKey=1\n")
                                      << QByteArray("[Dial]\nOther=1\nKey=5\n\n[Button]\nKey=1\n");
    QTest::newRow("same text") << QByteArray("# mine\n[Dial]\n Key = 5\n")
                               << QByteArray("# mine\n[Dial]\n Key = 5\n");
    QTest::newRow("other lines") << QByteArray("junk\n\n[Dial]\nA=\"x\\ny\"\nKey=@Rect(1 2 3 4)\n")
                                 << QByteArray("junk\n\n[Dial]\nA=\"x\\ny\"\nKey=5\n");
    QTest::newRow("a group of one line")
        << QByteArray("Dial/Other=1\n") << QByteArray("Dial/Other=1\n\n[Dial]\nKey=5\n");
}

void IniTextTest::placeOfANewLine()
{
    QFETCH(const QByteArray, before);
    QFETCH(const QByteArray, after);
    IniText ini(before);
    ini.set("Dial/Key", "5");
    QCOMPARE(ini.content(), after);
}

QUORVEL_TEST_MAIN(IniTextTest)
#include "ini_text_test.moc"
