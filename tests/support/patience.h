#pragma once

/// How long a test waits for what must happen, in milliseconds. Only a failure takes that long, so
/// a machine may be many times slower than any we know.
inline constexpr int patience = 45000;
