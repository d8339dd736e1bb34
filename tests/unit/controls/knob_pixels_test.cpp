#include "controls/knob.h"
#include "support/screen_picture.h"
#include "support/test_main.h"

#include <QConicalGradient>
#include <QImage>
#include <QMainWindow>
#include <QPainter>
#include <QRadialGradient>
#include <QTest>

#include <cmath>

/// The knob paints as little as it can; what shows must be, to the pixel, what drawing all of it
/// gives.
class KnobPixelsTest : public QObject
{
    Q_OBJECT

private slots:
    void sameAsDrawnWhole_data();
    void sameAsDrawnWhole();
    void sameAfterSteps_data();
    void sameAfterSteps();
    void membersCount();
};

namespace {

constexpr QPoint place(13, 29);

/// All shapes of a knob, one after the other.
void drawWhole(QPainter& painter, const Knob& knob)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const double inset = knob.arcWidth;
    const QRectF arc(inset, inset, knob.width() - 2 * inset, knob.height() - 2 * inset);
    QPen pen;
    pen.setWidth(knob.arcWidth);
    pen.setCapStyle(Qt::RoundCap);
    pen.setColor(knob.trackColor);
    painter.setPen(pen);
    painter.drawArc(arc, 3600, -4320);

    QConicalGradient same(QPoint(knob.width() / 2, knob.height() / 2), 270);
    same.setColorAt(0, knob.arcColor);
    same.setColorAt(1, knob.arcColor);
    pen.setBrush(same);
    painter.setPen(pen);
    const double turn = (knob.value - knob.minimum) * 270.0 / (knob.maximum - knob.minimum);
    painter.drawArc(arc, 3600, -int(turn * 16.0));

    pen.setWidth(0);
    const double side = knob.knobRatio * arc.width();
    const double margin = (1 - knob.knobRatio) * arc.width() * 0.5;
    const auto circle = [&](double shift, double scale) {
        const int corner = int(std::trunc(margin + shift * side) + inset);
        painter.setPen(pen);
        painter.drawEllipse(corner, corner, int(scale * side), int(scale * side));
    };
    const auto shade = [&](double radius, int dark) {
        QRadialGradient gradient(0, 0, radius * arc.width());
        gradient.setColorAt(0, Qt::white);
        gradient.setColorAt(1, QColor(dark, dark, dark));
        pen.setBrush(gradient);
        painter.setBrush(gradient);
    };
    shade(0.6, 20);
    circle(0.02, 1.0);
    pen.setColor(Qt::transparent);
    painter.setBrush(QColor(Qt::transparent));
    circle(0.1, 0.8);
    shade(0.5, 30);
    circle(0.0, 1.0);
}

QImage canvas(const Knob& knob, double pixelRatio, QRgb background)
{
    const QSizeF size = QSizeF(knob.width() + 2 * place.x(), knob.height() + 2 * place.y());
    QImage image((size * pixelRatio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(background);
    return image;
}

} // namespace

void KnobPixelsTest::sameAsDrawnWhole_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<double>("pixelRatio");
    QTest::addColumn<QRgb>("background");
    QTest::addColumn<QColor>("arcColor");
    // The largest is not kept as pictures at the higher ratios.
    for (const int size : {120, 70, 300}) {
        for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
            for (const QRgb background : {0xff2c313cU, 0xff12ab7fU}) {
                for (const char* color : {"#00ffff", "#800fff7f"}) {
                    QTest::addRow("%d pixels at %g on %x, %s", size, ratio, background, color)
                        << size << ratio << background << QColor(QLatin1String(color));
                }
            }
        }
    }
}

void KnobPixelsTest::sameAsDrawnWhole()
{
    QFETCH(const int, size);
    QFETCH(const double, pixelRatio);
    QFETCH(const QRgb, background);
    QFETCH(const QColor, arcColor);
    Knob knob;
    knob.resize(size, size);
    knob.arcWidth = size == 70 ? 3 : 7;
    knob.showText = false;
    knob.arcColor = arcColor;
    for (const int value : {-80, -79, -41, -7, 0, 5, 6}) {
        knob.value = value;
        QImage expected = canvas(knob, pixelRatio, background);
        QPainter painter(&expected);
        painter.translate(place);
        drawWhole(painter, knob);
        painter.end();
        QImage painted = canvas(knob, pixelRatio, background);
        knob.render(&painted, place, {}, QWidget::DrawChildren);
        QCOMPARE(painted, expected);
    }
}

void KnobPixelsTest::sameAfterSteps_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("from");
    QTest::addColumn<QList<int>>("steps");
    QList<int> up;
    QList<int> down;
    for (int value = -80; value <= 6; ++value) {
        up.append(value);
        down.prepend(value);
    }
    QTest::newRow("up") << 120 << 0 << -80 << up;
    QTest::newRow("down") << 120 << 0 << 6 << down;
    QTest::newRow("small, up") << 70 << 0 << -80 << up;
    QTest::newRow("small, down") << 70 << 0 << 6 << down;
    QTest::newRow("long texts") << 120 << 10000 << -2 << QList<int>{-1, 0, 1, 2};
    QTest::newRow("jumps") << 120 << 0 << -80 << QList<int>{6, -80, -78, -60, -20, -19, 6, 4};
}

void KnobPixelsTest::sameAfterSteps()
{
    QFETCH(const int, size);
    QFETCH(const int, offset);
    QFETCH(const int, from);
    QFETCH(const QList<int>, steps);
    QMainWindow window;
    window.setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
    window.setFixedSize(200, 200);
    Knob knob(&window);
    knob.setGeometry(17, 23, size, size);
    knob.arcWidth = size == 120 ? 7 : 3;
    knob.fontPointSize = size == 120 ? 12 : 10;
    knob.displayOffset = offset;
    knob.value = from;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto leftOver = [&window] {
        return ScreenPicture::difference(ScreenPicture::of(window),
                                         ScreenPicture::paintedAnew(window));
    };
    QTRY_COMPARE_WITH_TIMEOUT(leftOver(), QString(), 500);
    for (const int value : steps) {
        knob.setValue(value);
        knob.setValue(value);
        QCoreApplication::sendPostedEvents();
        QTRY_COMPARE_WITH_TIMEOUT(leftOver(), QString(), 500);
    }
}

/// What the pictures are kept by names all that they show.
void KnobPixelsTest::membersCount()
{
    Knob knob;
    knob.resize(120, 120);
    const auto change = [&knob](const auto& action) {
        const QImage before = knob.grab().toImage();
        action();
        return knob.grab().toImage() != before;
    };
    QVERIFY(change([&] { knob.trackColor = QColor(QStringLiteral("#44475b")); }));
    QVERIFY(change([&] { knob.roundCap = false; }));
    QVERIFY(change([&] { knob.arcWidth = 6; }));
    QVERIFY(change([&] { knob.knobRatio = 0.7; }));
    QVERIFY(change([&] { knob.showTrack = false; }));
    QVERIFY(change([&] { knob.value = 3; }));
    QVERIFY(change([&] { knob.arcColor = QColor(Qt::red); }));
}

QUORVEL_TEST_MAIN(KnobPixelsTest)
#include "knob_pixels_test.moc"
