#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/test_main.h"

#include <QLabel>
#include <QTest>
#include <QTimer>

#include <limits>

class PanelMetersTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(1); }
    void startTexts();
    void micLevel_data();
    void micLevel();
    void phoneLevel_data();
    void phoneLevel();
    void ofEveryModel_data();
    void ofEveryModel();
    void readFailureLeavesTheTexts_data() { ofEveryModel_data(); }
    void readFailureLeavesTheTexts();
    void failureBeforeTheFirstReading_data() { addModelRows(); }
    void failureBeforeTheFirstReading();
    void pace();
    void timer_data() { addModelRows(); }
    void timer();
    void timerRunsDuringTheRestoring_data() { addModelRows(); }
    void timerRunsDuringTheRestoring();

private:
    PanelFixture fixture;
};

void PanelMetersTest::startTexts()
{
    fixture.start<ka1>();
    for (const int index : {0, 1}) {
        QCOMPARE(fixture.label(index)->text(), QString("-160 dB"));
        QCOMPARE(fixture.label(index)->styleSheet(), QString("color: #888888; font-size: 8px;"));
    }
    QVERIFY(fixture.label(2) == nullptr);
}

void PanelMetersTest::micLevel_data()
{
    QTest::addColumn<int>("sample");
    QTest::addColumn<QString>("text");
    QTest::newRow("full scale") << 2147483647 << "0.0 dB";
    QTest::newRow("negative full scale") << -2147483647 << "0.0 dB";
    QTest::newRow("half scale") << 1073741824 << "-6.0 dB";
    QTest::newRow("one") << 1 << "-186.6 dB";
    QTest::newRow("silence") << 0 << "-inf dB";
    QTest::newRow("no positive counterpart") << std::numeric_limits<int>::min() << "nan dB";
}

void PanelMetersTest::micLevel()
{
    QFETCH(int, sample);
    QFETCH(QString, text);
    fixture.simulated.control().setLevel(0, sample);
    fixture.start<ka1>();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.label(0)->text(), text, 2000);
}

void PanelMetersTest::phoneLevel_data()
{
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    QTest::addColumn<QString>("text");
    QTest::newRow("mean") << 1073741824 << 536870912 << "-8.5 dB";
    QTest::newRow("mean truncated toward zero") << -1 << 0 << "-inf dB";
    QTest::newRow("sum wraps to -2") << 2147483647 << 2147483647 << "-186.6 dB";
    QTest::newRow("sum wraps to the minimum") << 1073741824 << 1073741824 << "-6.0 dB";
    QTest::newRow("opposite") << 5000 << -5000 << "-inf dB";
}

void PanelMetersTest::phoneLevel()
{
    QFETCH(int, left);
    QFETCH(int, right);
    QFETCH(QString, text);
    fixture.simulated.control().setLevel(2, left);
    fixture.simulated.control().setLevel(3, right);
    fixture.start<ka1>();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.label(1)->text(), text, 2000);
}

void PanelMetersTest::ofEveryModel_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QList<int>>("samples");
    QTest::addColumn<QStringList>("texts");
    const QList<int> different{2147483647, 1073741824, 536870912, 0};
    const QList<int> wrapping{1073741824, 0, 2147483647, 2147483640};
    QTest::newRow("ka1") << "ka1" << different << QStringList{"0.0 dB", "-18.1 dB"};
    QTest::newRow("ka1, phone wraps") << "ka1" << wrapping << QStringList{"-6.0 dB", "-174.6 dB"};
    QTest::newRow("ka2") << "ka2" << different
                         << QStringList{"0.0 dB", "-6.0 dB", "-18.1 dB", "-18.1 dB"};
    QTest::newRow("ka2, phone wraps")
        << "ka2" << wrapping << QStringList{"-6.0 dB", "-inf dB", "-174.6 dB", "-174.6 dB"};
    QTest::newRow("ks") << "ks" << different << QStringList{"0.0 dB"};
}

void PanelMetersTest::ofEveryModel()
{
    QFETCH(QString, model);
    QFETCH(QList<int>, samples);
    QFETCH(QStringList, texts);
    fixture.simulated.control().setLevels({samples.cbegin(), samples.cend()});
    fixture.start(model);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.readOuts(), texts, 5000);
}

void PanelMetersTest::readFailureLeavesTheTexts()
{
    ofEveryModel();
    if (QTest::currentTestFailed())
        return;
    QFETCH(QStringList, texts);
    fixture.simulated.control().fail(0xFFDC2074, SimulatorControl::always, 31);
    fixture.simulated.control().setLevels(std::vector<std::int32_t>(4, 77));
    fixture.log().clear();
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.log().lines().isEmpty(), 5000);
    QCOMPARE(fixture.log().lines().constFirst(), QString("Failed to read meter data from driver."));
    QCOMPARE(fixture.readOuts(), texts);
}

void PanelMetersTest::failureBeforeTheFirstReading()
{
    fixture.simulated.control().fail(0xFFDC2074, SimulatorControl::always, 31);
    fixture.start(QString(QTest::currentDataTag()));
    fixture.log().clear();
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.log().lines().isEmpty(), 5000);
    QCOMPARE(fixture.log().lines().constFirst(), QString("Failed to read meter data from driver."));
    QCOMPARE(fixture.readOuts().count(QString("-160 dB")), fixture.readOuts().size());
    QVERIFY(!fixture.readOuts().isEmpty());
}

void PanelMetersTest::pace()
{
    fixture.start<ka1>();
    fixture.simulated.control().clearTrace();
    QTest::qWait(1750);
    const qsizetype reads =
        fixture.simulated.takeTrace().count(TraceText::request(1, 0xFFDC2074, 768));
    // Three; a busy machine may shift one across the edge.
    QVERIFY2(reads >= 2 && reads <= 4, qPrintable(QString::number(reads)));
}

void PanelMetersTest::timer()
{
    QFETCH(const std::uint32_t, productId);
    fixture.plug(productId);
    fixture.start(QString(QTest::currentDataTag()));
    const auto timers = fixture.panel->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst()->interval(), 500);
    QVERIFY(timers.constFirst()->isActive());
    QVERIFY(!timers.constFirst()->isSingleShot());
}

/// The clock of the read-outs runs while the saved state goes to the device: after a long restoring
/// the first reading is due at once.
void PanelMetersTest::timerRunsDuringTheRestoring()
{
    QFETCH(const std::uint32_t, productId);
    fixture.plug(productId);
    fixture.simulated.control().delay(0xFFDC2040, 1, 600);
    fixture.start(QString(QTest::currentDataTag()));
    const auto timers = fixture.panel->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.constFirst()->remainingTime() <= 0);
}

QUORVEL_TEST_MAIN(PanelMetersTest)
#include "panel_meters_test.moc"
