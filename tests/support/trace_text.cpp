#include "support/trace_text.h"

#include <QStringList>

namespace {

constexpr std::uint32_t commandCode = 0xFFDC209C;
constexpr std::uint32_t tableCode = 0xFFDC2040;
constexpr int packetSize = 37;

QString head(int handle, std::uint32_t code)
{
    return QStringLiteral("h%1 %2").arg(handle).arg(
        QString::number(code, 16).toUpper().rightJustified(8, u'0'));
}

QString packet(const QString& leadingBytes)
{
    QStringList bytes = leadingBytes.split(u' ');
    while (bytes.size() < packetSize)
        bytes.append(QStringLiteral("00"));
    return bytes.join(u' ');
}

} // namespace

QString TraceText::request(int handle, std::uint32_t code, int outputSize)
{
    return input(handle, code, QString(), outputSize);
}

QString TraceText::input(int handle, std::uint32_t code, const QString& bytes, int outputSize)
{
    return QStringLiteral("%1 in=%2 out=%3").arg(head(handle, code), bytes).arg(outputSize);
}

QString TraceText::command(int handle, const QString& leadingBytes)
{
    return input(handle, commandCode, packet(leadingBytes));
}

QString TraceText::table(int handle, const QString& changedCells)
{
    const QString line = QStringLiteral("%1 table").arg(head(handle, tableCode));
    return changedCells.isEmpty() ? line : line + u' ' + changedCells;
}
