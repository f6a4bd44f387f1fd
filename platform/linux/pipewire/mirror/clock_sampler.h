#pragma once

// First: the profiler's header of PipeWire 1.4 does not include all that it uses.
#include <pipewire/pipewire.h>

#include <pipewire/extensions/profiler.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/rules/check_up_schedule.h"
#include "platform/linux/pipewire/rules/profile_pod.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// Learns the clock rates of the running graphs, which the server tells nowhere but in its profiler's
/// reports.
///
/// The profiler collects every cycle of every graph and reports at once when it begins to, then once a
/// second. So it is listened to for a short while only, after something has changed that may change a clock,
/// and now and then for one report, in case a change was not announced. An idle graph has no cycles. Owned by
/// a session; the loop's thread.
class ClockSampler {
  public:
    using Observer = std::function<void(const std::vector<GraphClock>&)>;

    ClockSampler(pw_loop* loop, pw_registry* registry, Observer observer);

    /// The server's profiler has come or gone.
    void setProfiler(std::uint32_t id);
    void removeProfiler(std::uint32_t id);

    /// The graph has changed. Samples if that may have moved a clock.
    void follow(const AudioGraph& graph);

    /// One of the check-ups while something plays. Samples one report, at some of them.
    void checkUp();

    /// Listens for a while, once the graph has had the time to change its rate: the first report comes at
    /// once, and the next a second later. Anew if it listens already.
    void sample();

    /// Listens until the next report, and no longer than `sample` does.
    void sampleOnce();

    /// True if it listens or is about to.
    bool isSampling() const { return sampling_ != Sampling::off; }

    bool hasProfiler() const { return profiler_.has_value(); }

    /// A cycle after this time has the rate that the last change has led to. Monotonic clock, ns.
    std::int64_t newRateFrom() const;

  private:
    enum class Sampling { off, oneReport, forAWhile };

    /// Ends the listening before the proxy.
    struct Listening {
        Proxy proxy;
        Listener listener;
    };

    void begin();
    void end();
    void profile(const spa_pod* pod);

    static const pw_profiler_events events;

    pw_registry* const registry_;
    const Observer observer_;
    std::optional<std::uint32_t> profiler_;
    Sampling sampling_ = Sampling::off;
    std::optional<Listening> listening_;
    std::string influences_;      // everything that the clocks may follow
    std::int64_t changedAt_ = 0;  // the influences; monotonic clock, ns
    CheckUpSchedule schedule_;
    LoopTimer begin_;
    LoopTimer end_;
    LoopTimer reported_;  // a proxy must not end within its own event
};

}  // namespace purlock::host_linux
