#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The clock that drives one node, as far as it is known. Reports of its cycles come up to a second late. So
/// a report of an earlier run of the node may come in a later one, when the clock has another rate. Owned by
/// the node; times are of the monotonic clock, in ns.
class NodeClock {
  public:
    /// Hz; absent until it has been seen. An idle node keeps the last rate that was seen.
    std::optional<double> rate() const { return rate_; }

    void changeState(NodeState state, std::int64_t now) {
        const bool ran = std::exchange(state_, state) == NodeState::running;
        const bool runs = state == NodeState::running;
        if (ran && !runs) stopped_ = now;
        if (isSuspended() || (runs && !ran)) rate_.reset();
    }

    /// A cycle that the node took part in. True if the rate is new.
    bool cycle(double rate, std::int64_t time) {
        if (isSuspended() || rate_ == rate) return false;
        if (state_ == NodeState::running && time <= stopped_) return false;
        rate_ = rate;
        return true;
    }

  private:
    bool isSuspended() const { return state_ == NodeState::suspended || state_ == NodeState::creating; }

    NodeState state_ = NodeState::creating;
    std::optional<double> rate_;
    std::int64_t stopped_ = 0;  // the end of its last run
};

}  // namespace purlock::host_linux
