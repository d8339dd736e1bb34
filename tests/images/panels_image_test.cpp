#include "images/image_compare.h"
#include "panel_fixture.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QApplication>
#include <QTest>

/// The whole panels with some controls on and some off.
class PanelsImageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void panels_data();
    void panels();

private:
    PanelFixture fixture;
};

namespace {

/// Every other button on, and no two knobs alike. Gains go up from zero, levels down.
QMap<QString, QString> mixedState(const PanelTable::Model& model)
{
    QMap<QString, QString> state;
    int step = 0;
    bool isOn = false;
    for (const PanelTable::Control& control : model.controls) {
        const bool isGain = control.text == std::string_view("<Gain>");
        if (control.isKnob())
            state.insert(control.key, QString::number(++step * (isGain ? 15 : -8)));
        else if (control.isButton())
            state.insert(control.key, (isOn = !isOn) ? "true" : "false");
    }
    return state;
}

} // namespace

void PanelsImageTest::initTestCase()
{
    const QString missing = pinFont();
    QVERIFY2(missing.isEmpty(), qPrintable(missing));
    QApplication::setFont(QFont(QStringLiteral("Segoe UI"), 9));
    QApplication::setStyle(QStringLiteral("fusion"));
}

void PanelsImageTest::panels_data()
{
    QTest::addColumn<PanelTable::Model>("model");
    QTest::addColumn<double>("pixelRatio");
    for (const PanelTable::Model& model : PanelTable::models) {
        QTest::addRow("panel-%s@1x", model.name) << model << 1.0;
        QTest::addRow("panel-%s@2x", model.name) << model << 2.0;
    }
}

void PanelsImageTest::panels()
{
    QFETCH(const PanelTable::Model, model);
    QFETCH(const double, pixelRatio);
    fixture.plug(model.productId);
    fixture.simulated.control().setLevels({107374182, 10737418, 214748364, 214748364});
    IniFile::write(QString(model.name) + ".ini", mixedState(model));
    fixture.start(model.name);
    fixture.settle();
    QUORVEL_TRY_COMPARE(fixture.readOuts().constFirst(), QString("-26.0 dB"));
    // As a window of its own, the panel gave the focus to its first control.
    fixture.panel->setFocus();
    // Less than the smallest button's caption.
    constexpr ImageTolerance tolerance{.share = 0.0002};
    const ImageVerdict found = compareWithBaseline(renderOnPanel(*fixture.panel, pixelRatio),
                                                   QTest::currentDataTag(), tolerance);
    QVERIFY2(found.same, qPrintable(found.text));
}

QUORVEL_TEST_MAIN(PanelsImageTest)
#include "panels_image_test.moc"
