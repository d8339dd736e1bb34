#include "line_watch.h"

namespace {

QtMessageHandler previousHandler = nullptr;
QString watchedLine;
std::function<void()> watchAction;

void watch(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text == watchedLine)
        watchAction();
    previousHandler(type, context, text);
}

} // namespace

LineWatch::LineWatch(const QString& line, std::function<void()> action)
{
    watchedLine = line;
    watchAction = std::move(action);
    previousHandler = qInstallMessageHandler(watch);
}

LineWatch::~LineWatch()
{
    qInstallMessageHandler(previousHandler);
}
