#include "storage/settings_file.h"
#include "support/debug_log.h"
#include "support/file_access.h"
#include "support/ini_file.h"
#include "support/lock_file.h"
#include "support/settings_files.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QTest>
#include <QTimer>

#include <optional>

/// The keeping of an INI file, above all when it cannot be saved.
class SettingsFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstValueMakesTheFile();
    void missingFolderIsMade();
    void sameFileForAll();
    void texts_data();
    void texts();
    void textsOfTheSameProcess();
    void changesOfOthers();
    void leftoverLock_data() { LockFiles::addLeftoverRows(); }
    void leftoverLock();
    void leftoverLockAndNoChange_data() { LockFiles::addLeftoverRows(); }
    void leftoverLockAndNoChange();
    void leftoverLockWhileRunning_data() { LockFiles::addLeftoverRows(); }
    void leftoverLockWhileRunning();
    void heldLock();
    void heldLockIsReportedOncePerTrouble();
    void heldLockAndTheNextWindow();
    void heldLockAndAnExplicitSave();
    void heldLockAtTheEnd();
    void releasedLockAtTheEnd();
    void fullLockFolder();
    void lockAfterAFailedSave();
    void readOnlyFile();
    void folderInPlaceOfTheFile();
    void damagedFile_data();
    void damagedFile();
    void damagedReadOnlyFile();
    void damagedWhileRunning();
    void leftoversOfAKill();
    void leftoversBesideALock_data();
    void leftoversBesideALock();
    void savesOfOthersAreNoLeftovers();

private:
    SettingsFile& file() { return SettingsFile::open("test.ini"); }
    QString stored(const char* key) { return IniFile::read("test.ini").value(key); }
    static QStringList names()
    {
        QStringList list = QDir(IniFile::path("")).entryList(QDir::Files);
        list.sort();
        return list;
    }
    /// Without opening the file again, which tries to save.
    static QTimer* retry() { return qApp->findChild<SettingsFile*>()->findChild<QTimer*>(); }

    std::optional<DebugLog> log;
};

namespace {

QString complaint()
{
    return QStringLiteral("Cannot save the settings yet: \"%1\"").arg(IniFile::path("test.ini"));
}

} // namespace

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
    QVERIFY(!QFile::exists(IniFile::path("test.ini")));
    file().store("Dial/MicValue", "12");
    QCOMPARE(IniFile::read("test.ini"), (QMap<QString, QString>{{"Dial/MicValue", "12"}}));
    QCOMPARE(file().text("Dial/MicValue", "7"), QString("12"));
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
    QCOMPARE(QDir(IniFile::path("")).entryList(QDir::Files), QStringList{"test.ini"});
}

void SettingsFileTest::missingFolderIsMade()
{
    file();
    QVERIFY(QFileInfo(IniFile::path("")).isDir());
    QDir(IniFile::path("")).removeRecursively();
    file();
    QVERIFY(QFileInfo(IniFile::path("")).isDir());
}

void SettingsFileTest::sameFileForAll()
{
    QCOMPARE(&file(), &file());
    QVERIFY(&file() != &SettingsFile::open("other.ini"));
    QCOMPARE(file().parent(), qApp);
}

void SettingsFileTest::texts_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* line, const char* text) {
        QTest::newRow(line) << QByteArray(line) << QString::fromLatin1(text);
    };
    row("Key=48", "48");
    row("Key=", "");
    row("Key=\" 5\"", " 5");
    row("Key=1, 2", "");
    row("Key=@Invalid()", "");
    row("Key=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)", "");
    row("Key=@ByteArray(48)", "");
    row("Key=@Rect(1 2 3 4)", "");
    row("Other=1", "the default");
}

void SettingsFileTest::texts()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, text);
    // A file of the same length and time counts as unchanged to the toolkit.
    static qsizetype length = 0;
    IniFile::writeRaw("test.ini", "[Group]\n" + line + QByteArray(++length, '\n'));
    QCOMPARE(file().text("Group/Key", "the default"), text);
}

