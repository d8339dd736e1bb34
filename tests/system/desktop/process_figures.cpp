#include "system/desktop/process_figures.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

std::optional<ProcessFigures> ProcessFigures::of(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1").arg(processId);
    QFile file(folder + QStringLiteral("/stat"));
    if (!file.open(QFile::ReadOnly))
        return std::nullopt;
    const QByteArray text = file.readAll();
    // The fields are counted behind the name, which may hold blanks itself.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    constexpr int userTime = 11;
    constexpr int systemTime = 12;
    constexpr int threadCount = 17;
    ProcessFigures figures;
    const qint64 ticks =
        fields.value(userTime).toLongLong() + fields.value(systemTime).toLongLong();
    figures.processorTime = std::chrono::milliseconds(ticks * 1000 / sysconf(_SC_CLK_TCK));
    figures.threads = fields.value(threadCount).toInt();
    figures.openFiles =
        static_cast<int>(QDir(folder + QStringLiteral("/fd"))
                             .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                             .size());
    return figures;
}
