#include "system/desktop/simulator_tool.h"

#include "system/desktop/target.h"
#include "system/desktop/tool.h"

#include <QRegularExpression>

namespace {

constexpr quint32 commandCode = 0xFFDC209C;

/// Lines as the tool prints them: "h1 FFDC209C in=01 07 00 out=0" and "h1 FFDC2040 table 2048=1",
/// refused ones end in " error=N".
std::optional<TracedRequest> parsed(const QString& line)
{
    static const QRegularExpression form(
        QStringLiteral("^h\\d+ ([0-9A-F]{8}) (?:in=((?:[0-9A-F]{2} ?)*)|table((?: \\d+=\\S+)*)"
                       "(?: error=\\d+)?$)"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch()) {
        qWarning("not a request: %s", qPrintable(line));
        return std::nullopt;
    }
    TracedRequest request{match.captured(1).toUInt(nullptr, 16),
                          QByteArray::fromHex(match.captured(2).toLatin1()),
                          {},
                          !line.contains(QStringLiteral(" error="))};
    for (const QString& cell : match.captured(3).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        request.cells.insert(cell.section(QLatin1Char('='), 0, 0).toInt(),
                             cell.section(QLatin1Char('='), 1).toDouble());
    return request;
}

} // namespace

SimulatorTool::SimulatorTool(const QProcessEnvironment& environment)
    : variables(environment)
{
}

bool SimulatorTool::plug(const QString& model) const
{
    return run({QStringLiteral("plug"), model}).has_value();
}

bool SimulatorTool::unplug() const
{
    return run({QStringLiteral("unplug")}).has_value();
}

bool SimulatorTool::reset() const
{
    return run({QStringLiteral("reset")}).has_value();
}

bool SimulatorTool::moveLevels() const
{
    return run({QStringLiteral("levels-moving"), QStringLiteral("on")}).has_value();
}

bool SimulatorTool::clearTrace() const
{
    return run({QStringLiteral("trace"), QStringLiteral("--clear")}).has_value();
}

std::optional<int> SimulatorTool::openHandles() const
{
    const auto text = run({QStringLiteral("handles")});
    bool isNumber = false;
    const int handles = text.value_or(QString()).trimmed().toInt(&isNumber);
    return isNumber ? std::optional(handles) : std::nullopt;
}

std::optional<QMap<QString, QString>> SimulatorTool::state() const
{
    const QString separator = QStringLiteral(": ");
    const auto rows = lines({QStringLiteral("state")});
    if (!rows)
        return std::nullopt;
    QMap<QString, QString> values;
    for (const QString& row : *rows)
        values.insert(row.section(separator, 0, 0), row.section(separator, 1));
    return values;
}

bool SimulatorTool::order(const QStringList& words) const
{
    return run(words).has_value();
}

std::optional<QList<TracedRequest>> SimulatorTool::requests() const
{
    const auto received = traceLines();
    if (!received)
        return std::nullopt;
    QList<TracedRequest> requests;
    for (const QString& line : *received) {
        const auto request = parsed(line);
        if (!request)
            return std::nullopt;
        requests.append(*request);
    }
    return requests;
}

std::optional<QStringList> SimulatorTool::packets() const
{
    const auto received = requests();
    if (!received)
        return std::nullopt;
    QStringList packets;
    for (const TracedRequest& request : *received) {
        if (request.code == commandCode && request.accepted)
            packets.append(QString::fromLatin1(request.input.toHex()));
    }
    return packets;
}

std::optional<QStringList> SimulatorTool::traceLines() const
{
    return lines({QStringLiteral("trace")});
}

std::optional<QStringList> SimulatorTool::takeTraceLines() const
{
    return lines({QStringLiteral("trace"), QStringLiteral("--clear")});
}

std::optional<QStringList> SimulatorTool::lines(const QStringList& arguments) const
{
    const auto text = run(arguments);
    if (!text)
        return std::nullopt;
    return text->split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

std::optional<QString> SimulatorTool::run(const QStringList& arguments) const
{
    const QStringList command = Target::tool(QStringLiteral("quorvel-simctl")) + arguments;
    std::optional<ToolAnswer> answer;
    for (int i = 0; i < Target::tries(); ++i) {
        answer = askTool(command.first(), command.mid(1), variables);
        // It says why it fails; one that was not started says nothing.
        if (!answer || answer->exitCode != 1 || !answer->errors.isEmpty())
            break;
        qWarning("%s did not start", qPrintable(command.join(QLatin1Char(' '))));
    }
    return toolOutput(command.first(), command.mid(1), answer);
}
