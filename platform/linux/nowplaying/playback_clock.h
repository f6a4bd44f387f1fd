#pragma once

#include <chrono>
#include <optional>

namespace purlock::host_linux {

/// The position of a player in its track, computed from its last answer and the time since. A value; on one
/// thread.
class PlaybackClock {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    /// What the player said; absent when it is not known.
    void setPosition(std::optional<double> seconds, Moment now);

    /// How fast it plays from now on, 0 while it does not.
    void setRate(double rate, Moment now);

    /// Absent while it is not known.
    std::optional<double> positionAt(Moment now) const;

    bool operator==(const PlaybackClock&) const = default;

  private:
    std::optional<double> seconds_;
    Moment told_{};
    double rate_ = 0;
};

}  // namespace purlock::host_linux
