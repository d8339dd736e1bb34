#include "storage/settings_file.h"
#include "support/debug_log.h"
#include "support/file_access.h"
#include "support/ini_file.h"
#include "support/settings_files.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <memory>
#include <optional>

/// The keeping of an INI file, above all when it cannot be read or saved.
class SettingsFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstValueMakesTheFile();
    void sameFileForAll();
    void changesOfOthers();
    void savedTextIsNotSavedAgain();
    void unreadFileIsLeftAlone();
    void unreadFileIsBroughtBack();
    void unreadFileAndAUserThatIsGone();
    void unreadFileIsOpenedAgain();
    void unreadFileAtTheEnd();
    void folderThatIsNotThereYet();
    void folderInPlaceOfTheFile();
    void heldAfterItWasRead();
    void readOnlyFile();
    void damagedFile_data();
    void damagedFile();
    void tooLargeFile();
    void nestedValues();
    void filesOfTheUserStay();
    void halfOfAKilledSave();

private:
    SettingsFile& file() { return SettingsFile::open("test.ini"); }
    QString stored(const char* key) { return IniFile::read("test.ini").value(key); }
    static QStringList names()
    {
        return QDir(IniFile::path("")).entryList(QDir::Files, QDir::Name);
    }
    /// Without opening the file again, which tries to read it.
    static QTimer* retry() { return qApp->findChild<SettingsFile*>()->findChild<QTimer*>(); }
    static QString line(const char* trouble)
    {
        return QStringLiteral("%1 \"%2\"").arg(QLatin1String(trouble), IniFile::path("test.ini"));
    }

    const QString unread = line("Cannot read the settings yet:");
    const QString unsaved = line("Cannot save the settings yet:");
    std::optional<DebugLog> log;
};

void SettingsFileTest::init()
{
    QDir(IniFile::path("")).removeRecursively();
    log.reset();
    log.emplace();
}

void SettingsFileTest::cleanup()
{
    forgetSettingsFiles();
    log.reset();
}

void SettingsFileTest::firstValueMakesTheFile()
{
    QCOMPARE(file().text("Dial/MicValue", "7"), QString("7"));
    QCOMPARE(file().text("Dial/MicValue"), QString());
    QVERIFY(QFileInfo(IniFile::path("")).isDir());
    QVERIFY(!QFile::exists(IniFile::path("test.ini")));
    file().store("Dial/MicValue", "12");
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/MicValue", "12"}}));
    QCOMPARE(file().text("Dial/MicValue", "7"), QString("12"));
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
    QCOMPARE(names(), QStringList{"test.ini"});
}

void SettingsFileTest::sameFileForAll()
{
    QCOMPARE(&file(), &file());
    QVERIFY(&file() != &SettingsFile::open("other.ini"));
    QCOMPARE(file().parent(), qApp);
}

void SettingsFileTest::changesOfOthers()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}, {"Dial/FutureValue", "77"}});
    SettingsFile& same = file();
    same.store("Dial/MicValue", "2");
    QCOMPARE(stored("Dial/FutureValue"), QString("77"));
    // As long as before, and perhaps within the same tick of the disk's clock.
    IniFile::write("test.ini", {{"Dial/MicValue", "3"}, {"Dial/FutureValue", "78"}});
    same.store("Dial/HeadphoneValue", "-5");
    QCOMPARE(same.text("Dial/MicValue"), QString("3"));
    QCOMPARE(stored("Dial/FutureValue"), QString("78"));
    IniFile::write("test.ini", {{"Dial/MicValue", "4"}});
    same.save();
    QCOMPARE(same.text("Dial/MicValue"), QString("4"));
    IniFile::remove("test.ini");
    QCOMPARE(file().text("Dial/MicValue", "9"), QString("9"));
}

/// What the file says already needs no disk, nor anybody's permission.
void SettingsFileTest::savedTextIsNotSavedAgain()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    const ReadOnly guard(IniFile::path("test.ini"));
    file().store("Dial/MicValue", "1");
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::unreadFileIsLeftAlone()
{
    const QMap<QString, QString> before{{"Dial/HeadphoneValue", "-20"}, {"Dial/MicValue", "30"}};
    IniFile::write("test.ini", before);
    {
        const Unreadable guard(IniFile::path("test.ini"));
        SettingsFile& opened = file();
        opened.bringBack(this, [&] {
            if (opened.text("Dial/MicValue", "0") == u"0") {
                opened.store("Dial/HeadphoneValue", "-80");
                opened.store("Dial/MicValue", "0");
            }
        });
        opened.store("Dial/HeadphoneValue", "-80"); // along with another key
        opened.store("Button/Mic48VIsChecked", "true");
        QCOMPARE(opened.text("Button/Mic48VIsChecked"), QString("true"));
        QCOMPARE(retry()->interval(), 1000);
        QVERIFY(retrySettingsFile());
        QVERIFY(retrySettingsFile());
        QCOMPARE(log->take(), QStringList{unread});
    }
    QCOMPARE(IniFile::read("test.ini"), before);
    QVERIFY(retrySettingsFile());
    auto after = before;
    after.insert("Button/Mic48VIsChecked", "true");
    QCOMPARE(IniFile::read("test.ini"), after);
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
}

