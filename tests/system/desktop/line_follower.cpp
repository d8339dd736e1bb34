#include "system/desktop/line_follower.h"

#include <QFile>

LineFollower::LineFollower(const QString& fileName)
    : name(fileName)
{
}

QStringList LineFollower::take()
{
    QFile file(name);
    if (!file.open(QFile::ReadOnly) || !file.seek(place))
        return {};
    const QByteArray arrived = file.readAll();
    place += arrived.size();
    unfinished += arrived;
    const qsizetype end = unfinished.lastIndexOf('\n');
    if (end < 0)
        return {};
    QString text = QString::fromUtf8(unfinished.left(end));
    unfinished.remove(0, end + 1);
    return text.remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
}
