#include "system/desktop/process_figures.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <filesystem>

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

/// The number behind this name in the status of a process or thread.
std::optional<qint64> statusOf(const QString& folder, const char* field)
{
    const QByteArray name = QByteArray("\n") + field + ':';
    const auto text = contentOf(folder + QStringLiteral("/status"));
    const qsizetype place = text ? text->indexOf(name) : -1;
    if (place < 0)
        return std::nullopt;
    const qsizetype start = place + name.size();
    return number(text->mid(start, text->indexOf('\n', start) - start).replace(" kB", ""));
}

/// How often the thread has given up the processor by itself.
std::optional<qint64> wakeUpsOf(const QString& threadFolder)
{
    return statusOf(threadFolder, "voluntary_ctxt_switches");
}

/// "socket:[4711]" for one, the full name for a file.
QString openedAs(const QString& entry)
{
    std::error_code error;
    return QString::fromStdString(
        std::filesystem::read_symlink(entry.toStdString(), error).string());
}

int socketsAmong(const QStringList& files)
{
    return static_cast<int>(std::count_if(files.begin(), files.end(), [](const QString& file) {
        return openedAs(file).startsWith(QStringLiteral("socket:"));
    }));
}

} // namespace

std::optional<ProcessFigures> ProcessFigures::of(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1").arg(processId);
    const auto files = entriesOf(folder + QStringLiteral("/fd"));
    const auto threads = entriesOf(folder + QStringLiteral("/task"));
    const auto memory = statusOf(folder, "RssAnon");
    if (!files || !threads || !memory)
        return std::nullopt;

    ProcessFigures figures;
    figures.openFiles = static_cast<int>(files->size());
    figures.sockets = socketsAmong(*files);
    figures.memory = *memory;
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

QStringList ProcessFigures::details(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1").arg(processId);
    QStringList details;
    for (const QString& thread :
         entriesOf(folder + QStringLiteral("/task")).value_or(QStringList()))
        details.append(
            QStringLiteral("thread ") +
            QString::fromUtf8(contentOf(thread + QStringLiteral("/comm")).value_or(QByteArray()))
                .trimmed());
    for (const QString& file : entriesOf(folder + QStringLiteral("/fd")).value_or(QStringList()))
        details.append(openedAs(file));
    return details;
}
