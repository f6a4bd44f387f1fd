#pragma once

#include <chrono>
#include <cstdint>

namespace purlock::host_linux {

/// Nanoseconds of the monotonic clock, by which PipeWire dates the cycles of a graph. Any thread.
inline std::int64_t monotonicNow() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

}  // namespace purlock::host_linux
