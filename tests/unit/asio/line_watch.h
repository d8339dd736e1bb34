#pragma once

#include <QString>

#include <functional>

/// Acts while a debug line is being written, in the writer's thread: at that very point of the
/// code. The line then goes on to where it went before. One instance at a time, destroyed before
/// the DebugLog below it.
class LineWatch
{
public:
    LineWatch(const QString& line, std::function<void()> action);
    ~LineWatch();
    LineWatch(const LineWatch&) = delete;
    LineWatch& operator=(const LineWatch&) = delete;
};
