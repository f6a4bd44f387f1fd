#include "platform/linux/pipewire/mirror/clock_sampler.h"

#include <utility>

namespace purlock::host_linux {

namespace {

/// Two of the profiler's reports, and the time that a graph takes to stop and to start again with another
/// rate.
constexpr std::chrono::milliseconds samplingTime{2500};

/// After this time a graph that changes its rate has run cycles at the new one.
constexpr std::chrono::milliseconds settlingTime{130};

}  // namespace

const pw_profiler_events ClockSampler::events = {
    .version = PW_VERSION_PROFILER_EVENTS,
    .profile = [](void* data, const spa_pod* pod) { static_cast<ClockSampler*>(data)->reported(pod); },
};

ClockSampler::ClockSampler(pw_loop* loop, pw_registry* registry, Observer observer)
    : registry_(registry),
      observer_(std::move(observer)),
      begin_(loop, [this] { begin(); }),
      end_(loop, [this] { end(); }),
      glanced_(loop, [this] {
          if (isGlance_) end();
      }) {}

void ClockSampler::setProfiler(std::uint32_t id) {
    profiler_ = id;
    if (wanted_) begin();
}

void ClockSampler::removeProfiler(std::uint32_t id) {
    if (profiler_ != id) return;
    profiler_.reset();
    listening_.reset();
}

void ClockSampler::sample() {
    wanted_ = true;
    isGlance_ = false;
    end_.arm(samplingTime);
    if (!listening_) begin_.arm(settlingTime);
}

void ClockSampler::glance() {
    if (wanted_) return;
    sample();
    isGlance_ = true;
    begin();
}

void ClockSampler::end() {
    wanted_ = false;
    begin_.disarm();
    end_.disarm();
    listening_.reset();
}

void ClockSampler::reported(const spa_pod* pod) {
    if (const auto report = PodView::fromLibrary(pod)) observer_(graphClocksFromPod(*report));
    if (isGlance_) glanced_.arm(std::chrono::milliseconds(0));
}

void ClockSampler::begin() {
    begin_.disarm();
    if (!profiler_ || listening_) return;
    listening_.emplace();
    listening_->proxy.reset(static_cast<pw_proxy*>(
        pw_registry_bind(registry_, *profiler_, PW_TYPE_INTERFACE_Profiler, PW_VERSION_PROFILER, 0)));
    if (!listening_->proxy) {
        listening_.reset();
        return;
    }
    auto* const profiler = reinterpret_cast<pw_profiler*>(listening_->proxy.get());
    pw_profiler_add_listener(profiler, listening_->listener.hook(), &events, this);
}

}  // namespace purlock::host_linux
