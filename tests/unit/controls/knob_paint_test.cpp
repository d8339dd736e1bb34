#include "controls/knob.h"
#include "support/test_main.h"

#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

/// What the baselines of the picture tests do not show: exact numbers, members that no panel sets,
/// and that nothing old is left in the pictures that a knob keeps.
class KnobPaintTest : public QObject
{
    Q_OBJECT

private slots:
    void arcEndsAtTheValue_data();
    void arcEndsAtTheValue();
    void spanIsCutToSixteenths_data();
    void spanIsCutToSixteenths();
    void changedLook_data();
    void changedLook();
    void changedScale();
    void liesOnThePixelsOfTheDevice_data();
    void liesOnThePixelsOfTheDevice();
    void fontOfItsOwn();
    void oddNumbers_data();
    void oddNumbers();
};

namespace {

constexpr QRgb panel = 0xff2c313c;
constexpr QRgb track = 0xff44475a;
constexpr QRgb arc = 0xff00ffff;
constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

/// The knob as it is, with the upper left corner at `place`.
QImage render(Knob& knob, double pixelRatio = 1, QPoint place = {})
{
    const QSizeF size = QSizeF(knob.width() + place.x(), knob.height() + place.y()) * pixelRatio;
    QImage image(size.toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(panel);
    knob.render(&image, place, {}, QWidget::DrawChildren);
    return image;
}

QImage picture(Knob& knob, int width = 120, int height = 120)
{
    knob.resize(width, height);
    return render(knob);
}

/// The pixel on the middle of the arcs of a knob of 120 pixels, at this angle in degrees,
/// counted anticlockwise from three o'clock.
QRgb onArc(const QImage& image, double degrees)
{
    constexpr double radius = 53;
    const double angle = degrees * std::numbers::pi / 180.0;
    return image.pixel(int(60 + radius * std::cos(angle)), int(60 - radius * std::sin(angle)));
}

int count(const QImage& image, QRgb color)
{
    int found = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found += image.pixel(x, y) == color ? 1 : 0;
    return found;
}

/// By how many levels a channel differs at the most.
int largestDifference(const QImage& one, const QImage& other)
{
    int worst = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            worst = std::max({worst, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                              std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return worst;
}

} // namespace

void KnobPaintTest::arcEndsAtTheValue_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<double>("span");

    QTest::newRow("whole int range") << lowest << highest << 0 << 135.0;
    QTest::newRow("empty range") << 5 << 5 << 5 << 0.0;
    QTest::newRow("crossed bounds") << 10 << -10 << 10 << 0.0;
    QTest::newRow("crossed bounds, half") << 10 << -10 << 0 << 135.0;
}

void KnobPaintTest::arcEndsAtTheValue()
{
    QFETCH(const int, minimum);
    QFETCH(const int, maximum);
    QFETCH(const int, value);
    QFETCH(const double, span);

    Knob knob;
    knob.minimum = minimum;
    knob.maximum = maximum;
    knob.value = value;
    const QImage image = picture(knob);
    // The round end of 3.5 pixels adds 3.8 degrees.
    for (double passed = 2; passed < span; passed += 2)
        QCOMPARE(onArc(image, 225 - passed), arc);
    for (double left = span + (span == 0 ? 0 : 6); left < 270; left += 2)
        QCOMPARE(onArc(image, 225 - left), track);
    QCOMPARE(onArc(image, 270), panel);
    QCOMPARE(count(image, arc) == 0, span == 0);
    QCOMPARE(count(image, track) == 0, span == 270);
}

void KnobPaintTest::spanIsCutToSixteenths_data()
{
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("span");

    // 270 * 16 / maximum for a value of 1.
    QTest::newRow("617.14") << 7 << 617;
    QTest::newRow("187.83") << 23 << 187;
    QTest::newRow("360") << 12 << 360;
}

void KnobPaintTest::spanIsCutToSixteenths()
{
    QFETCH(const int, maximum);
    QFETCH(const int, span);

    // Large, so that a sixteenth of a degree shows.
    constexpr int size = 1000;
    Knob knob;
    knob.minimum = 0;
    knob.maximum = maximum;
    knob.value = 1;
    knob.showText = false;
    knob.showTrack = false;
    knob.knobRatio = 0.5;
    const QImage image = picture(knob, size, size);

    const auto drawn = [&image](int sixteenths) {
        QImage expected(image.size(), image.format());
        expected.fill(panel);
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::Antialiasing);
        QPen pen(QColor::fromRgb(arc), 7);
        pen.setCapStyle(Qt::RoundCap);
        painter.setPen(pen);
        painter.drawArc(QRectF(7, 7, size - 14, size - 14), 225 * 16, -sixteenths);
        return expected;
    };
    // All but the cap in the middle.
    const QRect leftSide(0, 0, 200, size);
    QCOMPARE(image.copy(leftSide), drawn(span).copy(leftSide));
    QVERIFY(image.copy(leftSide) != drawn(span + 1).copy(leftSide));
    QVERIFY(image.copy(leftSide) != drawn(span - 1).copy(leftSide));
}

void KnobPaintTest::changedLook_data()
{
    using Change = std::function<void(Knob&)>;
    QTest::addColumn<Change>("change");
    const auto row = [](const char* name, const Change& change) { QTest::newRow(name) << change; };
    row("value", [](Knob& knob) { knob.value = 3; });
    row("arc", [](Knob& knob) { knob.arcColor = Qt::red; });
    row("track", [](Knob& knob) { knob.trackColor = QColor(QStringLiteral("#44475b")); });
    row("no track", [](Knob& knob) { knob.showTrack = false; });
    row("square ends", [](Knob& knob) { knob.roundCap = false; });
    row("thinner arcs", [](Knob& knob) { knob.arcWidth = 6; });
    row("smaller cap", [](Knob& knob) { knob.knobRatio = 0.7; });
    row("size", [](Knob& knob) { knob.resize(119, 120); });
}

/// What is set later looks as if it had been so from the beginning.
void KnobPaintTest::changedLook()
{
    QFETCH(const std::function<void(Knob&)>, change);
    for (const double pixelRatio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        Knob knob;
        Knob fresh;
        for (Knob* each : {&knob, &fresh}) {
            each->resize(120, 120);
            each->value = -37;
        }
        const QImage before = render(knob, pixelRatio);
        change(knob);
        change(fresh);
        QVERIFY(render(knob, pixelRatio) != before);
        QCOMPARE(render(knob, pixelRatio), render(fresh, pixelRatio));
    }
}

/// As when the window moves between monitors, and within one of them.
void KnobPaintTest::changedScale()
{
    Knob knob;
    knob.resize(70, 70);
    for (const double pixelRatio : {1.0, 1.5, 2.0, 1.25, 1.0, 1.75, 3.0}) {
        for (const QPoint place : {QPoint(), QPoint(1, 2), QPoint(2, 1), QPoint(40, 10)}) {
            Knob fresh;
            fresh.resize(70, 70);
            QCOMPARE(render(knob, pixelRatio, place), render(fresh, pixelRatio, place));
        }
    }
}

void KnobPaintTest::liesOnThePixelsOfTheDevice_data()
{
    QTest::addColumn<double>("pixelRatio");
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0})
        QTest::addRow("%g", ratio) << ratio;
}

