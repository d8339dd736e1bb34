#include "system/desktop/process_figures.h"

#include <QFile>
#include <QStringList>

#include <filesystem>

#include <unistd.h>

namespace {

std::optional<QByteArray> contentOf(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QFile::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

std::optional<QStringList> entriesOf(const QString& folder)
{
    std::error_code error;
    QStringList entries;
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator entry(folder.toStdString(), error);
         !error && entry != end; entry.increment(error))
        entries.append(QString::fromStdString(entry->path().string()));
    if (error)
        return std::nullopt;
    return entries;
}

std::optional<qint64> number(const QByteArray& text)
{
    bool isNumber = false;
    const qint64 value = text.trimmed().toLongLong(&isNumber);
    return isNumber ? std::optional(value) : std::nullopt;
}

/// How often the thread has given up the processor by itself.
std::optional<qint64> wakeUpsOf(const QString& threadFolder)
{
    const QByteArray name = "\nvoluntary_ctxt_switches:";
    const auto text = contentOf(threadFolder + QStringLiteral("/status"));
    const qsizetype place = text ? text->indexOf(name) : -1;
    if (place < 0)
        return std::nullopt;
    const qsizetype start = place + name.size();
    return number(text->mid(start, text->indexOf('\n', start) - start));
}

} // namespace

std::optional<ProcessFigures> ProcessFigures::of(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1").arg(processId);
    const auto text = contentOf(folder + QStringLiteral("/stat"));
    const auto files = entriesOf(folder + QStringLiteral("/fd"));
    const auto threads = entriesOf(folder + QStringLiteral("/task"));
    if (!text || !files || !threads)
        return std::nullopt;

    // The fields are counted behind the name, which may hold blanks itself.
    const QList<QByteArray> fields = text->mid(text->lastIndexOf(')') + 2).split(' ');
    constexpr int userTime = 11;
    constexpr int systemTime = 12;
    const auto user = number(fields.value(userTime));
    const auto system = number(fields.value(systemTime));
    if (!user || !system)
        return std::nullopt;

    ProcessFigures figures;
    figures.processorTime =
        std::chrono::milliseconds((*user + *system) * 1000 / sysconf(_SC_CLK_TCK));
    figures.openFiles = static_cast<int>(files->size());
    figures.threads = static_cast<int>(threads->size());
    for (const QString& thread : *threads) {
        // One that has ended in the meantime has nothing more to tell.
        const auto wakeUps = wakeUpsOf(thread);
        if (!wakeUps && QFile::exists(thread))
            return std::nullopt;
        figures.wakeUps += wakeUps.value_or(0);
    }
    return figures;
}
