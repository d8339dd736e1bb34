#include "controls/button.h"
#include "controls/knob.h"
#include "images/image_compare.h"
#include "support/test_main.h"

#include <QTest>

namespace {

enum class Look { Plain, Gain, Small };

QList<double> pixelRatios()
{
    return {1.0, 2.0};
}

QString baselineName(const QString& name, double pixelRatio)
{
    return QStringLiteral("%1@%2x").arg(name).arg(pixelRatio);
}

void dress(Knob& knob, Look look)
{
    knob.resize(120, 120);
    if (look == Look::Plain)
        return;
    knob.textColor = QColor(0x00, 0xff, 0x7f);
    if (look == Look::Gain) {
        knob.arcColor = QColor(0xf1, 0xfa, 0x8c);
        knob.minimum = 0;
        knob.maximum = 42;
        knob.displayOffset = 9;
    } else {
        knob.resize(70, 70);
        knob.arcWidth = 3;
        knob.fontPointSize = 10;
    }
}

} // namespace

class ControlsImageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void knobs_data();
    void knobs();
    void buttons_data();
    void buttons();
    void knobEditor();
};

void ControlsImageTest::initTestCase()
{
    const QString missing = pinFont();
    QVERIFY2(missing.isEmpty(), qPrintable(missing));
}

void ControlsImageTest::knobs_data()
{
    QTest::addColumn<QString>("baseline");
    QTest::addColumn<double>("pixelRatio");
    QTest::addColumn<Look>("look");
    QTest::addColumn<int>("value");

    const auto rows = [](const char* name, Look look, int value) {
        for (const double pixelRatio : pixelRatios()) {
            const QString baseline = baselineName(QLatin1String(name), pixelRatio);
            QTest::newRow(qPrintable(baseline)) << baseline << pixelRatio << look << value;
        }
    };
    rows("knob-minimum", Look::Plain, -80);
    rows("knob-middle", Look::Plain, -37);
    rows("knob-maximum", Look::Plain, 6);
    rows("knob-gain-minimum", Look::Gain, 0);
    rows("knob-gain-middle", Look::Gain, 20);
    rows("knob-gain-maximum", Look::Gain, 42);
    rows("knob-small-minimum", Look::Small, -80);
    rows("knob-small-middle", Look::Small, -30);
    rows("knob-small-maximum", Look::Small, 6);
}

void ControlsImageTest::knobs()
{
    QFETCH(const QString, baseline);
    QFETCH(const double, pixelRatio);
    QFETCH(const Look, look);
    QFETCH(const int, value);

    Knob knob;
    dress(knob, look);
    knob.value = value;
    const ImageVerdict found = compareWithBaseline(renderOnPanel(knob, pixelRatio), baseline);
    QVERIFY2(found.same, qPrintable(found.text));
}

void ControlsImageTest::buttons_data()
{
    QTest::addColumn<QString>("baseline");
    QTest::addColumn<double>("pixelRatio");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("accent");
    QTest::addColumn<bool>("on");

    const auto rows = [](const char* name, const char* caption, const char* accent, bool on) {
        for (const double pixelRatio : pixelRatios()) {
            const QString baseline = baselineName(QLatin1String(name), pixelRatio);
            QTest::newRow(qPrintable(baseline))
                << baseline << pixelRatio << QString::fromLatin1(caption)
                << QString::fromLatin1(accent) << on;
        }
    };
    rows("button-off", "48V", "#ff1111", false);
    rows("button-on-green", "MIC", "#00ff7f", true);
    rows("button-on-orange", "20dB", "#ff7f00", true);
    rows("button-on-red", "48V", "#ff1111", true);
    rows("button-on-cyan", "DIRECT", "#00FFFF", true);
}

void ControlsImageTest::buttons()
{
    QFETCH(const QString, baseline);
    QFETCH(const double, pixelRatio);
    QFETCH(const QString, caption);
    QFETCH(const QString, accent);
    QFETCH(const bool, on);

    QWidget panel;
    panel.resize(100, 60);
    // Made before it has a parent, as a layout gets it: the glow is blurred by a share of the
    // width of that moment.
    Button button(caption);
    button.setParent(&panel);
    button.setFont(QFont(QStringLiteral("Segoe UI"), 9));
    button.onTextColor = accent;
    button.offTextColor = QStringLiteral("#8a95aa");
    button.onBackground = QStringLiteral("#1b1e23");
    button.glowColor = accent;
    button.setGeometry(10, 10, 80, 40);
    button.setOn(on);
    const ImageVerdict found = compareWithBaseline(renderOnPanel(panel, pixelRatio), baseline);
    QVERIFY2(found.same, qPrintable(found.text));
}

void ControlsImageTest::knobEditor()
{
    Knob knob;
    dress(knob, Look::Gain);
    knob.value = 20;
    renderOnPanel(knob, 1);
    QTest::mouseDClick(&knob, Qt::LeftButton, {}, knob.textRect.center());
    const ImageVerdict found =
        compareWithBaseline(renderOnPanel(knob, 2), QStringLiteral("knob-editor@2x"));
    QVERIFY2(found.same, qPrintable(found.text));
}

QUORVEL_TEST_MAIN(ControlsImageTest)

#include "controls_image_test.moc"
