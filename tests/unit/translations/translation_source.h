#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One text of a translation source file (.ts).
struct TranslationEntry
{
    QString context; ///< the class that asks for the text
    QString source;
    QString translation;
    QString state; ///< empty when finished, else "unfinished", "vanished" or "obsolete"
};

/// Reading and judging translation source files.
namespace TranslationSource {

/// The entries of a file; empty when it cannot be read or is damaged.
QList<TranslationEntry> read(const QString& path);

/// What a translation lacks that has to cover the `wanted` texts, a line each.
QStringList faults(const QList<TranslationEntry>& wanted, const QList<TranslationEntry>& entries);

} // namespace TranslationSource
