#include "platform/linux/pipewire/mirror/clock_sampler.h"

#include <utility>

#include "platform/linux/pipewire/mirror/monotonic_time.h"

namespace purlock::host_linux {

namespace {

/// Two of the profiler's reports, and the time that a graph takes to stop and to start again with another
/// rate.
constexpr std::chrono::milliseconds samplingTime{2500};

/// After this time a graph that changes its rate has run cycles at the new one.
constexpr std::chrono::milliseconds rateChangeTime{130};

/// After a change a graph runs some cycles at its old rate.
constexpr std::chrono::nanoseconds oldCycles = std::chrono::milliseconds(120);

/// Everything that a graph's clock may follow: who runs at which rate, what is linked, and the settings.
std::string clockInfluences(const AudioGraph& graph) {
    std::string text =
        std::to_string(graph.settings.clockRate) + "/" + std::to_string(graph.settings.forcedRate);
    for (const std::uint32_t rate : graph.settings.allowedRates) text += "," + std::to_string(rate);
    for (const auto& [serial, node] : graph.nodes) {
        if (node.state != NodeState::running) continue;
        text +=
            ";" + std::to_string(serial) + ":" + std::to_string(node.properties.requestedRate.value_or(0));
        if (node.format) text += "@" + std::to_string(node.format->sampleRate);
    }
    for (const auto& [id, link] : graph.links) {
        text += ";" + std::to_string(link.outputNode) + ">" + std::to_string(link.inputNode);
    }
    return text;
}

}  // namespace

const pw_profiler_events ClockSampler::events = {.version = PW_VERSION_PROFILER_EVENTS,
                                                 .profile = event<&ClockSampler::profile>};

ClockSampler::ClockSampler(pw_loop* loop, pw_registry* registry, Observer observer)
    : registry_(registry),
      observer_(std::move(observer)),
      begin_(loop, [this] { begin(); }),
      end_(loop, [this] { end(); }),
      reported_(loop, [this] {
          if (sampling_ == Sampling::oneReport) end();
      }) {}

void ClockSampler::setProfiler(std::uint32_t id) {
    profiler_ = id;
    if (isSampling()) begin();
}

void ClockSampler::removeProfiler(std::uint32_t id) {
    if (profiler_ != id) return;
    profiler_.reset();
    listening_.reset();
}

void ClockSampler::follow(const AudioGraph& graph) {
    std::string influences = clockInfluences(graph);
    if (influences == influences_) return;
    influences_ = std::move(influences);
    changedAt_ = monotonicNow();
    schedule_.restart();
    if (graph.isAnyRunning()) sample();
}

std::int64_t ClockSampler::newRateFrom() const {
    return changedAt_ + oldCycles.count();
}

void ClockSampler::checkUp() {
    if (schedule_.isDue()) sampleOnce();
}

void ClockSampler::sample() {
    sampling_ = Sampling::forAWhile;
    end_.arm(samplingTime);
    if (!listening_) begin_.arm(rateChangeTime);
}

void ClockSampler::sampleOnce() {
    if (isSampling()) return;
    sampling_ = Sampling::oneReport;
    end_.arm(samplingTime);
    begin();
}

void ClockSampler::end() {
    sampling_ = Sampling::off;
    begin_.disarm();
    end_.disarm();
    listening_.reset();
}

void ClockSampler::profile(const spa_pod* pod) {
    if (const auto report = PodView::fromLibrary(pod)) observer_(graphClocksFromPod(*report));
    if (sampling_ == Sampling::oneReport) reported_.arm(std::chrono::milliseconds(0));
}

void ClockSampler::begin() {
    begin_.disarm();
    if (!profiler_ || listening_) return;
    auto proxy = bind(registry_, *profiler_, PW_TYPE_INTERFACE_Profiler, PW_VERSION_PROFILER);
    if (!proxy) return;
    listening_.emplace().proxy = std::move(proxy);
    auto* const profiler = reinterpret_cast<pw_profiler*>(listening_->proxy.get());
    pw_profiler_add_listener(profiler, listening_->listener.hook(), &events, this);
}

}  // namespace purlock::host_linux
