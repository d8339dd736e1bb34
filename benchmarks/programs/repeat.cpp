#include "benchmarks/programs/repeat.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <vector>

namespace {

constexpr int warmUp = 20;

} // namespace

void repeat(int count, const std::function<void()>& step)
{
    using Clock = std::chrono::steady_clock;
    for (int i = 0; i < warmUp; ++i)
        step();
    if (count <= 0)
        return;
    std::vector<Clock::duration> times(static_cast<std::size_t>(count));
    for (Clock::duration& time : times) {
        const Clock::time_point start = Clock::now();
        step();
        time = Clock::now() - start;
    }
    const auto middle = times.begin() + count / 2;
    std::nth_element(times.begin(), middle, times.end());
    // The driver room's lines have made this stream a wide one.
    std::wcout << std::chrono::duration<double, std::micro>(*middle).count() << std::endl;
}
