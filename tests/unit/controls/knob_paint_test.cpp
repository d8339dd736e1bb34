#include "controls/knob.h"
#include "support/test_main.h"

#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

constexpr QRgb panel = 0xff2c313c;
constexpr QRgb track = 0xff44475a;
constexpr QRgb arc = 0xff00ffff;

QImage picture(Knob& knob, int width = 120, int height = 120)
{
    knob.resize(width, height);
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(panel);
    knob.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

/// The pixel on the middle of the arcs of a knob of 120 pixels, at this angle in degrees,
/// counted anticlockwise from three o'clock.
QRgb onArc(const QImage& image, double degrees, double radius = 53)
{
    const double angle = degrees * std::numbers::pi / 180.0;
    return image.pixel(int(60 + radius * std::cos(angle)), int(60 - radius * std::sin(angle)));
}

bool isGrey(QRgb pixel, int level, int tolerance = 2)
{
    return std::abs(qRed(pixel) - level) <= tolerance &&
           std::abs(qGreen(pixel) - level) <= tolerance &&
           std::abs(qBlue(pixel) - level) <= tolerance;
}

int count(const QImage& image, QRgb color)
{
    int found = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found += image.pixel(x, y) == color ? 1 : 0;
    return found;
}

} // namespace

class KnobPaintTest : public QObject
{
    Q_OBJECT

private slots:
    void arcAtTheMinimum();
    void arcAtTheMaximum();
    void arcEndsAtTheValue_data();
    void arcEndsAtTheValue();
    void spanIsCutToSixteenths_data();
    void spanIsCutToSixteenths();
    void colorsOfItsOwn();
    void wideKnob();
    void highKnob();
    void withoutTrack();
    void arcWidthAndRoundCap();
    void cap();
    void capFollowsTheRatio();
    void printedText_data();
    void printedText();
    void fontOfItsOwn();
    void fontFamilyOfItsOwn();
    void textOfAWideKnob();
    void hiddenText();
    void oddNumbers_data();
    void oddNumbers();
};

void KnobPaintTest::arcAtTheMinimum()
{
    Knob knob;
    const QImage image = picture(knob);
    for (const double degrees : {225.0, 180.0, 135.0, 90.0, 45.0, 0.0, 315.0})
        QCOMPARE(onArc(image, degrees), track);
    QCOMPARE(onArc(image, 270), panel);
    QCOMPARE(count(image, arc), 0);
}

void KnobPaintTest::arcAtTheMaximum()
{
    Knob knob;
    knob.value = 6;
    const QImage image = picture(knob);
    for (const double degrees : {225.0, 180.0, 135.0, 90.0, 45.0, 0.0, 315.0})
        QCOMPARE(onArc(image, degrees), arc);
    QCOMPARE(onArc(image, 270), panel);
    QCOMPARE(count(image, track), 0);
}

void KnobPaintTest::arcEndsAtTheValue_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<double>("end");

    QTest::newRow("half") << -80 << 6 << -37 << 90.0;
    QTest::newRow("gain, a third") << 0 << 42 << 14 << 135.0;
    QTest::newRow("gain, two thirds") << 0 << 42 << 28 << 45.0;
    QTest::newRow("0 dB") << -80 << 6 << 0 << 225.0 - 80 * 270.0 / 86;
    QTest::newRow("whole int range")
        << std::numeric_limits<int>::min() << std::numeric_limits<int>::max() << 0 << 90.0;
}

void KnobPaintTest::arcEndsAtTheValue()
{
    QFETCH(const int, minimum);
    QFETCH(const int, maximum);
    QFETCH(const int, value);
    QFETCH(const double, end);

    Knob knob;
    knob.minimum = minimum;
    knob.maximum = maximum;
    knob.value = value;
    const QImage image = picture(knob);
    QCOMPARE(onArc(image, 220), arc);
    // The cap of 3.5 pixels adds 3.8 degrees.
    QCOMPARE(onArc(image, end - 2), arc);
    QCOMPARE(onArc(image, end - 6), track);
    QCOMPARE(onArc(image, 320), track);
}

