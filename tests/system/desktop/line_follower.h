#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Reads the lines that a running program appends to a file, each once.
class LineFollower
{
public:
    explicit LineFollower(const QString& fileName);

    /// The whole lines that came since the last call.
    QStringList take();

private:
    QString name;
    qint64 place = 0;
    QByteArray unfinished;
};
