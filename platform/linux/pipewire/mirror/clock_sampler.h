#pragma once

// First: the profiler's header of PipeWire 1.4 does not include all that it uses.
#include <pipewire/pipewire.h>

#include <pipewire/extensions/profiler.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/rules/profile_pod.h"

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

    /// Listens for a while, once the graph has had the time to change its rate: the first report comes at
    /// once, and the next a second later. Anew if it listens already.
    void sample();

    /// Listens until the next report, and no longer than `sample` does.
    void glance();

    /// Whether it listens or is about to.
    bool isSampling() const { return wanted_; }

    /// Whether the server has a profiler.
    bool isAbleTo() const { return profiler_.has_value(); }

  private:
    /// Ends the listening before the proxy.
    struct Listening {
        Proxy proxy;
        Listener listener;
    };

    void begin();
    void end();
    void reported(const spa_pod* pod);

    static const pw_profiler_events events;

    pw_registry* const registry_;
    const Observer observer_;
    std::optional<std::uint32_t> profiler_;
    bool wanted_ = false;
    bool isGlance_ = false;
    std::optional<Listening> listening_;
    LoopTimer begin_;
    LoopTimer end_;
    LoopTimer glanced_;  // a proxy must not end within its own event
};

}  // namespace purlock::host_linux