/// A value is the same before and after it was read back from the file.
void SettingsFileTest::textsOfTheSameProcess()
{
    const QStringList texts{"true", "-80", "", "48, 64", "@Invalid()", "声卡"};
    for (const QString& text : texts) {
        file().store("Group/Key", text);
        QCOMPARE(file().text("Group/Key", "the default"), text);
        forgetSettingsFiles();
        QCOMPARE(file().text("Group/Key", "the default"), text);
    }
}

void SettingsFileTest::changesOfOthers()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}, {"Dial/FutureValue", "77"}});
    file().store("Dial/MicValue", "2");
    QCOMPARE(stored("Dial/FutureValue"), QString("77"));
    IniFile::write("test.ini", {{"Dial/MicValue", "33"}});
    QCOMPARE(file().text("Dial/MicValue"), QString("33"));
    IniFile::write("test.ini", {{"Dial/MicValue", "444"}});
    SettingsFile& same = *qApp->findChild<SettingsFile*>();
    same.save();
    QCOMPARE(same.text("Dial/MicValue"), QString("444"));
}

void SettingsFileTest::leftoverLock()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    LockFiles::plant("test.ini");
    QElapsedTimer clock;
    clock.start();
    file().store("Dial/MicValue", "2");
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(stored("Dial/MicValue"), QString("2"));
    QVERIFY(!QFile::exists(LockFiles::path("test.ini")));
    QCOMPARE(log->take(), QStringList());
}

/// Nothing may ever be saved in this file again.
void SettingsFileTest::leftoverLockAndNoChange()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    IniFile::writeRaw("test.ini.aBcdEf", "");
    LockFiles::plant("test.ini");
    QCOMPARE(file().text("Dial/MicValue"), QString("1"));
    QVERIFY(!QFileInfo::exists(LockFiles::path("test.ini")));
    QCOMPARE(names(), QStringList("test.ini"));
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::leftoverLockWhileRunning()
{
    file().store("Dial/MicValue", "1");
    leftoverLock();
}

void SettingsFileTest::heldLock()
{
    file().store("Dial/MicValue", "1");
    file().store("Button/Mic48VIsChecked", "false");
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    QElapsedTimer clock;
    clock.start();
    file().store("Dial/MicValue", "2");
    file().store("Dial/MicValue", "3");
    file().store("Button/Mic48VIsChecked", "true");
    QCoreApplication::processEvents();
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(file().text("Dial/MicValue"), QString("3"));
    QCOMPARE(stored("Dial/MicValue"), QString("1"));
    QVERIFY(retry()->isActive());
    QCOMPARE(retry()->interval(), 250);
    QTest::qWait(600);
    QVERIFY(retry()->isActive());
    QCOMPARE(log->take(), QStringList{complaint()});

    holder.unlock();
    QTRY_COMPARE(stored("Dial/MicValue"), QString("3"));
    QCOMPARE(stored("Button/Mic48VIsChecked"), QString("true"));
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::heldLockIsReportedOncePerTrouble()
{
    for (int trouble = 0; trouble < 2; ++trouble) {
        QLockFile holder(LockFiles::path("test.ini"));
        file();
        QVERIFY(holder.tryLock(0));
        file().store("Dial/MicValue", "1");
        file().store("Dial/MicValue", QString::number(trouble));
        QCOMPARE(log->take(), QStringList{complaint()});
        holder.unlock();
        file().store("Dial/HeadphoneValue", "-20");
        QCOMPARE(stored("Dial/MicValue"), QString::number(trouble));
        QVERIFY(!retry()->isActive());
    }
    QCOMPARE(log->take(), QStringList());
}

/// Whoever opens the file next sees what waits, not what the file says.
void SettingsFileTest::heldLockAndTheNextWindow()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}, {"Dial/HeadphoneValue", "-5"}});
    file();
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    file().store("Dial/MicValue", "2");
    SettingsFile& next = SettingsFile::open("test.ini");
    QCOMPARE(next.text("Dial/MicValue", "9"), QString("2"));
    QCOMPARE(next.text("Dial/HeadphoneValue", "9"), QString("-5"));
    QCOMPARE(next.text("Dial/OtgToHpValue", "9"), QString("9"));
}

