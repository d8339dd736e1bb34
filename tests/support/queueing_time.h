#pragma once

#include <chrono>
#include <optional>

/// For how long the calling thread has been ready to run and had no processor, since its start;
/// nothing where the system does not tell.
std::optional<std::chrono::nanoseconds> queueingTime();
