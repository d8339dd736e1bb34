#include "support/debug_log.h"

#include <QMutex>
#include <QtGlobal>

namespace {

QMutex mutex;
QStringList* collected = nullptr;
QtMessageHandler previousHandler = nullptr;

/// Empty for a line of the common category that tells no place in the sources, as all of ours
/// have to be.
QString oddity(const QMessageLogContext& context)
{
    if (qstrcmp(context.category, "default") == 0 && context.file == nullptr && context.line == 0)
        return {};
    return QStringLiteral("[%1 %2:%3] ")
        .arg(QLatin1String(context.category), QLatin1String(context.file))
        .arg(context.line);
}

void collect(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const QMutexLocker lock(&mutex);
    if (collected == nullptr)
        return;
    // A copy in full: what two threads share is counted inside the toolkit, out of the thread
    // sanitizer's sight.
    const QLatin1String prefix(type == QtDebugMsg ? "" : "warning: ");
    collected->append(oddity(context) + prefix + QString(text.constData(), text.size()));
}

} // namespace

DebugLog::DebugLog()
{
    const QMutexLocker lock(&mutex);
    Q_ASSERT(collected == nullptr);
    collected = new QStringList;
    previousHandler = qInstallMessageHandler(collect);
}

DebugLog::~DebugLog()
{
    // A handler that took this one's place in the meantime stays.
    const QtMessageHandler current = qInstallMessageHandler(previousHandler);
    if (current != collect)
        qInstallMessageHandler(current);
    const QMutexLocker lock(&mutex);
    delete collected;
    collected = nullptr;
}

QStringList DebugLog::lines() const
{
    const QMutexLocker lock(&mutex);
    return {collected->cbegin(), collected->cend()};
}

QStringList DebugLog::take()
{
    const QMutexLocker lock(&mutex);
    return std::exchange(*collected, {});
}

void DebugLog::clear()
{
    take();
}