void KnobPaintTest::spanIsCutToSixteenths_data()
{
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("span");

    // 270 * 16 / maximum for a value of 1.
    QTest::newRow("617.14") << 7 << 617;
    QTest::newRow("392.73") << 11 << 392;
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

void KnobPaintTest::colorsOfItsOwn()
{
    Knob knob;
    knob.trackColor = QColor(0x11, 0x22, 0x33);
    knob.arcColor = QColor(0xf1, 0xfa, 0x8c);
    knob.textColor = QColor(0x00, 0xff, 0x7f);
    knob.value = -37;
    const QImage image = picture(knob);
    QCOMPARE(onArc(image, 135), 0xfff1fa8c);
    QCOMPARE(onArc(image, 45), 0xff112233);
    QVERIFY(count(image, 0xff00ff7f) > 0);
    QCOMPARE(count(image, 0xffff79c6), 0);
    QCOMPARE(count(image, track), 0);
    QCOMPARE(count(image, arc), 0);
}

void KnobPaintTest::wideKnob()
{
    Knob knob;
    knob.showText = false;
    const QImage image = picture(knob, 200, 120);
    // The track follows the whole rectangle, inset by 7 on each side.
    QCOMPARE(image.pixel(100, 7), track);
    QCOMPARE(image.pixel(7, 60), track);
    QCOMPARE(image.pixel(192, 60), track);
    // The cap is a circle and takes its measures from the width: D = 186, s = 148.8, the upper cap
    // from trunc(18.6) + 7 = 25 on, 148 wide and high, the bevel from trunc(21.576) + 7 = 28 on.
    QCOMPARE(image.pixel(23, 99), panel);
    QVERIFY(isGrey(image.pixel(27, 99), 30, 3));
    QVERIFY(isGrey(image.pixel(99, 27), 30, 4));
    QCOMPARE(image.pixel(99, 23), panel);
    QVERIFY(isGrey(image.pixel(171, 99), 30));
    QVERIFY(isGrey(image.pixel(175, 99), 20));
    QCOMPARE(image.pixel(178, 99), panel);
}

void KnobPaintTest::highKnob()
{
    Knob knob;
    knob.showText = false;
    knob.value = 6;
    const QImage image = picture(knob, 120, 200);
    QCOMPARE(image.pixel(60, 7), arc);
    QCOMPARE(image.pixel(60, 192), panel);
    QCOMPARE(image.pixel(7, 100), arc);
    QCOMPARE(image.pixel(112, 100), arc);
    // As on a square of 120 pixels, at its place in the upper left corner.
    QCOMPARE(image.pixel(59, 15), panel);
    QVERIFY(isGrey(image.pixel(59, 18), 30));
    QVERIFY(isGrey(image.pixel(61, 102), 20));
    QCOMPARE(image.pixel(61, 104), panel);
}

void KnobPaintTest::withoutTrack()
{
    Knob knob;
    knob.showTrack = false;
    knob.value = -37;
    const QImage image = picture(knob);
    QCOMPARE(onArc(image, 135), arc);
    QCOMPARE(onArc(image, 45), panel);
    QCOMPARE(count(image, track), 0);
}

void KnobPaintTest::arcWidthAndRoundCap()
{
    Knob knob;
    knob.value = 6;
    QImage image = picture(knob);
    // The stroke of 7 pixels lies across the circle of radius 53.
    QCOMPARE(onArc(image, 90, 56), arc);
    QCOMPARE(onArc(image, 90, 58), panel);
    QCOMPARE(onArc(image, 90, 51), arc);
    QCOMPARE(onArc(image, 90, 48), panel);
    QCOMPARE(onArc(image, 227), arc);

    // The pen's own cap is square and fills the corners which the round one leaves.
    const int round = count(image, arc);
    knob.roundCap = false;
    image = picture(knob);
    QVERIFY(count(image, arc) > round);

    knob.arcWidth = 3;
    image = picture(knob);
    QCOMPARE(image.pixel(60, 3), arc);
    QCOMPARE(image.pixel(60, 0), panel);
    QCOMPARE(image.pixel(60, 5), panel);
}

void KnobPaintTest::cap()
{
    Knob knob;
    knob.showText = false;
    const QImage image = picture(knob);
    // The inner cap covers 17 to 101, the bevel below it 19 to 103, both lit from the widget's
    // corner: white there, darkest from 53 pixels on (the bevel from 63.6 pixels on).
    QVERIFY(isGrey(image.pixel(60, 60), 30));
    QVERIFY(isGrey(image.pixel(32, 32), int(255 - 225 * std::hypot(32.5, 32.5) / 53), 3));
    QVERIFY(isGrey(image.pixel(59, 18), 30));
    QCOMPARE(image.pixel(59, 15), panel);
    QCOMPARE(image.pixel(15, 59), panel);
    QCOMPARE(image.pixel(28, 28), panel);
    QVERIFY(isGrey(image.pixel(89, 89), 20));
    QCOMPARE(image.pixel(92, 92), panel);
    QVERIFY(isGrey(image.pixel(61, 102), 20));
    QCOMPARE(image.pixel(61, 104), panel);
}

void KnobPaintTest::capFollowsTheRatio()
{
    Knob knob;
    knob.showText = false;
    knob.knobRatio = 0.5;
    const QImage image = picture(knob);
    // s = 53: the inner cap covers trunc(26.5) + 7 = 33 to 86.
    QCOMPARE(image.pixel(59, 31), panel);
    QVERIFY(isGrey(image.pixel(59, 35), 30));
    QVERIFY(isGrey(image.pixel(59, 85), 30));
    QCOMPARE(image.pixel(60, 89), panel);
}

void KnobPaintTest::printedText_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("text");

    const QString unit = QStringLiteral("dB");
    QTest::newRow("lowest") << -80 << 0 << unit << QStringLiteral("-80dB");
    QTest::newRow("zero") << 0 << 0 << unit << QStringLiteral("0dB");
    QTest::newRow("zero with offset") << 0 << 9 << unit << QStringLiteral("0dB");
    QTest::newRow("one with offset") << 1 << 9 << unit << QStringLiteral("10dB");
    QTest::newRow("offset gives zero") << -9 << 9 << unit << QStringLiteral("0dB");
    QTest::newRow("no unit") << 5 << 0 << QString() << QStringLiteral("5");
}

