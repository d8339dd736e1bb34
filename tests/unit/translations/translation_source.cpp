#include "translation_source.h"

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

bool sameText(const TranslationEntry& a, const TranslationEntry& b)
{
    return a.context == b.context && a.source == b.source;
}

QStringList placeholders(const QString& text)
{
    static const QRegularExpression placeholder(QStringLiteral("%\\d+"));
    QStringList found;
    for (auto match = placeholder.globalMatch(text); match.hasNext();)
        found.append(match.next().captured());
    found.sort();
    return found;
}

QString entryFault(const TranslationEntry& entry)
{
    if (!entry.state.isEmpty())
        return entry.state;
    if (entry.translation.trimmed().isEmpty())
        return QStringLiteral("empty");
    if (placeholders(entry.source) != placeholders(entry.translation))
        return QStringLiteral("other placeholders");
    return {};
}

} // namespace

QList<TranslationEntry> TranslationSource::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<TranslationEntry> entries;
    QXmlStreamReader xml(&file);
    QString context;
    TranslationEntry entry;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::EndElement && xml.name() == u"message")
            entries.append(entry);
        if (!xml.isStartElement())
            continue;
        if (xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.name() == u"message") {
            entry = {context, {}, {}, {}};
        } else if (xml.name() == u"source") {
            entry.source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            entry.state = xml.attributes().value(QLatin1String("type")).toString();
            entry.translation = xml.readElementText();
        }
    }
    return xml.hasError() ? QList<TranslationEntry>() : entries;
}

QStringList TranslationSource::faults(const QList<TranslationEntry>& wanted,
                                      const QList<TranslationEntry>& entries)
{
    QStringList lines;
    const auto complain = [&lines](const TranslationEntry& entry, const QString& fault) {
        lines.append(entry.context + ": \"" + entry.source + "\": " + fault);
    };
    const auto contains = [](const QList<TranslationEntry>& list, const TranslationEntry& entry) {
        return std::any_of(list.begin(), list.end(), [&entry](const TranslationEntry& candidate) {
            return sameText(candidate, entry);
        });
    };
    for (const TranslationEntry& entry : wanted) {
        if (!contains(entries, entry))
            complain(entry, QStringLiteral("missing"));
    }
    for (const TranslationEntry& entry : entries) {
        if (!contains(wanted, entry))
            complain(entry, QStringLiteral("not in the program"));
        else if (const QString fault = entryFault(entry); !fault.isEmpty())
            complain(entry, fault);
    }
    return lines;
}
