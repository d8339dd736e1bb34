#pragma once

#include <chrono>
#include <optional>

/// For how long threads of this process have been ready to run and had no processor, all of them
/// added up: one that waits for a lock waits for its holder to get a processor. Nothing where the
/// system does not tell.
std::optional<std::chrono::nanoseconds> queueingTime();
