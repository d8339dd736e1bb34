#include "settings/settings_choices.h"
#include "support/test_main.h"

#include <QTest>

using SettingsChoices::Choice;
using Choices = std::span<const Choice>;
Q_DECLARE_METATYPE(Choices)

class SettingsChoicesTest : public QObject
{
    Q_OBJECT

private slots:
    void values_data();
    void values();
    void latencyForBuffer_data();
    void latencyForBuffer();
};

void SettingsChoicesTest::values_data()
{
    QTest::addColumn<Choices>("choices");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QList<int>>("values");
    QTest::addColumn<QStringList>("unknownTexts");
    QTest::newRow("buffer size") << Choices(SettingsChoices::bufferSizes)
                                 << QStringList{"48",  "64",  "96",  "128",
                                                "192", "256", "512", "1024"}
                                 << QList{48, 64, 96, 128, 192, 256, 512, 1024}
                                 << QStringList{"", "100", "4", "480", "48 ", "0x40"};
    QTest::newRow("USB latency") << Choices(SettingsChoices::usbLatencies)
                                 << QStringList{"8", "16", "24", "32"} << QList{8, 16, 24, 32}
                                 << QStringList{"", "12", "08"};
    QTest::newRow("sample rate") << Choices(SettingsChoices::sampleRates)
                                 << QStringList{"44100", "48000"} << QList{44100, 48000}
                                 << QStringList{"", "96000"};
    QTest::newRow("slow mode") << Choices(SettingsChoices::slowModes)
                               << QStringList{"Disabled", "Enabled"} << QList{0, 1}
                               << QStringList{"", "enabled", "1", "true"};
}

void SettingsChoicesTest::values()
{
    QFETCH(const Choices, choices);
    QFETCH(const QStringList, texts);
    QFETCH(const QList<int>, values);
    QFETCH(const QStringList, unknownTexts);
    QCOMPARE(choices.size(), std::size_t(texts.size()));
    for (qsizetype i = 0; i < texts.size(); ++i) {
        QCOMPARE(QString(choices[std::size_t(i)].text), texts[i]);
        QCOMPARE(int(SettingsChoices::valueOf(texts[i], choices).value()), values[i]);
    }
    for (const QString& text : unknownTexts)
        QVERIFY(!SettingsChoices::valueOf(text, choices));
}

void SettingsChoicesTest::latencyForBuffer_data()
{
    QTest::addColumn<std::uint32_t>("frames");
    QTest::newRow("48") << 8U;
    QTest::newRow("64") << 8U;
    QTest::newRow("96") << 16U;
    QTest::newRow("128") << 16U;
    QTest::newRow("192") << 24U;
    QTest::newRow("256") << 24U;
    QTest::newRow("512") << 32U;
    QTest::newRow("1024") << 32U;
}

void SettingsChoicesTest::latencyForBuffer()
{
    QFETCH(const std::uint32_t, frames);
    QCOMPARE(SettingsChoices::latencyForBuffer(QByteArray(QTest::currentDataTag()).toUInt()),
             frames);
}

QUORVEL_TEST_MAIN(SettingsChoicesTest)
#include "settings_choices_test.moc"
