#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/test_main.h"

#include <QLabel>
#include <QTest>

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
    void readFailureLeavesTheTexts();
    void pace();

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

void PanelMetersTest::readFailureLeavesTheTexts()
{
    fixture.simulated.control().setLevel(0, 1073741824);
    fixture.simulated.control().setLevel(2, 1073741824);
    fixture.start<ka1>();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.label(0)->text(), QString("-6.0 dB"), 2000);
    const QString phone = fixture.label(1)->text();
    fixture.simulated.control().setLevel(0, 0);
    fixture.simulated.control().fail(0xFFDC2074, SimulatorControl::always, 31);
    fixture.log().clear();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.log().lines(),
                              QStringList{"Failed to read meter data from driver."}, 2000);
    QCOMPARE(fixture.label(0)->text(), QString("-6.0 dB"));
    QCOMPARE(fixture.label(1)->text(), phone);
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

QUORVEL_TEST_MAIN(PanelMetersTest)
#include "panel_meters_test.moc"
