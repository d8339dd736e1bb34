#include "system/desktop/desktop.h"

#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/wait_until.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace {

/// Two clicks that are this far apart stay two clicks, in milliseconds.
constexpr qint64 doubleClickInterval = 500;

/// Since the last click that this program has made.
QElapsedTimer& sinceClick()
{
    static QElapsedTimer clock;
    return clock;
}

void waitForSingleClick()
{
    if (sinceClick().isValid())
        QThread::msleep(static_cast<unsigned long>(
            std::max<qint64>(0, doubleClickInterval - sinceClick().elapsed())));
}

bool xdotool(const QStringList& arguments)
{
    if (arguments.contains(QStringLiteral("click")))
        sinceClick().start();
    return runTool(QStringLiteral("xdotool"), arguments).has_value();
}

QStringList moveTo(QPoint place)
{
    return {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
}

/// The numbers of the visible windows; nothing when the display could not be asked.
std::optional<QStringList> windowIds(const QString& property, const QString& pattern)
{
    const auto answer =
        askTool(QStringLiteral("xdotool"),
                {QStringLiteral("search"), QStringLiteral("--onlyvisible"), property, pattern});
    if (!answer)
        return std::nullopt;
    // "None" and "cannot tell" share an exit code, but only the second has something to say.
    const bool none = answer->exitCode == 1 && answer->output.isEmpty();
    if (!answer->errors.isEmpty() || (answer->exitCode != 0 && !none)) {
        qWarning("xdotool: exit code %d\n%s", answer->exitCode, qPrintable(answer->errors));
        return std::nullopt;
    }
    return answer->output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// The window's client area; nothing when the window has gone.
std::optional<QRect> areaOf(const QString& windowId)
{
    static const QRegularExpression numbers(
        QStringLiteral("Absolute upper-left X: +(-?\\d+).*Absolute upper-left Y: +(-?\\d+)"
                       ".*Width: (\\d+).*Height: (\\d+)"),
        QRegularExpression::DotMatchesEverythingOption);
    const auto answer = askTool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), windowId});
    if (!answer || answer->exitCode != 0)
        return std::nullopt;
    const QRegularExpressionMatch match = numbers.match(answer->output);
    if (!match.hasMatch())
        return std::nullopt;
    return QRect(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
                 match.captured(4).toInt());
}

/// All of them with their areas; nothing when one has gone in the meantime.
std::optional<QList<DesktopWindow>> withAreas(const QStringList& ids)
{
    QList<DesktopWindow> windows;
    for (const QString& id : ids) {
        const auto area = areaOf(id);
        if (!area)
            return std::nullopt;
        windows.append({id, *area});
    }
    return windows;
}

bool hasKeyboard(const DesktopWindow& window)
{
    // Wine's windows take it with the first click into them.
    if (Target::isWindows())
        return true;
    const auto answer = askTool(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")});
    return answer && answer->exitCode == 0 && answer->output.trimmed() == window.id;
}

} // namespace

std::optional<QList<DesktopWindow>> Desktop::windows(const QString& titlePattern)
{
    // A window that goes while it is looked at disturbs one look, not three.
    constexpr int looks = 3;
    for (int i = 0; i < looks; ++i) {
        const auto ids = windowIds(QStringLiteral("--name"), titlePattern);
        if (const auto found = ids ? withAreas(*ids) : std::nullopt)
            return found;
    }
    return std::nullopt;
}

std::optional<QStringList> Desktop::panelWindows()
{
    return windowIds(QStringLiteral("--class"), QStringLiteral("QuorvelDriver"));
}

std::optional<DesktopWindow> Desktop::window(const QString& titlePattern)
{
    const auto found = windows(titlePattern);
    if (!found || found->isEmpty())
        return std::nullopt;
    return found->first();
}

bool Desktop::hasNoWindow(const QString& titlePattern)
{
    const auto found = windows(titlePattern);
    return found && found->isEmpty();
}

std::optional<DesktopWindow> Desktop::waitForWindow(const QString& titlePattern)
{
    std::optional<DesktopWindow> found;
    const bool ready = waitUntil([&] {
        found = window(titlePattern);
        return found && hasKeyboard(*found);
    });
    return ready ? found : std::nullopt;
}

bool Desktop::waitForNoWindow(const QString& titlePattern)
{
    return waitUntil([&] { return hasNoWindow(titlePattern); });
}

std::optional<QList<QRect>> Desktop::trayIcons()
{
    // The window manager wraps each icon's window into one of its own, listed just above it.
    static const QRegularExpression icon(
        QStringLiteral("\"YXTrayEmbedder\".*\\n.*1 child:\\n"
                       ".* (\\d+)x(\\d+)\\+-?\\d+\\+-?\\d+ +\\+(-?\\d+)\\+(-?\\d+)\\n"));
    const auto tree =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")});
    if (!tree)
        return std::nullopt;
    QList<QRect> icons;
    for (const QRegularExpressionMatch& match : icon.globalMatch(*tree))
        icons.append(QRect(match.captured(3).toInt(), match.captured(4).toInt(),
                           match.captured(1).toInt(), match.captured(2).toInt()));
    return icons;
}

std::optional<QRect> Desktop::waitForTrayIcon()
{
    QList<QRect> icons;
    waitUntil([&] { return !(icons = trayIcons().value_or(QList<QRect>())).isEmpty(); });
    if (icons.isEmpty())
        return std::nullopt;
    return icons.first();
}

bool Desktop::restartNotificationArea()
{
    static const QRegularExpression area(QStringLiteral("(0x[0-9a-f]+) \"SystemTray\""));
    const auto tree =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")});
    const QString id = area.match(tree.value_or(QString())).captured(1);
    return !id.isEmpty() && xdotool({QStringLiteral("windowkill"), id});
}

bool Desktop::click(QPoint place, MouseButton button)
{
    waitForSingleClick();
    return xdotool(moveTo(place) << QStringLiteral("click")
                                 << QString::number(static_cast<int>(button)));
}

bool Desktop::clickAgain(QPoint place)
{
    return xdotool(moveTo(place) << QStringLiteral("click") << QStringLiteral("1"));
}

bool Desktop::controlClick(QPoint place)
{
    waitForSingleClick();
    return xdotool(QStringList{QStringLiteral("keydown"), QStringLiteral("ctrl")}
                   << moveTo(place) << QStringLiteral("click") << QStringLiteral("1")
                   << QStringLiteral("keyup") << QStringLiteral("ctrl"));
}

bool Desktop::doubleClick(QPoint place)
{
    return xdotool(moveTo(place) << QStringLiteral("click") << QStringLiteral("--repeat")
                                 << QStringLiteral("2") << QStringLiteral("--delay")
                                 << QStringLiteral("20") << QStringLiteral("1"));
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

bool Desktop::isMinimised(const DesktopWindow& window)
{
    const auto state = runTool(QStringLiteral("xprop"),
                               {QStringLiteral("-id"), window.id, QStringLiteral("WM_STATE")});
    return state && state->contains(QStringLiteral("Iconic"));
}

QImage Desktop::picture(QRect area)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}
