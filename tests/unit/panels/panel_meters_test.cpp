#include "panel_fixture.h"
#include "support/test_main.h"

#include <QTest>
#include <QTimer>

#include <limits>

/// The levels that a panel shows, and when it reads them.
class PanelMetersTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(SimulatorControl::ka1); }
    void levels_data();
    void levels();
    void failureBeforeTheFirstReading_data() { addModelRows(); }
    void failureBeforeTheFirstReading();
    void timer_data() { addModelRows(); }
    void timer();
    void timerRunsDuringTheRestoring_data() { addModelRows(); }
    void timerRunsDuringTheRestoring();

private:
    /// The panel's only timer.
    QTimer& clock() const
    {
        const auto timers = fixture.panel->findChildren<QTimer*>();
        if (timers.size() != 1)
            qFatal("%d timers", static_cast<int>(timers.size()));
        return *timers.constFirst();
    }

    PanelFixture fixture;
};

namespace {

constexpr int patience = 30000; // ms
constexpr int fullScale = std::numeric_limits<int>::max();
constexpr int halfScale = 1073741824;

const QString failed = "Failed to read meter data from driver.";

} // namespace

void PanelMetersTest::levels_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QList<int>>("samples");
    QTest::addColumn<QStringList>("texts");
    const auto row = [](const char* name, const char* model, const QList<int>& samples,
                        const QStringList& texts) {
        QTest::newRow(name) << model << samples << texts;
    };
    const QList<int> different{fullScale, halfScale, 536870912, 0};
    row("ka1", "ka1", different, {"0.0 dB", "-18.1 dB"});
    row("ka2", "ka2", different, {"0.0 dB", "-6.0 dB", "-18.1 dB", "-18.1 dB"});
    row("ks", "ks", different, {"0.0 dB"});
    row("negative full scale; the mean", "ka1", {-fullScale, 0, halfScale, 536870912},
        {"0.0 dB", "-8.5 dB"});
    row("one; opposites", "ka1", {1, 0, 5000, -5000}, {"-186.6 dB", "-inf dB"});
    row("silence; a mean truncated toward zero", "ka1", {0, 0, -1, 0}, {"-inf dB", "-inf dB"});
    row("no positive counterpart; a sum that wraps to -2", "ka1",
        {std::numeric_limits<int>::min(), 0, fullScale, fullScale}, {"nan dB", "-186.6 dB"});
    row("half scale; a sum that wraps to the minimum", "ka1", {halfScale, 0, halfScale, halfScale},
        {"-6.0 dB", "-6.0 dB"});
}

void PanelMetersTest::levels()
{
    QFETCH(const QString, model);
    QFETCH(const QList<int>, samples);
    QFETCH(const QStringList, texts);
    fixture.simulated.control().setLevels({samples.cbegin(), samples.cend()});
    fixture.start(model);
    clock().setInterval(1);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.readOuts(), texts, patience);

    fixture.simulated.control().fail(0xFFDC2074, SimulatorControl::always, 31);
    fixture.simulated.control().setLevels(std::vector<std::int32_t>(4, 77));
    fixture.log().clear();
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.log().lines().isEmpty(), patience);
    QCOMPARE(fixture.log().lines().constFirst(), failed);
    QCOMPARE(fixture.readOuts(), texts);
}

void PanelMetersTest::failureBeforeTheFirstReading()
{
    fixture.simulated.control().fail(0xFFDC2074, SimulatorControl::always, 31);
    fixture.start(QString(QTest::currentDataTag()));
    clock().setInterval(1);
    fixture.log().clear();
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.log().lines().isEmpty(), patience);
    QCOMPARE(fixture.log().lines().constFirst(), failed);
    QCOMPARE(fixture.readOuts().count(QString("-160 dB")), fixture.readOuts().size());
    QVERIFY(!fixture.readOuts().isEmpty());
}

void PanelMetersTest::timer()
{
    QFETCH(const std::uint32_t, productId);
    fixture.plug(productId);
    fixture.start(QString(QTest::currentDataTag()));
    QCOMPARE(clock().interval(), 500);
    QVERIFY(clock().isActive());
    QVERIFY(!clock().isSingleShot());
}

/// The clock of the read-outs runs while the saved state goes to the device: after a long restoring
/// the first reading is due at once.
void PanelMetersTest::timerRunsDuringTheRestoring()
{
    QFETCH(const std::uint32_t, productId);
    fixture.plug(productId);
    fixture.simulated.control().delay(0xFFDC2040, 1, 600);
    fixture.start(QString(QTest::currentDataTag()));
    QVERIFY(clock().remainingTime() <= 0);
}

QUORVEL_TEST_MAIN(PanelMetersTest)
#include "panel_meters_test.moc"
