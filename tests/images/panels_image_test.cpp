#include "images/image_compare.h"
#include "panel_fixture.h"
#include "support/test_main.h"

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

QMap<QString, QString> mixedState(const QString& model)
{
    if (model == QLatin1String("ka1"))
        return {{"Dial/MicValue", "21"},
                {"Button/MicInstrIsChecked", "true"},
                {"Button/Mic48VIsChecked", "true"},
                {"Dial/HeadphoneValue", "-12"},
                {"Button/HeadphoneDimIsChecked", "true"},
                {"Dial/OtgToHpValue", "-30"}};
    if (model == QLatin1String("ka2"))
        return {{"Dial/Mic1Value", "20"},
                {"Dial/Mic2Value", "56"},
                {"Button/Mic148VIsChecked", "true"},
                {"Button/Mic220dBIsChecked", "true"},
                {"Button/MonitorMic1IsChecked", "true"},
                {"Dial/SpeakerValue", "-6"},
                {"Button/SpeakerMuteIsChecked", "true"},
                {"Dial/HeadphoneValue", "-24"},
                {"Button/HeadphoneDimIsChecked", "true"},
                {"Dial/OtgToSPValue", "-40"},
                {"Dial/OtgToHpValue", "6"}};
    return {{"Dial/MicValue", "30"},
            {"Button/MonitorMicIsChecked", "true"},
            {"Dial/HeadphoneValue", "0"},
            {"Button/HeadphoneMuteIsChecked", "true"}};
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
    QTest::addColumn<QString>("model");
    QTest::addColumn<std::uint32_t>("productId");
    QTest::addColumn<double>("pixelRatio");
    const auto rows = [](const char* model, std::uint32_t productId) {
        QTest::addRow("panel-%s@1x", model) << QString(model) << productId << 1.0;
        QTest::addRow("panel-%s@2x", model) << QString(model) << productId << 2.0;
    };
    rows("ka1", SimulatorControl::ka1);
    rows("ka2", SimulatorControl::ka2);
    rows("ks", SimulatorControl::ks);
}

void PanelsImageTest::panels()
{
    QFETCH(const QString, model);
    QFETCH(const std::uint32_t, productId);
    QFETCH(const double, pixelRatio);
    fixture.plug(productId);
    fixture.simulated.control().setLevels({107374182, 10737418, 214748364, 214748364});
    IniFile::write(model + ".ini", mixedState(model));
    fixture.start(model);
    fixture.settle();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.readOuts().constFirst(), QString("-26.0 dB"), 5000);
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
