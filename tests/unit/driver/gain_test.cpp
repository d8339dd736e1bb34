#include "driver/device_protocol.h"
#include "driver/gain.h"
#include "support/test_main.h"

#include <QTest>

#include <cmath>
#include <limits>

class GainTest : public QObject
{
    Q_OBJECT

private slots:
    void dbToGain_data();
    void dbToGain();
    void sampleToDb();
    void sampleToDbOfZeroIsMinusInfinity();
    void sampleToDbOfMinimumIsNan();
    void mixerCells();
};

void GainTest::dbToGain_data()
{
    QTest::addColumn<double>("dB");
    QTest::addColumn<double>("gain");
    QTest::addColumn<double>("tolerance");
    QTest::newRow("-80 is silence") << -80.0 << 0.0 << 0.0;
    QTest::newRow("below -80 is silence") << -80.1 << 0.0 << 0.0;
    QTest::newRow("far below") << -1e9 << 0.0 << 0.0;
    QTest::newRow("just below -80") << -80.01 << 0.0 << 0.0;
    QTest::newRow("just above -80") << -79.9 << 0.000101 << 0.0000005;
    QTest::newRow("-20") << -20.0 << 0.1 << 1e-15;
    QTest::newRow("unity") << 0.0 << 1.0 << 0.0;
    QTest::newRow("ceiling") << 6.0 << 1.9952623149688795 << 0.0;
    QTest::newRow("just above the ceiling") << 6.01 << 1.9952623149688795 << 0.0;
    QTest::newRow("above the ceiling") << 6.5 << 1.9952623149688795 << 0.0;
    QTest::newRow("far above") << 1e9 << 1.9952623149688795 << 0.0;
}

void GainTest::dbToGain()
{
    QFETCH(double, dB);
    QFETCH(double, gain);
    QFETCH(double, tolerance);
    const double result = ::dbToGain(dB);
    QVERIFY2(std::abs(result - gain) <= tolerance, qPrintable(QString::number(result, 'g', 17)));
}

void GainTest::sampleToDb()
{
    QCOMPARE(::sampleToDb(2147483647), 0.0);
    QCOMPARE(::sampleToDb(-2147483647), 0.0);
    QVERIFY(std::abs(::sampleToDb(1073741824) - -6.0206) < 0.0001);
    QVERIFY(std::abs(::sampleToDb(-1073741824) - -6.0206) < 0.0001);
}

void GainTest::sampleToDbOfZeroIsMinusInfinity()
{
    QCOMPARE(::sampleToDb(0), -std::numeric_limits<double>::infinity());
}

void GainTest::sampleToDbOfMinimumIsNan()
{
    QVERIFY(std::isnan(::sampleToDb(std::numeric_limits<std::int32_t>::min())));
}

void GainTest::mixerCells()
{
    QCOMPARE(MixerCell::route(2, 0), std::size_t{2050});
    QCOMPARE(MixerCell::route(3, 1), std::size_t{2083});
    QCOMPARE(MixerCell::route(2, 4), std::size_t{2178});
    QCOMPARE(MixerCell::route(3, 5), std::size_t{2211});
    QCOMPARE(MixerCell::output(5), std::size_t{8197});
    QCOMPARE(MixerCell::at(255, 31), std::size_t{8191});
    QCOMPARE(MixerCell::output(MixerCell::outputCount - 1), MixerTable().size() - 1);
}

QUORVEL_TEST_MAIN(GainTest)
#include "gain_test.moc"
