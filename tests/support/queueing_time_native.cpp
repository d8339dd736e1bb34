#include "support/queueing_time.h"

#include <QFile>

std::optional<std::chrono::nanoseconds> queueingTime()
{
    // Time on the processor, time in its queue, turns.
    QFile file(QStringLiteral("/proc/thread-self/schedstat"));
    if (!file.open(QFile::ReadOnly))
        return std::nullopt;
    bool isNumber = false;
    const qint64 time = file.readAll().split(' ').value(1).toLongLong(&isNumber);
    return isNumber ? std::optional(std::chrono::nanoseconds(time)) : std::nullopt;
}
