#include "support/screen_picture.h"

#include <QBackingStore>
#include <QCoreApplication>
#include <QEvent>
#include <QPixmapCache>
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

/// Without the pixels at the end of rows and columns that the window has only a part of.
QImage wholePixels(const QImage& image, QSize size)
{
    // In whole percent, for what a ratio has lost on its way through fractions.
    const double ratio = std::round(image.devicePixelRatio() * 100) / 100;
    return image.copy(0, 0, int(size.width() * ratio), int(size.height() * ratio))
        .convertToFormat(QImage::Format_RGB32);
}

} // namespace

QImage ScreenPicture::of(QWidget& window)
{
    // At once: the platform would say a few milliseconds later that there is something to paint.
    QCoreApplication::sendPostedEvents();
    QEvent due(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(&window, &due);
    const auto* painted = dynamic_cast<const QImage*>(window.backingStore()->paintDevice());
    return painted == nullptr ? QImage() : wholePixels(*painted, window.size());
}

QImage ScreenPicture::paintedAnew(QWidget& window)
{
    QPixmapCache::clear();
    return wholePixels(window.grab().toImage(), window.size());
}

QString ScreenPicture::difference(const QImage& one, const QImage& other)
{
    if (one == other && !one.isNull())
        return {};
    if (one.size() != other.size() || one.isNull())
        return QStringLiteral("%1 x %2 pixels instead of %3 x %4")
            .arg(one.width())
            .arg(one.height())
            .arg(other.width())
            .arg(other.height());
    int count = 0;
    int worst = 0;
    QRect place;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int found = distance(one.pixel(x, y), other.pixel(x, y));
            if (found == 0)
                continue;
            ++count;
            worst = std::max(worst, found);
            place |= QRect(x, y, 1, 1);
        }
    }
    return QStringLiteral("%1 pixels differ, by up to %2, from %3,%4 to %5,%6")
        .arg(count)
        .arg(worst)
        .arg(place.left())
        .arg(place.top())
        .arg(place.right())
        .arg(place.bottom());
}