void SettingsFileTest::heldLockAndAnExplicitSave()
{
    file();
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    SettingsFile& same = file();
    same.store("Dial/MicValue", "2");
    same.save();
    QVERIFY(stored("Dial/MicValue").isEmpty());
    holder.unlock();
    same.save();
    QCOMPARE(stored("Dial/MicValue"), QString("2"));
}

void SettingsFileTest::heldLockAtTheEnd()
{
    file();
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    file().store("Dial/MicValue", "2");
    QElapsedTimer clock;
    clock.start();
    forgetSettingsFiles();
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(stored("Dial/MicValue").isEmpty());
}

void SettingsFileTest::releasedLockAtTheEnd()
{
    file();
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    file().store("Dial/MicValue", "2");
    holder.unlock();
    forgetSettingsFiles();
    QCOMPARE(stored("Dial/MicValue"), QString("2"));
}

/// Nobody can remove this lock but the user.
void SettingsFileTest::fullLockFolder()
{
    const QString lock = LockFiles::path("test.ini");
    QVERIFY(QDir().mkpath(lock + "/holiday"));
    QElapsedTimer clock;
    clock.start();
    file().store("Dial/MicValue", "2");
    QCoreApplication::processEvents();
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(QFileInfo(lock + "/holiday").isDir());
    QCOMPARE(log->take(), QStringList{complaint()});
    QVERIFY(QDir(lock).removeRecursively());
    QTRY_COMPARE(stored("Dial/MicValue"), QString("2"));
}

/// A save that failed must not be repeated by anybody who waits for the lock.
void SettingsFileTest::lockAfterAFailedSave()
{
    QVERIFY(QDir().mkpath(IniFile::path("test.ini")));
    file().store("Dial/MicValue", "2");
    QVERIFY(QDir().rmdir(IniFile::path("test.ini")));
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(10);
    QCOMPARE(file().text("Dial/MicValue"), QString("2"));
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    holder.unlock();
    QTRY_COMPARE(stored("Dial/MicValue"), QString("2"));
}

