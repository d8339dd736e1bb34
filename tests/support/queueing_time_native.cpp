#include "support/queueing_time.h"

#include <cstdio>
#include <filesystem>

namespace {

std::optional<std::chrono::nanoseconds> queueingTimeOf(const std::filesystem::path& thread)
{
    // Time on the processor, time in its queue, turns.
    std::FILE* file = std::fopen((thread / "schedstat").c_str(), "r");
    if (file == nullptr)
        return std::nullopt;
    long long running = 0;
    long long queueing = 0;
    const int fields = std::fscanf(file, "%lld %lld", &running, &queueing);
    std::fclose(file);
    return fields == 2 ? std::optional(std::chrono::nanoseconds(queueing)) : std::nullopt;
}

} // namespace

std::optional<std::chrono::nanoseconds> queueingTime()
{
    std::chrono::nanoseconds sum{};
    std::error_code error;
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator thread("/proc/self/task", error);
         !error && thread != end; thread.increment(error)) {
        const auto time = queueingTimeOf(thread->path());
        if (!time)
            return std::nullopt;
        sum += *time;
    }
    return error ? std::nullopt : std::optional(sum);
}
