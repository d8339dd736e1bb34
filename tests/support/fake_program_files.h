#pragma once

#include <QFile>
#include <QStringList>

/// Ends the test when the file cannot be written.
inline void writeFile(const QString& name, const QByteArray& content)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(name));
}

/// The file's lines; nothing when there is no such file.
inline QStringList linesOf(const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    lines.removeLast();
    return lines;
}
