#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "base/cancellable.h"
#include "base/clock.h"
#include "base/run_loop.h"
#include "ui/view.h"

namespace purlock {

/// "now" within the first second, later "5s ago", however long it is. Pure.
std::string timeAgo(WallTime lastTick, WallTime now);

/// The dot in the header that flashes once for every recomputation of the report.
///
/// Owned by the panel; main thread only.
class LivePulse {
  public:
    /// `onChange` runs whenever the dot has become brighter or darker.
    LivePulse(RunLoop& mainLoop, WallTime lastTick, std::function<void()> onChange);

    /// Makes the dot bright, and dark 0.45 s later, whatever comes in between; nothing if `tick` is the one
    /// that it knows.
    void setLastTick(WallTime tick);

    /// The same without a flash; for what has passed while nobody saw it.
    void noteTick(WallTime tick) { lastTick_ = tick; }

    /// Makes the dot dark without a word; for when nobody sees it.
    void rest();

    bool bright() const { return bright_; }

    View body(WallTime now) const;

  private:
    void setBright(bool bright);

    RunLoop& mainLoop_;
    WallTime lastTick_;
    const std::function<void()> onChange_;
    bool bright_ = false;
    std::deque<Cancellable> dimmings_;
};

}  // namespace purlock
