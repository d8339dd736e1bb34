#pragma once

#include <QImage>
#include <QString>

class QWidget;

/// What a shown window has painted, in the pixels of the screen, without those at its right and
/// lower edge of which it has only a part.
namespace ScreenPicture {

/// With all that is due by now.
QImage of(QWidget& window);

/// The same painted in one go, without what the toolkit's cache of pictures holds. The window stays
/// as it is.
QImage paintedAnew(QWidget& window);

/// How two pictures differ, or nothing.
QString difference(const QImage& one, const QImage& other);

} // namespace ScreenPicture