/// What was changed while the file was unread wins, also when it was changed back to the default.
void SettingsFileTest::unreadFileIsBroughtBack()
{
    IniFile::write("test.ini", {{"Dial/A", "1"}, {"Dial/B", "2"}});
    QStringList seen;
    {
        const Unreadable guard(IniFile::path("test.ini"));
        SettingsFile& opened = file();
        opened.bringBack(this, [&] {
            seen = {opened.text("Dial/A", "0"), opened.text("Dial/B", "0")};
            opened.store("Dial/A", seen.at(0));
            opened.store("Dial/B", seen.at(1));
        });
        QCOMPARE(seen, (QStringList{"0", "0"}));
        opened.store("Dial/B", "5");
        opened.store("Dial/B", "0");
        seen.clear();
    }
    QCoreApplication::processEvents();
    QCOMPARE(seen, QStringList());
    QVERIFY(retrySettingsFile());
    QCOMPARE(seen, (QStringList{"1", "0"}));
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}, {"Dial/B", "0"}}));
    QVERIFY(!retry()->isActive());
}

void SettingsFileTest::unreadFileAndAUserThatIsGone()
{
    IniFile::write("test.ini", {{"Dial/A", "1"}});
    int calls = 0;
    {
        const Unreadable guard(IniFile::path("test.ini"));
        const auto user = std::make_unique<QObject>();
        file().bringBack(user.get(), [&] { ++calls; });
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(calls, 1);
    QVERIFY(!retry()->isActive());
}

/// The next panel finds what waits, and only its own values are brought back.
void SettingsFileTest::unreadFileIsOpenedAgain()
{
    IniFile::write("test.ini", {{"Dial/A", "1"}});
    int first = 0;
    int second = 0;
    {
        const Unreadable guard(IniFile::path("test.ini"));
        file().bringBack(this, [&] { ++first; });
        file().store("Dial/B", "5");
        file().bringBack(this, [&] { ++second; });
        QCOMPARE(file().text("Dial/B", "0"), QString("5"));
        file().bringBack(this, [&] { ++second; });
        QCOMPARE(log->take(), QStringList{unread});
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(first, 1);
    QCOMPARE(second, 3);
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}, {"Dial/B", "5"}}));
}

void SettingsFileTest::unreadFileAtTheEnd()
{
    IniFile::write("test.ini", {{"Dial/A", "1"}});
    {
        const Unreadable guard(IniFile::path("test.ini"));
        file().store("Dial/B", "5");
        SettingsFile::saveAll();
    }
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}}));
    SettingsFile::saveAll();
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}, {"Dial/B", "5"}}));
}

void SettingsFileTest::folderThatIsNotThereYet()
{
    const QString folder = QFileInfo(IniFile::path("test.ini")).path();
    QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
    QVERIFY(QFile(folder).open(QFile::WriteOnly));
    file().bringBack(this, [] {});
    file().store("Dial/B", "5");
    QCOMPARE(log->take(), QStringList{unread});
    QVERIFY(QFile::remove(folder));
    IniFile::write("test.ini", {{"Dial/A", "1"}});
    QVERIFY(retrySettingsFile());
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}, {"Dial/B", "5"}}));
}

void SettingsFileTest::folderInPlaceOfTheFile()
{
    QVERIFY(QDir().mkpath(IniFile::path("test.ini")));
    QCOMPARE(file().text("Dial/MicValue", "9"), QString("9"));
    file().store("Dial/MicValue", "2");
    QCOMPARE(log->take(), QStringList{unread});
    QVERIFY(QDir().rmdir(IniFile::path("test.ini")));
    QVERIFY(retrySettingsFile());
    QCOMPARE(stored("Dial/MicValue"), QString("2"));
}

