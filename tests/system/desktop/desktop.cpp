#include "system/desktop/desktop.h"

#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QRegularExpression>
#include <QScreen>

#include <cmath>

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 10s;
/// Two clicks that are this far apart stay two clicks, in milliseconds.
constexpr unsigned long doubleClickInterval = 500;

bool xdotool(const QStringList& arguments)
{
    return runTool(QStringLiteral("xdotool"), arguments).has_value();
}

QStringList moveTo(QPoint place)
{
    return {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
}

std::optional<QRect> areaOf(const QString& windowId)
{
    static const QRegularExpression numbers(
        QStringLiteral("Absolute upper-left X: +(-?\\d+).*Absolute upper-left Y: +(-?\\d+)"
                       ".*Width: (\\d+).*Height: (\\d+)"),
        QRegularExpression::DotMatchesEverythingOption);
    const auto text = runTool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), windowId});
    if (!text)
        return std::nullopt;
    const QRegularExpressionMatch match = numbers.match(*text);
    if (!match.hasMatch())
        return std::nullopt;
    return QRect(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
                 match.captured(4).toInt());
}

} // namespace

QList<DesktopWindow> Desktop::windows(const QString& titlePattern)
{
    // xdotool answers "nothing found" with exit code 1, which is an answer, not a failure.
    const auto ids =
        runTool(QStringLiteral("sh"), {QStringLiteral("-c"),
                                       QStringLiteral("xdotool search --onlyvisible --name \"$1\" "
                                                      "2>/dev/null || true"),
                                       QStringLiteral("sh"), titlePattern});
    QList<DesktopWindow> found;
    for (const QString& id : ids.value_or(QString()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (const auto area = areaOf(id))
            found.append({id, *area});
    }
    return found;
}

std::optional<DesktopWindow> Desktop::waitForWindow(const QString& titlePattern)
{
    QList<DesktopWindow> found;
    waitUntil([&] { return !(found = windows(titlePattern)).isEmpty(); }, patience);
    if (found.isEmpty())
        return std::nullopt;
    return found.first();
}

bool Desktop::waitForNoWindow(const QString& titlePattern)
{
    return waitUntil([&] { return windows(titlePattern).isEmpty(); }, patience);
}

QList<QRect> Desktop::trayIcons()
{
    // The window manager wraps each icon's window into one of its own, listed just above it.
    static const QRegularExpression icon(
        QStringLiteral("\"YXTrayEmbedder\".*\\n.*1 child:\\n"
                       ".* (\\d+)x(\\d+)\\+-?\\d+\\+-?\\d+ +\\+(-?\\d+)\\+(-?\\d+)\\n"));
    const auto tree =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")});
    QList<QRect> icons;
    for (const QRegularExpressionMatch& match : icon.globalMatch(tree.value_or(QString())))
        icons.append(QRect(match.captured(3).toInt(), match.captured(4).toInt(),
                           match.captured(1).toInt(), match.captured(2).toInt()));
    return icons;
}

std::optional<QRect> Desktop::waitForTrayIcon()
{
    QList<QRect> icons;
    waitUntil([&] { return !(icons = trayIcons()).isEmpty(); }, patience);
    if (icons.isEmpty())
        return std::nullopt;
    return icons.first();
}

bool Desktop::click(QPoint place, MouseButton button)
{
    QThread::msleep(doubleClickInterval);
    return xdotool(moveTo(place) << QStringLiteral("click")
                                 << QString::number(static_cast<int>(button)));
}

bool Desktop::controlClick(QPoint place)
{
    QThread::msleep(doubleClickInterval);
    return xdotool(QStringList{QStringLiteral("keydown"), QStringLiteral("ctrl")}
                   << moveTo(place) << QStringLiteral("click") << QStringLiteral("1")
                   << QStringLiteral("keyup") << QStringLiteral("ctrl"));
}

bool Desktop::doubleClick(QPoint place)
{
    return xdotool(moveTo(place) << QStringLiteral("click") << QStringLiteral("--repeat")
                                 << QStringLiteral("2") << QStringLiteral("--delay")
                                 << QStringLiteral("60") << QStringLiteral("1"));
}

bool Desktop::wheel(QPoint place, int notches)
{
    return xdotool(moveTo(place) << QStringLiteral("click") << QStringLiteral("--repeat")
                                 << QString::number(std::abs(notches)) << QStringLiteral("--delay")
                                 << QStringLiteral("30") << QString::number(notches > 0 ? 4 : 5));
}

bool Desktop::drag(QPoint from, QPoint to, const std::function<bool()>& taken)
{
    if (!xdotool(moveTo(from) << QStringLiteral("mousedown") << QStringLiteral("1")))
        return false;
    const QPoint way = to - from;
    const int pixels = std::max(std::abs(way.x()), std::abs(way.y()));
    bool followed = true;
    for (int i = 1; followed && i <= pixels; ++i)
        followed = xdotool(moveTo(from + way * i / pixels)) && taken();
    return xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}) && followed;
}

bool Desktop::key(const QString& name)
{
    return xdotool({QStringLiteral("key"), name});
}

bool Desktop::type(const QString& text)
{
    return xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
}

bool Desktop::activate(const DesktopWindow& window)
{
    return xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window.id});
}

bool Desktop::minimise(const DesktopWindow& window)
{
    return xdotool({QStringLiteral("windowminimize"), window.id});
}

QImage Desktop::picture(QRect area)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}
