#include "storage/ini_text.h"

#include <algorithm>
#include <iterator>

namespace {

const QByteArray byteOrderMark = QByteArrayLiteral("\xEF\xBB\xBF");

QByteArray rawValue(const QByteArray& line)
{
    return line.mid(line.indexOf('=') + 1).trimmed();
}

QString plainText(QByteArray value)
{
    if (value.size() >= 2 && value.startsWith('"') && value.endsWith('"')) {
        value = value.mid(1, value.size() - 2);
    } else {
        const qsizetype comment = value.indexOf(';');
        value = value.left(comment < 0 ? value.size() : comment).trimmed();
        if (value.contains(',')) // a list
            return {};
    }
    if (value.startsWith('@') || value.contains('\\') || value.contains('"'))
        return {};
    return QString::fromUtf8(value);
}

} // namespace

IniText::IniText(const QByteArray& content)
{
    QByteArrayList rows = content.split('\n');
    if (rows.constLast().isEmpty())
        rows.removeLast();
    for (const QByteArray& row : std::as_const(rows))
        append(row);
}

QByteArray IniText::content() const
{
    QByteArray bytes;
    for (const Line& line : lines)
        bytes += line.bytes + '\n';
    return bytes;
}

void IniText::append(const QByteArray& bytes)
{
    const bool marked = lines.isEmpty() && bytes.startsWith(byteOrderMark);
    const QByteArray row = (marked ? bytes.mid(byteOrderMark.size()) : bytes).trimmed();
    const qsizetype equals = row.indexOf('=');
    const qsizetype end = row.indexOf(']');
    if (row.startsWith('[') && end > 0) {
        group = row.mid(1, end - 1).trimmed() + '/';
        lines.append({bytes, group, {}});
    } else if (equals > 0 && !row.startsWith(';')) {
        lines.append({bytes, group, group + row.left(equals).trimmed()});
    } else {
        lines.append({bytes, {}, {}});
    }
}

qsizetype IniText::lastWith(QByteArray Line::* part, const QByteArray& text) const
{
    const auto found = std::find_if(lines.crbegin(), lines.crend(), [&](const Line& line) {
        return (line.*part).compare(text, Qt::CaseInsensitive) == 0;
    });
    return std::distance(found, lines.crend()) - 1;
}

QString IniText::text(const QString& key, const QString& missing) const
{
    const qsizetype index = lastWith(&Line::name, key.toUtf8());
    return index < 0 ? missing : plainText(rawValue(lines[index].bytes));
}

void IniText::set(const QString& key, const QString& text)
{
    const QByteArray name = key.toUtf8();
    const QByteArray value = text.toUtf8();
    if (const qsizetype index = lastWith(&Line::name, name); index >= 0) {
        QByteArray& row = lines[index].bytes;
        if (rawValue(row) != value)
            row = row.left(row.indexOf('=') + 1) + value;
        return;
    }
    const qsizetype slash = name.indexOf('/');
    const QByteArray heading = name.left(slash + 1);
    const QByteArray row = name.mid(slash + 1) + '=' + value;
    if (const qsizetype last = lastWith(&Line::group, heading); last >= 0) {
        lines.insert(last + 1, {row, heading, name});
        return;
    }
    if (!lines.isEmpty())
        append({});
    append('[' + name.left(slash) + ']');
    append(row);
}
