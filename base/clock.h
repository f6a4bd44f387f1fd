#pragma once

#include <chrono>

namespace purlock {

using WallTime = std::chrono::system_clock::time_point;

/// Tells the wall-clock time. Any thread.
class Clock {
  public:
    Clock() = default;
    virtual ~Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    virtual WallTime now() const = 0;
};

/// The system's own clock.
class SystemClock final : public Clock {
  public:
    WallTime now() const override { return std::chrono::system_clock::now(); }
};

}  // namespace purlock
