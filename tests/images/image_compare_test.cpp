#include "images/image_compare.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

namespace {

QImage plain(QSize size = {50, 40})
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(100, 100, 100));
    return image;
}

QString beside(const char* file)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QLatin1String(file));
}

} // namespace

/// The comparison is what the picture tests rest on: it has to see what is wrong.
class ImageCompareTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void samePicture();
    void missingBaseline();
    void otherSize();
    void tooManyPixels_data();
    void tooManyPixels();
    void smallDeviation_data();
    void smallDeviation();
    void update();
    void rendersOnThePanel();
    void font();

private:
    ImageVerdict verdict(const QImage& actual, ImageTolerance tolerance = {0, 0.0}) const
    {
        return compareWithBaseline(actual, QStringLiteral("self-check"), folder.path(), tolerance);
    }

    QTemporaryDir folder;
};

void ImageCompareTest::init()
{
    qunsetenv("QUORVEL_UPDATE_BASELINES");
    QVERIFY(plain().save(folder.filePath(QStringLiteral("self-check.png"))));
}

void ImageCompareTest::cleanup()
{
    QFile::remove(beside("self-check-actual.png"));
    QFile::remove(beside("self-check-difference.png"));
}

void ImageCompareTest::samePicture()
{
    const ImageVerdict found = verdict(plain());
    QVERIFY2(found.same, qPrintable(found.text));
    QVERIFY(found.text.isEmpty());
    QVERIFY(!QFile::exists(beside("self-check-actual.png")));
}

void ImageCompareTest::missingBaseline()
{
    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("self-check.png"))));
    const ImageVerdict found = verdict(plain());
    QVERIFY(!found.same);
    QVERIFY(found.text.startsWith(QStringLiteral("no baseline ")));
    QVERIFY(found.text.contains(beside("self-check-actual.png")));
    QCOMPARE(QImage(beside("self-check-actual.png")).size(), plain().size());
}

void ImageCompareTest::otherSize()
{
    const ImageVerdict found = verdict(plain({51, 40}), {255, 1.0});
    QVERIFY(!found.same);
    QVERIFY(found.text.contains(QStringLiteral("is 50 x 40, the picture is 51 x 40")));
}

void ImageCompareTest::tooManyPixels_data()
{
    QTest::addColumn<int>("pixels");
    QTest::addColumn<bool>("same");

    // One percent of 50 x 40 pixels.
    QTest::newRow("none") << 0 << true;
    QTest::newRow("as many as accepted") << 20 << true;
    QTest::newRow("one more") << 21 << false;
}

void ImageCompareTest::tooManyPixels()
{
    QFETCH(const int, pixels);
    QFETCH(const bool, same);

    QImage actual = plain();
    for (int x = 0; x < pixels; ++x)
        actual.setPixel(x, 7, qRgb(255, 0, 0));
    const ImageVerdict found = verdict(actual, {0, 0.01});
    QCOMPARE(found.same, same);
    if (same)
        return;
    QVERIFY(found.text.startsWith(QStringLiteral("21 pixels differ from ")));
    QVERIFY(found.text.contains(beside("self-check-actual.png")));
    QVERIFY(found.text.contains(beside("self-check-difference.png")));
    const QImage marked(beside("self-check-difference.png"));
    QCOMPARE(marked.pixel(20, 7), qRgb(255, 255, 255));
    QCOMPARE(marked.pixel(21, 7), qRgb(0, 0, 0));
}

void ImageCompareTest::smallDeviation_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("same");

    QTest::newRow("red within") << QColor(105, 100, 100) << true;
    QTest::newRow("red beyond") << QColor(106, 100, 100) << false;
    QTest::newRow("green beyond") << QColor(100, 94, 100) << false;
    QTest::newRow("blue beyond") << QColor(100, 100, 106) << false;
    QTest::newRow("all within") << QColor(95, 105, 95) << true;
}

void ImageCompareTest::smallDeviation()
{
    QFETCH(const QColor, color);
    QFETCH(const bool, same);

    QImage actual = plain();
    actual.fill(color);
    QCOMPARE(verdict(actual, {5, 0.0}).same, same);
}

void ImageCompareTest::update()
{
    QImage actual = plain({10, 10});
    qputenv("QUORVEL_UPDATE_BASELINES", "0");
    QVERIFY(!verdict(actual).same);
    qputenv("QUORVEL_UPDATE_BASELINES", "1");
    QVERIFY(verdict(actual).same);
    qunsetenv("QUORVEL_UPDATE_BASELINES");
    QVERIFY(verdict(actual).same);
    QVERIFY(!verdict(plain()).same);
}

void ImageCompareTest::rendersOnThePanel()
{
    QWidget widget;
    widget.resize(30, 20);
    QWidget child(&widget);
    child.setGeometry(10, 10, 5, 5);
    child.setStyleSheet(QStringLiteral("background-color: #ff0000;"));
    child.setAttribute(Qt::WA_StyledBackground);

    const QImage image = renderOnPanel(widget, 2);
    QCOMPARE(image.size(), QSize(60, 40));
    QCOMPARE(image.pixel(19, 19), 0xff2c313c);
    QCOMPARE(image.pixel(20, 20), 0xffff0000);
    QCOMPARE(image.pixel(29, 29), 0xffff0000);
    QCOMPARE(image.pixel(30, 30), 0xff2c313c);
}

void ImageCompareTest::font()
{
    QCOMPARE(pinFont(), QString());
    QCOMPARE(QFontInfo(QFont(QStringLiteral("Segoe UI"), 12)).family(),
             QStringLiteral("DejaVu Sans"));
}

QUORVEL_TEST_MAIN(ImageCompareTest)

#include "image_compare_test.moc"