/// Nothing that was read is forgotten.
void SettingsFileTest::heldAfterItWasRead()
{
    IniFile::write("test.ini", {{"Dial/A", "1"}, {"Dial/B", "2"}});
    {
        SettingsFile& opened = file();
        const Unreadable guard(IniFile::path("test.ini"));
        opened.store("Dial/B", "5");
        QCOMPARE(opened.text("Dial/A"), QString("1"));
        QCOMPARE(opened.text("Dial/B"), QString("5"));
        QCOMPARE(log->take(), QStringList{unsaved});
        QCOMPARE(file().text("Dial/A"), QString("1"));
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/A", "1"}, {"Dial/B", "5"}}));
}

void SettingsFileTest::readOnlyFile()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    for (int trouble = 0; trouble < 2; ++trouble) {
        const QString before = stored("Dial/MicValue");
        {
            const ReadOnly guard(IniFile::path("test.ini"));
            file().store("Dial/MicValue", "20");
            file().store("Dial/MicValue", QString::number(trouble));
            QCOMPARE(stored("Dial/MicValue"), before);
            QCOMPARE(file().text("Dial/MicValue"), QString::number(trouble));
            QVERIFY(retrySettingsFile());
            QCOMPARE(names(), QStringList{"test.ini"});
            QCOMPARE(log->take(), QStringList{unsaved});
        }
        QVERIFY(retrySettingsFile());
        QCOMPARE(stored("Dial/MicValue"), QString::number(trouble));
        QVERIFY(!retry()->isActive());
        QCOMPARE(log->take(), QStringList());
    }
}

void SettingsFileTest::damagedFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("no line of an INI file") << QByteArray("half a\n[Dial\nMicValue\n=\n");
    QTest::newRow("cut off") << QByteArray("[Dial]\nHeadphoneValue=1\n[Butt");
}

void SettingsFileTest::damagedFile()
{
    QFETCH(const QByteArray, bytes);
    IniFile::writeRaw("test.ini", bytes);
    file().store("Dial/MicValue", "2");
    QCOMPARE(stored("Dial/MicValue"), QString("2"));
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::tooLargeFile()
{
    const QByteArray largest = "[Dial]\nMicValue=5\n" + QByteArray(65536 - 18, ';');
    IniFile::writeRaw("test.ini", largest);
    QCOMPARE(file().text("Dial/MicValue", "9"), QString("5"));
    QCOMPARE(log->take(), QStringList());

    IniFile::writeRaw("test.ini.set-aside", "the user's own");
    IniFile::writeRaw("test.ini", largest + ';');
    QCOMPARE(file().text("Dial/MicValue", "9"), QString("9"));
    const QString aside = IniFile::path("test.ini.set-aside2");
    QCOMPARE(log->take(),
             QStringList{QStringLiteral("Too large for settings, set aside: \"%1\"").arg(aside)});
    file().store("Dial/MicValue", "2");
    QCOMPARE(names(), (QStringList{"test.ini", "test.ini.set-aside", "test.ini.set-aside2"}));
    QCOMPARE(QFileInfo(aside).size(), qint64(65537));
    QCOMPARE(QFileInfo(IniFile::path("test.ini.set-aside")).size(), qint64(14));
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/MicValue", "2"}}));
}

/// Lists in lists, as deep as they go: the toolkit would call itself for each.
void SettingsFileTest::nestedValues()
{
    const QByteArray level = "\\0\\0\\0\\x9\\0\\0\\0\\0\\x1";
    IniFile::writeRaw("test.ini", "[Dial]\nNested=@Variant(" + level.repeated(2800) +
                                      ")\nMicValue=5\nHeadphoneValue=-20\n");
    QVERIFY(QFileInfo(IniFile::path("test.ini")).size() > 50000);
    QCOMPARE(file().text("Dial/Nested", "missing"), QString());
    QCOMPARE(file().text("Dial/MicValue"), QString("5"));
    file().store("Dial/MicValue", "6");
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("-20"));
    QVERIFY(stored("Dial/Nested").startsWith("@Variant("));
}

void SettingsFileTest::filesOfTheUserStay()
{
    const QStringList kept{"test.ini.BackUp", "test.ini.aBcdEf", "test.ini.lock",
                           "test.ini.oldOne"};
    for (const QString& name : kept)
        IniFile::writeRaw(name, "[Dial]\nMicValue=1\n");
    file().store("Dial/MicValue", "2");
    QCOMPARE(names(), QStringList{"test.ini"} + kept);
}

void SettingsFileTest::halfOfAKilledSave()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    IniFile::writeRaw("test.ini.saving", QByteArray(300, 'x'));
    QCOMPARE(file().text("Dial/MicValue"), QString("1"));
    file().store("Dial/MicValue", "2");
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/MicValue", "2"}}));
    QCOMPARE(names(), QStringList{"test.ini"});
}

QUORVEL_TEST_MAIN(SettingsFileTest)
#include "settings_file_test.moc"
