#pragma once

namespace purlock::host_linux {

/// The check-ups at which to look for a change of the clocks that nothing has announced: the first one after
/// an announced change, then others at growing distances.
class CheckUpSchedule {
  public:
    static constexpr int longestDistance = 4;  // check-ups

    void restart() { *this = {}; }

    /// True if this check-up is one of them.
    bool isDue() {
        if (--left_ > 0) return false;
        distance_ = distance_ == 0 ? 1 : distance_ * 2;
        if (distance_ > longestDistance) distance_ = longestDistance;
        left_ = distance_;
        return true;
    }

  private:
    int distance_ = 0;
    int left_ = 0;
};

}  // namespace purlock::host_linux
