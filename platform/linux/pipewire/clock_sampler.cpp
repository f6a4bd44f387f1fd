#include "platform/linux/pipewire/clock_sampler.h"

#include <utility>

namespace purlock::host_linux {

namespace {

/// Long enough for a graph that has to stop and start again in order to change its rate.
constexpr std::chrono::milliseconds samplingTime{700};

void profiled(void* data, const spa_pod* pod) {
    const auto report = PodView::fromLibrary(pod);
    if (!report) return;
    (*static_cast<const ClockSampler::Observer*>(data))(graphClocksFromPod(*report));
}

constexpr pw_profiler_events events = {.version = PW_VERSION_PROFILER_EVENTS, .profile = profiled};

}  // namespace

ClockSampler::ClockSampler(pw_loop* loop, pw_registry* registry, Observer observer)
    : registry_(registry), observer_(std::move(observer)), end_(loop, [this] {
          wanted_ = false;
          listening_.reset();
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
    end_.arm(samplingTime);
    if (!listening_) begin();
}

void ClockSampler::begin() {
    if (!profiler_) return;
    listening_.emplace();
    listening_->proxy.reset(static_cast<pw_proxy*>(
        pw_registry_bind(registry_, *profiler_, PW_TYPE_INTERFACE_Profiler, PW_VERSION_PROFILER, 0)));
    if (!listening_->proxy) {
        listening_.reset();
        return;
    }
    auto* const profiler = reinterpret_cast<pw_profiler*>(listening_->proxy.get());
    // The library hands the data back as it was given; the observer is only read.
    pw_profiler_add_listener(profiler, listening_->listener.hook(), &events,
                             const_cast<Observer*>(&observer_));
}

}  // namespace purlock::host_linux
