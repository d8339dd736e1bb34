#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// The lines of an INI file as QSettings reads and writes them. Of the values only plain texts are
/// understood; a line that is not set stays as it is, whatever it holds: nothing in it is decoded.
/// Keys are "Group/Key" and ignore case. Of several lines with one key the last counts.
class IniText
{
public:
    /// Lines end with "\n".
    explicit IniText(const QByteArray& content = {});
    QByteArray content() const;

    /// The key's text: `missing` when there is no such key, empty when it holds no plain text but a
    /// list, an escaped or an encoded value.
    QString text(const QString& key, const QString& missing) const;

    /// Puts a plain text (no blank at either end, no quote, comma, semicolon, backslash or "@")
    /// behind the key: in its line, else as the last line of its group, else in a new group at the
    /// end.
    void set(const QString& key, const QString& text);

private:
    struct Line
    {
        QByteArray bytes;
        QByteArray group; ///< "Group/"; empty for one without and for a line that means nothing
        QByteArray name;  ///< "Group/Key"; empty for a heading
    };

    void append(const QByteArray& bytes);
    /// The last line whose group or name is this one; -1 when there is none.
    qsizetype lastWith(QByteArray Line::* part, const QByteArray& text) const;

    QList<Line> lines;
    QByteArray group; ///< of what is appended next
};
