#include "controls/kept_picture.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>

namespace {

constexpr int largestSide = 512; // pixels; what is larger is drawn anew each time

/// The shape alone, as `device` would have it; `place` is where the area lies on the device.
QPixmap draw(const QTransform& device, const QRect& place, const Shape& shape)
{
    QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setTransform(device * QTransform::fromTranslate(-place.x(), -place.y()));
    painter.setRenderHint(QPainter::Antialiasing);
    shape(painter);
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

/// Where a pixel begins counts as well: smooth edges follow it.
QString keyOf(PictureLook look, const QRect& area, const QTransform& device, const QRect& place)
{
    look << area.x() << area.y() << area.width() << area.height();
    look << device.m11() << device.m22() << device.dx() - place.x() << device.dy() - place.y();
    return look.key();
}

} // namespace

void drawKept(QPainter& painter, const PictureLook& look, const QRect& area, const Shape& shape)
{
    const QTransform device = painter.deviceTransform();
    const QRect place = device.mapRect(QRectF(area)).toAlignedRect();
    if (device.type() > QTransform::TxScale || place.isEmpty() || place.width() > largestSide ||
        place.height() > largestSide) {
        shape(painter);
        return;
    }
    const QString key = keyOf(look, area, device, place);
    QPixmap kept;
    if (!QPixmapCache::find(key, &kept)) {
        kept = draw(device, place, shape);
        QPixmapCache::insert(key, kept);
    }
    // Pixel on pixel.
    const QTransform before = painter.worldTransform();
    painter.setWorldTransform(QTransform::fromTranslate(place.x(), place.y()) * device.inverted() *
                              before);
    painter.drawPixmap(0, 0, kept);
    painter.setWorldTransform(before);
}
