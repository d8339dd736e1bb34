#include "settings/settings_choices.h"
#include "support/test_main.h"

#include <QTest>

class SettingsChoicesTest : public QObject
{
    Q_OBJECT

private slots:
    void items();
    void meanings();
    void unknownTexts();
    void latencyForBuffer_data();
    void latencyForBuffer();
};

void SettingsChoicesTest::items()
{
    using namespace SettingsChoices;
    QCOMPARE(bufferSizes(), (QStringList{"48", "64", "96", "128", "192", "256", "512", "1024"}));
    QCOMPARE(usbLatencies(), (QStringList{"8", "16", "24", "32"}));
    QCOMPARE(sampleRates(), (QStringList{"44100", "48000"}));
    QCOMPARE(slowModes(), (QStringList{"Disabled", "Enabled"}));
}

void SettingsChoicesTest::meanings()
{
    using namespace SettingsChoices;
    for (const QString& text : bufferSizes())
        QCOMPARE(bufferSize(text).value(), text.toUInt());
    for (const QString& text : usbLatencies())
        QCOMPARE(usbLatency(text), text.toUInt());
    QCOMPARE(sampleRate("44100").value(), 44100U);
    QCOMPARE(sampleRate("48000").value(), 48000U);
    QCOMPARE(slowMode("Enabled").value(), true);
    QCOMPARE(slowMode("Disabled").value(), false);
}

void SettingsChoicesTest::unknownTexts()
{
    using namespace SettingsChoices;
    QVERIFY(!bufferSize("100").has_value());
    QVERIFY(!bufferSize("").has_value());
    QVERIFY(!sampleRate("96000").has_value());
    QVERIFY(!slowMode("enabled").has_value());
    QCOMPARE(usbLatency("12"), 8U);
    QCOMPARE(usbLatency(""), 8U);
}

void SettingsChoicesTest::latencyForBuffer_data()
{
    QTest::addColumn<std::uint32_t>("samples");
    QTest::addColumn<std::uint32_t>("frames");
    QTest::newRow("48") << 48U << 8U;
    QTest::newRow("64") << 64U << 8U;
    QTest::newRow("96") << 96U << 16U;
    QTest::newRow("128") << 128U << 16U;
    QTest::newRow("192") << 192U << 24U;
    QTest::newRow("256") << 256U << 24U;
    QTest::newRow("512") << 512U << 32U;
    QTest::newRow("1024") << 1024U << 32U;
}

void SettingsChoicesTest::latencyForBuffer()
{
    QFETCH(std::uint32_t, samples);
    QFETCH(std::uint32_t, frames);
    QCOMPARE(SettingsChoices::latencyForBuffer(samples), frames);
}

QUORVEL_TEST_MAIN(SettingsChoicesTest)
#include "settings_choices_test.moc"
