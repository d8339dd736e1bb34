#include "controls/knob.h"
#include "panel_fixture.h"
#include "support/test_main.h"

#include <QTest>

#include <vector>

/// MUTE and DIM of every output in every combination and order.
class PanelMuteDimTest : public QObject
{
    Q_OBJECT

private slots:
    void clicks_data();
    void clicks();

private:
    PanelFixture fixture;
};

namespace {

/// Every sequence of four clicks on MUTE (m) and DIM (d). Their beginnings are all the shorter
/// ones.
QStringList sequences()
{
    QStringList found{QString()};
    for (int length = 0; length < 4; ++length) {
        QStringList longer;
        for (const QString& sequence : std::as_const(found))
            longer << sequence + u'm' << sequence + u'd';
        found = longer;
    }
    return found;
}

} // namespace

void PanelMuteDimTest::clicks_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<std::uint32_t>("productId");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<int>("leftCell");
    QTest::addColumn<QString>("sequence");
    const auto rows = [](const char* model, std::uint32_t productId, const char* output,
                         int leftCell) {
        for (const QString& sequence : sequences()) {
            QTest::addRow("%s %s %s", model, output, qPrintable(sequence))
                << model << productId << QByteArray(output) << leftCell << sequence;
        }
    };
    rows("ka1", SimulatorControl::ka1, "Headphone", 8192);
    rows("ka2", SimulatorControl::ka2, "Speaker", 8192);
    rows("ka2", SimulatorControl::ka2, "Headphone", 8196);
    rows("ks", SimulatorControl::ks, "Headphone", 8192);
}

/// After each click the output has the gain of its state, and no other cell has changed.
void PanelMuteDimTest::clicks()
{
    QFETCH(const QString, model);
    QFETCH(const std::uint32_t, productId);
    QFETCH(const QByteArray, output);
    QFETCH(const int, leftCell);
    QFETCH(const QString, sequence);
    const QByteArray volume = "Dial/" + output + "Value";
    fixture.plug(productId);
    IniFile::write(model + ".ini", {{QString::fromLatin1(volume), "0"}});
    fixture.start(model);
    fixture.settle();

    auto& control = fixture.simulated.control();
    const auto left = static_cast<std::size_t>(leftCell);
    std::vector<double> expected = control.mixerTable();
    QCOMPARE(expected.at(left), 1.0);
    bool muted = false;
    bool dimmed = false;
    for (const QChar which : sequence) {
        const char* name = which == u'm' ? "Mute" : "Dim";
        bool& state = which == u'm' ? muted : dimmed;
        state = !state;
        fixture.click(("Button/" + output + name + "IsChecked").constData());
        const double unmuted = dimmed ? 0.1 : 1.0;
        expected[left] = expected[left + 1] = muted ? 0.0 : unmuted;
        QCOMPARE(control.mixerTable(), expected);
    }
    QCOMPARE(fixture.knob(volume.constData())->value, 0);
}

QUORVEL_TEST_MAIN(PanelMuteDimTest)
#include "panel_mute_dim_test.moc"
