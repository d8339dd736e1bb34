#pragma once

#include <QRect>
#include <QString>

#include <array>
#include <bit>
#include <functional>

class QPainter;

/// Draws one shape, smoothly, in a single opaque colour or with no smooth edge that shows.
using Shape = std::function<void(QPainter&)>;

/// All that decides what a kept picture looks like.
class PictureLook
{
public:
    explicit PictureLook(const char* name)
        : text(QLatin1String(name))
    {
    }

    /// A number, or whatever else is equal when its bytes are.
    template <typename Value> PictureLook& operator<<(Value value)
    {
        const auto parts = std::bit_cast<std::array<char16_t, sizeof value / 2>>(value);
        text.append(QStringView(parts.data(), qsizetype(parts.size())));
        return *this;
    }

    const QString& key() const { return text; }

private:
    QString text;
};

/// Draws a shape that lies within `area`. It is drawn once for each `look` and kept as a picture in
/// the toolkit's cache; from then on the picture is drawn in its place, which gives the same
/// pixels. `look` tells all that the shape depends on beside the area.
void drawKept(QPainter& painter, const PictureLook& look, const QRect& area, const Shape& shape);
