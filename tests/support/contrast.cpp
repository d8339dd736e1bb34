#include "support/contrast.h"

#include <QHash>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

double linear(int channel)
{
    const double share = channel / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

double luminance(QRgb color)
{
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) +
           0.0722 * linear(qBlue(color));
}

/// Each colour with the number of its pixels.
QHash<QRgb, int> colorsIn(const QImage& picture, const QRect& part)
{
    QHash<QRgb, int> colors;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = part.left(), next = x; x <= part.right(); x = next) {
            while (next <= part.right() && line[next] == line[x])
                ++next;
            colors[line[x]] += next - x;
        }
    }
    return colors;
}

} // namespace

double Contrast::between(QRgb one, QRgb other)
{
    constexpr double glare = 0.05;
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + glare) / (dark + glare);
}

QImage Contrast::enlarged(QWidget& widget)
{
    constexpr int factor = 4;
    QWidget& window = *widget.window();
    QImage picture(window.size() * factor, QImage::Format_RGB32);
    picture.setDevicePixelRatio(factor);
    // A colour that nothing has: what the window leaves out would show.
    picture.fill(Qt::magenta);
    window.render(&picture);
    return picture;
}

double Contrast::ofText(const QImage& picture, const QWidget& widget, const QRect& part)
{
    const int factor = int(picture.devicePixelRatio());
    const QRect place(widget.mapTo(widget.window(), part.topLeft()) * factor, part.size() * factor);
    const QHash<QRgb, int> colors = colorsIn(picture, place & picture.rect());
    const auto behind = std::max_element(colors.cbegin(), colors.cend());
    double best = 1;
    for (auto color = colors.keyBegin(); color != colors.keyEnd(); ++color)
        best = std::max(best, between(*color, behind.key()));
    return best;
}
