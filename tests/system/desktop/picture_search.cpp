#include "system/desktop/picture_search.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

// Close enough to tell the buttons' background from the grey of a knob's cap.
constexpr int tolerance = 2;
constexpr int reach = 3;

bool isOneOf(QRgb pixel, const QList<QColor>& colours)
{
    return std::any_of(colours.begin(), colours.end(), [pixel](const QColor& colour) {
        return std::abs(qRed(pixel) - colour.red()) <= tolerance &&
               std::abs(qGreen(pixel) - colour.green()) <= tolerance &&
               std::abs(qBlue(pixel) - colour.blue()) <= tolerance;
    });
}

/// The pixels of the wanted colours that have not been put into a patch yet.
class Pixels
{
public:
    Pixels(const QImage& picture, const QList<QColor>& colours)
        : size(picture.size())
        , open(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()))
    {
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                open[index({x, y})] = isOneOf(picture.pixel(x, y), colours);
        }
    }

    bool isOpen(QPoint place) const { return open[index(place)]; }

    /// Takes out the patch that the pixel belongs to.
    QRect takePatch(QPoint start)
    {
        QRect patch(start, QSize(1, 1));
        std::vector<QPoint> waiting{start};
        open[index(start)] = false;
        while (!waiting.empty()) {
            const QPoint pixel = waiting.back();
            waiting.pop_back();
            patch |= QRect(pixel, QSize(1, 1));
            collectNeighbours(pixel, waiting);
        }
        return patch;
    }

private:
    std::size_t index(QPoint place) const
    {
        return static_cast<std::size_t>(place.y()) * static_cast<std::size_t>(size.width()) +
               static_cast<std::size_t>(place.x());
    }

    void collectNeighbours(QPoint pixel, std::vector<QPoint>& waiting)
    {
        const QRect around =
            QRect(pixel.x() - reach, pixel.y() - reach, 2 * reach + 1, 2 * reach + 1) &
            QRect(QPoint(0, 0), size);
        for (int y = around.top(); y <= around.bottom(); ++y) {
            for (int x = around.left(); x <= around.right(); ++x) {
                if (open[index({x, y})]) {
                    open[index({x, y})] = false;
                    waiting.emplace_back(x, y);
                }
            }
        }
    }

    QSize size;
    std::vector<bool> open;
};

} // namespace

QList<QRect> patchesOf(const QImage& picture, const QList<QColor>& colours)
{
    Pixels pixels(picture, colours);
    QList<QRect> patches;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (pixels.isOpen({x, y}))
                patches.append(pixels.takePatch({x, y}));
        }
    }
    return patches;
}

QList<QPoint> knobsIn(const QImage& panel)
{
    const QColor track(0x44, 0x47, 0x5a);
    const QColor gainArc(0xf1, 0xfa, 0x8c);
    const QColor volumeArc(0x00, 0xff, 0xff);
    constexpr int smallestArc = 45;
    QList<QRect> arcs = patchesOf(panel, {track, gainArc, volumeArc});
    // The arc leaves the lowest quarter open, so the width alone tells the diameter.
    arcs.removeIf([](const QRect& arc) {
        return arc.width() < smallestArc || arc.height() < arc.width() * 3 / 4 ||
               arc.height() > arc.width();
    });
    std::sort(arcs.begin(), arcs.end(), [](const QRect& a, const QRect& b) {
        constexpr int sameSize = 20;
        return std::make_pair(b.width() / sameSize, a.left()) <
               std::make_pair(a.width() / sameSize, b.left());
    });
    QList<QPoint> middles;
    for (const QRect& arc : arcs)
        middles.append(arc.topLeft() + QPoint(arc.width(), arc.width()) / 2);
    return middles;
}

QList<QRect> buttonsIn(const QImage& panel)
{
    const QColor background(0x1b, 0x1e, 0x23);
    QList<QRect> buttons = patchesOf(panel, {background});
    buttons.removeIf([](const QRect& patch) {
        return patch.width() < 70 || patch.width() > 90 || patch.height() < 10;
    });
    std::sort(buttons.begin(), buttons.end(), [](const QRect& a, const QRect& b) {
        return std::make_pair(a.left(), a.top()) < std::make_pair(b.left(), b.top());
    });
    return buttons;
}