void KnobPaintTest::printedText()
{
    QFETCH(const int, value);
    QFETCH(const int, offset);
    QFETCH(const QString, suffix);
    QFETCH(const QString, text);

    Knob knob;
    knob.value = value;
    knob.displayOffset = offset;
    knob.suffix = suffix;
    const QImage image = picture(knob);

    const QFont font(QStringLiteral("Segoe UI"), 12);
    const QRect place =
        QFontMetrics(font, &image).boundingRect(QRect(0, 0, 120, 120), Qt::AlignCenter, text);
    QCOMPARE(knob.textRect, place);

    // Behind the text the cap is of one colour.
    QImage expected(image.size(), image.format());
    expected.fill(QColor(30, 30, 30));
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font);
    painter.setPen(QColor(0xff, 0x79, 0xc6));
    painter.drawText(place, Qt::AlignCenter, text);
    painter.end();
    QCOMPARE(image.copy(place), expected.copy(place));
    QVERIFY(count(image.copy(place), 0xffff79c6) > 0);
}

void KnobPaintTest::fontOfItsOwn()
{
    Knob knob;
    picture(knob);
    const QRect usual = knob.textRect;
    knob.fontPointSize = 20;
    const QImage image = picture(knob);
    QVERIFY(knob.textRect.width() > usual.width());
    QCOMPARE(knob.textRect, QFontMetrics(QFont(knob.fontFamily, 20), &image)
                                .boundingRect(image.rect(), Qt::AlignCenter, "-80dB"));
}

void KnobPaintTest::fontFamilyOfItsOwn()
{
    Knob knob;
    const QImage usual = picture(knob);
    const QStringList families = QFontDatabase::families();
    const auto differs = [&](const QString& family) {
        knob.fontFamily = family;
        const QImage image = picture(knob);
        return image != usual &&
               knob.textRect == QFontMetrics(QFont(family, 12), &image)
                                    .boundingRect(image.rect(), Qt::AlignCenter, "-80dB");
    };
    QVERIFY2(std::any_of(families.cbegin(), families.cend(), differs),
             qPrintable(families.join(u' ')));
}

void KnobPaintTest::textOfAWideKnob()
{
    Knob knob;
    const QImage image = picture(knob, 200, 120);
    const QRect place = QFontMetrics(QFont(knob.fontFamily, 12), &image)
                            .boundingRect(image.rect(), Qt::AlignCenter, "-80dB");
    QCOMPARE(knob.textRect, place);
    QVERIFY(std::abs(place.center().x() - 100) <= 1 && std::abs(place.center().y() - 60) <= 2);
    QVERIFY(count(image.copy(place), 0xffff79c6) > 0);
    QCOMPARE(count(image, 0xffff79c6), count(image.copy(place), 0xffff79c6));
}

void KnobPaintTest::hiddenText()
{
    Knob knob;
    knob.showText = false;
    const QImage image = picture(knob);
    QVERIFY(knob.textRect.isNull());
    QCOMPARE(count(image, 0xffff79c6), 0);
    QVERIFY(isGrey(image.pixel(60, 60), 30));
}

void KnobPaintTest::oddNumbers_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("arcWidth");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<int>("size");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("empty range") << 5 << 5 << 5 << 7 << 0.8 << 120;
    QTest::newRow("above an empty range") << 5 << 5 << 6 << 7 << 0.8 << 120;
    QTest::newRow("far beyond the range") << -80 << -79 << highest << 7 << 0.8 << 120;
    QTest::newRow("crossed bounds") << 10 << -10 << 10 << 7 << 0.8 << 120;
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