void SettingsFileTest::readOnlyFile()
{
    IniFile::write("test.ini", {{"Dial/MicValue", "1"}});
    file();
    {
        const ReadOnly guard(IniFile::path("test.ini"));
        file().store("Dial/MicValue", "2");
        file().store("Dial/MicValue", "3");
        QCOMPARE(stored("Dial/MicValue"), QString("1"));
        QCOMPARE(file().text("Dial/MicValue"), QString("3"));
        QVERIFY(retry()->isActive());
        QCOMPARE(retry()->interval(), 1000);
        QCOMPARE(log->take(), QStringList{complaint()});
    }
    QTRY_COMPARE(stored("Dial/MicValue"), QString("3"));
    QVERIFY(!retry()->isActive());
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::folderInPlaceOfTheFile()
{
    QVERIFY(QDir().mkpath(IniFile::path("test.ini")));
    QCOMPARE(file().text("Dial/MicValue", "9"), QString("9"));
    file().store("Dial/MicValue", "2");
    QCOMPARE(log->take(), QStringList{complaint()});
    QVERIFY(QDir().rmdir(IniFile::path("test.ini")));
    QTRY_COMPARE(stored("Dial/MicValue"), QString("2"));
    QVERIFY(!retry()->isActive());
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

void SettingsFileTest::damagedReadOnlyFile()
{
    IniFile::writeRaw("test.ini", "half a\n[Dial\n");
    file();
    {
        const ReadOnly guard(IniFile::path("test.ini"));
        file().store("Dial/MicValue", "2");
        QVERIFY(retry()->isActive());
    }
    QTRY_COMPARE(stored("Dial/MicValue"), QString("2"));
}

void SettingsFileTest::damagedWhileRunning()
{
    file().store("Dial/MicValue", "1");
    SettingsFile& same = file();
    IniFile::writeRaw("test.ini", "half a\n[Dial\nMicValue\n=\n");
    same.store("Dial/HeadphoneValue", "-20");
    QVERIFY(!retry()->isActive());
    QCOMPARE(stored("Dial/HeadphoneValue"), QString("-20"));
    QCOMPARE(log->take(), QStringList());
}

void SettingsFileTest::leftoversOfAKill()
{
    QStringList kept{"test.ini",         "test.ini.BEFORE", "test.ini.Editor", "test.ini.aBcdE",
                     "test.ini.aBcdEfg", "test.ini.backup", "test.ini.old123", "test2.ini.aBcdEf",
                     "test.ini.aBcdé",   "test.ini_aBcdEf", "test.ini.aBcd.f"};
    const QStringList left{"test.ini.aBcdEf", "test.ini.QRsTUv", "test.ini.zzzzzZ"};
    for (const QString& name : kept + left)
        IniFile::writeRaw(name, "[Dial]\nMicValue=1\n");
    file();
    kept.sort();
    QCOMPARE(names(), kept);
}

void SettingsFileTest::leftoversBesideALock_data()
{
    QTest::addColumn<QString>("lock");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("age");
    QTest::addColumn<bool>("goes");
    QTest::newRow("at once") << "test.ini.lock"
                             << "test.ini.GZAWLU" << 0 << true;
    QTest::newRow("capitals") << "test.ini.lock"
                              << "test.ini.GZAWLU" << 20 << true;
    QTest::newRow("smalls") << "test.ini.lock"
                            << "test.ini.qhwzrt" << 20 << true;
    QTest::newRow("a capital first") << "test.ini.lock"
                                     << "test.ini.Ghwzrt" << 20 << true;
    QTest::newRow("slow disk") << "test.ini.lock"
                               << "test.ini.GZAWLU" << 3000 << true;
    QTest::newRow("made later") << "test.ini.lock"
                                << "test.ini.backup" << 3001 << false;
    QTest::newRow("made before") << "test.ini.lock"
                                 << "test.ini.backup" << -1 << false;
    QTest::newRow("five letters") << "test.ini.lock"
                                  << "test.ini.GZAWL" << 20 << false;
    QTest::newRow("seven letters") << "test.ini.lock"
                                   << "test.ini.GZAWLUX" << 20 << false;
    QTest::newRow("a digit") << "test.ini.lock"
                             << "test.ini.GZAWL1" << 20 << false;
    QTest::newRow("another's lock") << "test2.ini.lock"
                                    << "test.ini.GZAWLU" << 20 << false;
    QTest::newRow("another's file") << "test.ini.lock"
                                    << "test2.ini.GZAWLU" << 20 << false;
}

void SettingsFileTest::leftoversBesideALock()
{
    QFETCH(const QString, lock);
    QFETCH(const QString, name);
    QFETCH(const int, age);
    QFETCH(const bool, goes);
    const QDateTime killed(QDate(2026, 3, 1), QTime(12, 0));
    const auto write = [](const QString& file, const QDateTime& time) {
        IniFile::writeRaw(file, "");
        QFile written(IniFile::path(file));
        QVERIFY(written.open(QIODevice::ReadWrite));
        QVERIFY(written.setFileTime(time, QFileDevice::FileModificationTime));
    };
    write(lock, killed);
    write(name, killed.addMSecs(age));
    file();
    QStringList kept;
    if (!goes)
        kept << name;
    if (lock != u"test.ini.lock")
        kept << lock;
    kept.sort();
    QCOMPARE(names(), kept);
}

void SettingsFileTest::savesOfOthersAreNoLeftovers()
{
    QVERIFY(QDir().mkpath(IniFile::path("")));
    QLockFile holder(LockFiles::path("test.ini"));
    QVERIFY(holder.tryLock(0));
    IniFile::writeRaw("test.ini.GZAWLU", "");
    IniFile::writeRaw("test.ini.aBcdEf", "");
    file();
    QCOMPARE(names(), (QStringList{"test.ini.GZAWLU", "test.ini.aBcdEf", "test.ini.lock"}));
}

QUORVEL_TEST_MAIN(SettingsFileTest)
#include "settings_file_test.moc"
