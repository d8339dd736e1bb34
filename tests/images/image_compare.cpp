#include "images/image_compare.h"

#include <QCoreApplication>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

int distance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

/// A picture as large as both, white where they differ, and the number of such pixels.
QImage differences(const QImage& a, const QImage& b, int channel, int& count)
{
    QImage marked(a.size(), QImage::Format_RGB32);
    marked.fill(Qt::black);
    count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (distance(a.pixel(x, y), b.pixel(x, y)) <= channel)
                continue;
            marked.setPixel(x, y, qRgb(255, 255, 255));
            ++count;
        }
    }
    return marked;
}

/// Saves the picture beside the test program and says where.
QString saveBeside(const QImage& image, const QString& name, const char* what)
{
    const QString path =
        QDir(QCoreApplication::applicationDirPath())
            .filePath(name + QLatin1Char('-') + QLatin1String(what) + QStringLiteral(".png"));
    return (image.save(path) ? QStringLiteral("\n  %1: %2")
                             : QStringLiteral("\n  %1: cannot write %2"))
        .arg(QLatin1String(what), path);
}

ImageVerdict compare(const QImage& actual, const QImage& baseline, const QString& name,
                     const QString& path, ImageTolerance tolerance)
{
    if (baseline.isNull())
        return {false,
                QStringLiteral("no baseline %1").arg(path) + saveBeside(actual, name, "actual")};
    if (baseline.size() != actual.size()) {
        return {false, QStringLiteral("%1 is %2 x %3, the picture is %4 x %5")
                               .arg(path)
                               .arg(baseline.width())
                               .arg(baseline.height())
                               .arg(actual.width())
                               .arg(actual.height()) +
                           saveBeside(actual, name, "actual")};
    }
    int count = 0;
    const QImage marked = differences(actual, baseline, tolerance.channel, count);
    const int accepted = int(tolerance.share * actual.width() * actual.height());
    if (count <= accepted)
        return {true, {}};
    return {false, QStringLiteral("%1 pixels differ from %2, %3 would be accepted")
                           .arg(count)
                           .arg(path)
                           .arg(accepted) +
                       saveBeside(actual, name, "actual") + saveBeside(marked, name, "difference")};
}

} // namespace

QString pinFont()
{
    const QString pinned = QStringLiteral("DejaVu Sans");
    if (!QFontDatabase::families().contains(pinned))
        return QStringLiteral("The font \"%1\" is not installed.").arg(pinned);
    QFont::insertSubstitution(QStringLiteral("Segoe UI"), pinned);
    return {};
}

QImage renderOnPanel(QWidget& widget, double pixelRatio)
{
    QImage image(QSize(int(std::lround(widget.width() * pixelRatio)),
                       int(std::lround(widget.height() * pixelRatio))),
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(QColor(QStringLiteral("#2c313c")));
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

ImageVerdict compareWithBaseline(const QImage& actual, const QString& name,
                                 ImageTolerance tolerance)
{
    return compareWithBaseline(actual, name, QStringLiteral(QUORVEL_BASELINE_DIR), tolerance);
}

ImageVerdict compareWithBaseline(const QImage& actual, const QString& name, const QString& folder,
                                 ImageTolerance tolerance)
{
    const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
    const ImageVerdict verdict = compare(actual, QImage(path), name, path, tolerance);
    if (verdict.same || qEnvironmentVariable("QUORVEL_UPDATE_BASELINES") != QLatin1String("1"))
        return verdict;
    if (!QDir().mkpath(folder) || !actual.save(path))
        return {false, QStringLiteral("cannot write %1").arg(path)};
    return {true, {}};
}
