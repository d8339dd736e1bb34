#include "support/queueing_time.h"

std::optional<std::chrono::nanoseconds> queueingTime()
{
    return std::nullopt;
}