/// The track, which is painted by way of a picture, and the value's arc, which is not, cover the
/// same pixels to the same degree, wherever on a pixel the knob begins.
void KnobPaintTest::liesOnThePixelsOfTheDevice()
{
    QFETCH(const double, pixelRatio);
    Knob empty;
    empty.resize(70, 70);
    empty.showText = false;
    empty.trackColor = empty.arcColor;
    Knob full;
    full.resize(70, 70);
    full.showText = false;
    full.showTrack = false;
    full.value = full.maximum;
    for (const QPoint place : {QPoint(), QPoint(1, 2), QPoint(2, 1), QPoint(3, 3)}) {
        const int found =
            largestDifference(render(empty, pixelRatio, place), render(full, pixelRatio, place));
        QVERIFY2(found <= 1, qPrintable(QString::number(found)));
    }
}

void KnobPaintTest::fontOfItsOwn()
{
    Knob knob;
    knob.fontPointSize = 20;
    const QImage usual = picture(knob);
    const QStringList families = QFontDatabase::families();
    const auto differs = [&](const QString& family) {
        knob.fontFamily = family;
        const QImage image = picture(knob);
        return image != usual &&
               knob.textRect == QFontMetrics(QFont(family, 20), &image)
                                    .boundingRect(image.rect(), Qt::AlignCenter, "-80dB");
    };
    QVERIFY2(std::any_of(families.cbegin(), families.cend(), differs),
             qPrintable(families.join(u' ')));
}

void KnobPaintTest::oddNumbers_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("arcWidth");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<int>("size");

    QTest::newRow("above an empty range") << 5 << 5 << 6 << 7 << 0.8 << 120;
    QTest::newRow("far beyond the range") << -80 << -79 << highest << 7 << 0.8 << 120;
    QTest::newRow("lowest value") << 0 << highest << lowest << 7 << 0.8 << 120;
    QTest::newRow("smaller than the arc") << -80 << 6 << 0 << 7 << 0.8 << 8;
    QTest::newRow("one pixel") << -80 << 6 << 0 << 7 << 0.8 << 1;
    QTest::newRow("huge ratio") << -80 << 6 << 0 << 7 << 1e300 << 120;
    QTest::newRow("ratio that is no number") << -80 << 6 << 0 << 7 << std::nan("") << 120;
}

/// Nothing to see but that it ends, cleanly under the sanitizers, and leaves the value alone.
void KnobPaintTest::oddNumbers()
{
    QFETCH(const int, minimum);
    QFETCH(const int, maximum);
    QFETCH(const int, value);
    QFETCH(const int, arcWidth);
    QFETCH(const double, ratio);
    QFETCH(const int, size);

    Knob knob;
    knob.minimum = minimum;
    knob.maximum = maximum;
    knob.value = value;
    knob.arcWidth = arcWidth;
    knob.knobRatio = ratio;
    const QImage image = picture(knob, size, size);
    QVERIFY(!image.isNull());
    QCOMPARE(knob.value, value);
    QVERIFY(!knob.textRect.isNull());
}

QUORVEL_TEST_MAIN(KnobPaintTest)

#include "knob_paint_test.moc"
