#include "settings_fixture.h"
#include "support/file_access.h"
#include "support/settings_files.h"
#include "support/test_main.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QTest>

#include <optional>

/// setting.ini while something is in the way of reading or saving it.
class SettingsStorageTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.reset(); }
    void unreadFile();
    void unreadFileAndALostDevice();
    void unsavedFile();
    void changedByHand();
    void otherValues_data();
    void otherValues();

private:
    SettingsFixture fixture;
};

/// Another program has the file for itself when the interface comes: the user's choices come back,
/// and none of those that had to be assumed gets into the file.
void SettingsStorageTest::unreadFile()
{
    const QMap<QString, QString> before{{"Audio/BufferSize", "512"},
                                        {"Audio/SampleRate", "48000"},
                                        {"USB/LatencySize", "32"},
                                        {"USB/SlowMode", "Enabled"}};
    IniFile::write("setting.ini", before);
    std::optional<Unreadable> holder(IniFile::path("setting.ini"));
    // The default of the buffer lowers the latency.
    fixture.connect(44100, 1024, 32);
    fixture.dialog->refreshFromDevice();
    QCOMPARE(fixture.latency()->currentText(), QString("24"));
    QCOMPARE(fixture.bufferSize()->currentText(), QString("192"));
    fixture.slowMode()->setCurrentText("Enabled");
    fixture.slowMode()->setCurrentText("Disabled");
    const QStringList lines = fixture.takeLog();
    QCOMPARE(lines.filter("Cannot save the settings yet").size(), 0);
    holder.reset();
    QCOMPARE(IniFile::read("setting.ini"), before);

    QVERIFY(retrySettingsFile());
    QCOMPARE(fixture.latency()->currentText(), QString("32"));
    QCOMPARE(fixture.bufferSize()->currentText(), QString("512"));
    QCOMPARE(fixture.sampleRate()->currentText(), QString("48000"));
    QCOMPARE(fixture.slowMode()->currentText(), QString("Disabled"));
    auto after = before;
    after["USB/SlowMode"] = "Disabled";
    QCOMPARE(IniFile::read("setting.ini"), after);
    const auto state = fixture.simulated.control().state();
    QCOMPARE(state.engine.bufferSize, 512U);
    QCOMPARE(state.engine.usbLatency, 32U);
    QVERIFY(fixture.takeLog().contains("已从配置文件加载控件状态"));
}

/// A choice that no device took would pass for applied when the next one comes.
void SettingsStorageTest::unreadFileAndALostDevice()
{
    IniFile::write("setting.ini", {{"USB/SlowMode", "Enabled"}});
    {
        const Unreadable holder(IniFile::path("setting.ini"));
        fixture.connect(44100, 192, 8);
        fixture.dialog->refreshFromDevice();
        fixture.dialog->reinitPending = true; // as the main window does
    }
    fixture.takeTrace();
    QVERIFY(retrySettingsFile());
    QCOMPARE(fixture.slowMode()->currentText(), QString("Disabled"));
    QCOMPARE(fixture.takeTrace(), QStringList());
    fixture.dialog->refreshFromDevice();
    QCOMPARE(fixture.slowMode()->currentText(), QString("Enabled"));
}

/// A choice that waits to be saved is the one that the next device gets.
void SettingsStorageTest::unsavedFile()
{
    IniFile::write("setting.ini", {{"USB/SlowMode", "Disabled"}});
    fixture.connect(44100, 192, 8);
    {
        const ReadOnly guard(IniFile::path("setting.ini"));
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
        QCOMPARE(fixture.stored("USB/SlowMode"), QString("Disabled"));
    }
    QVERIFY(retrySettingsFile());
    QCOMPARE(fixture.stored("USB/SlowMode"), QString("Enabled"));
}

/// The file is read at each arrival.
void SettingsStorageTest::changedByHand()
{
    fixture.connect(44100, 192, 8);
    fixture.dialog->refreshFromDevice();
    IniFile::write("setting.ini", {{"USB/SlowMode", "Enabled"}});
    fixture.dialog->refreshFromDevice();
    QCOMPARE(fixture.slowMode()->currentText(), QString("Enabled"));
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
