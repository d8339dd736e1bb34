#pragma once

#include <functional>

/// Does `step` a few times to have all caches filled, then `count` times more, and prints the
/// median of their durations in microseconds. With a count of 0 nothing is printed: what such a run
/// costs is what a run costs beside its steps.
void repeat(int count, const std::function<void()>& step);
