#include "settings_fixture.h"
#include "support/lock_file.h"
#include "support/test_main.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QSignalBlocker>
#include <QTest>

/// setting.ini while something is in the way of saving it.
class SettingsStorageTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.reset(); }
    void leftoverLock_data() { LockFiles::addLeftoverRows(); }
    void leftoverLock();
    void heldLock();
    void otherValues_data();
    void otherValues();

private:
    SettingsFixture fixture;
};

void SettingsStorageTest::leftoverLock()
{
    IniFile::write("setting.ini", {{"USB/SlowMode", "Enabled"}});
    LockFiles::plant("setting.ini");
    QElapsedTimer clock;
    clock.start();
    fixture.connect(44100, 192, 8);
    fixture.dialog->loadSettings();
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(fixture.slowMode()->currentText(), QString("Enabled"));
    fixture.slowMode()->setCurrentText("Disabled");
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(fixture.stored("USB/SlowMode"), QString("Disabled"));
    QVERIFY(!QFile::exists(LockFiles::path("setting.ini")));
    QCOMPARE(fixture.takeLog().filter("Cannot save").size(), 0);
}

/// A choice that waits to be saved is the one that the next device gets.
void SettingsStorageTest::heldLock()
{
    fixture.connect(44100, 192, 8);
    QLockFile holder(LockFiles::path("setting.ini"));
    QVERIFY(holder.tryLock(0));
    fixture.slowMode()->setCurrentText("Enabled");
    const QStringList log = fixture.takeLog();
    QCOMPARE(log.filter("Cannot save the settings yet").size(), 1);
    QCOMPARE(log.constLast(), QString("USB慢速模式设置已保存： \"Enabled\""));
    {
        const QSignalBlocker blocker(fixture.slowMode());
        fixture.slowMode()->setCurrentText("Disabled");
    }
    fixture.dialog->loadSettings();
    QCOMPARE(fixture.slowMode()->currentText(), QString("Enabled"));
    QCOMPARE(fixture.stored("USB/SlowMode"), QString());
    holder.unlock();
    QTRY_COMPARE(fixture.stored("USB/SlowMode"), QString("Enabled"));
}

void SettingsStorageTest::otherValues_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"Disabled, Enabled", "@Invalid()", "", "@ByteArray(Disabled)",
                             "@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)"})
        QTest::newRow(text) << text;
}

/// A value that is there but no choice leaves the dialog as it is; it is not a missing one.
void SettingsStorageTest::otherValues()
{
    QFETCH(const QString, text);
    IniFile::write("setting.ini", {{"USB/LatencySize", text},
                                   {"Audio/BufferSize", text},
                                   {"USB/SlowMode", text},
                                   {"Audio/SampleRate", text}});
    fixture.connect(44100, 1024, 8);
    const QList<QPair<QComboBox*, QString>> shown{{fixture.latency(), "16"},
                                                  {fixture.bufferSize(), "1024"},
                                                  {fixture.slowMode(), "Enabled"},
                                                  {fixture.sampleRate(), "48000"}};
    for (const auto& [combo, choice] : shown) {
        const QSignalBlocker blocker(combo);
        combo->setCurrentText(choice);
    }
    fixture.dialog->loadSettings();
    for (const auto& [combo, choice] : shown)
        QCOMPARE(combo->currentText(), choice);
    QCOMPARE(fixture.takeTrace(), QStringList());
}

QUORVEL_TEST_MAIN(SettingsStorageTest)
#include "settings_storage_test.moc"
