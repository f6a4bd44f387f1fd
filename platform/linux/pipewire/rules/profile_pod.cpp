#include "platform/linux/pipewire/rules/profile_pod.h"

#include <spa/param/profiler.h>
#include <spa/utils/type.h>

#include <optional>
#include <utility>

namespace purlock::host_linux {

namespace {

// The clock's struct: flags, id, name, time, rate.
constexpr std::size_t timeMember = 3;
constexpr std::size_t rateMember = 4;
constexpr std::size_t mostNodes = 4096;

/// A cycle that drives nothing yet.
std::optional<GraphClock> cycleFromClock(const PodView& clock) {
    const auto members = clock.members();
    if (members.size() <= rateMember) return std::nullopt;
    const auto time = members[timeMember].longInteger();
    const auto fraction = members[rateMember].fraction();  // the length of a frame in seconds
    if (!time || !fraction || fraction->numerator == 0 || fraction->denominator == 0) return std::nullopt;
    const double rate = static_cast<double>(fraction->denominator) / static_cast<double>(fraction->numerator);
    return GraphClock{.rate = rate, .time = *time, .nodes = {}};
}

std::optional<std::uint32_t> nodeFromBlock(const PodView& block) {
    const auto members = block.members();
    if (members.empty()) return std::nullopt;
    const auto id = members.front().integer();
    if (!id || *id < 0) return std::nullopt;
    return static_cast<std::uint32_t>(*id);
}

std::optional<GraphClock> graphClock(const PodView& object) {
    std::optional<GraphClock> clock;
    std::optional<std::uint32_t> driver;
    std::vector<std::uint32_t> followers;
    for (const PodView::Property& property : object.properties(SPA_TYPE_OBJECT_Profiler)) {
        if (property.key == SPA_PROFILER_clock) clock = cycleFromClock(property.value);
        if (property.key == SPA_PROFILER_driverBlock) driver = nodeFromBlock(property.value);
        if (property.key != SPA_PROFILER_followerBlock || followers.size() >= mostNodes) continue;
        if (const auto follower = nodeFromBlock(property.value)) followers.push_back(*follower);
    }
    if (!clock || !driver) return std::nullopt;
    clock->nodes.push_back(*driver);
    clock->nodes.insert(clock->nodes.end(), followers.begin(), followers.end());
    return clock;
}

}  // namespace

std::vector<GraphClock> graphClocksFromPod(const PodView& report) {
    std::vector<GraphClock> clocks;
    for (const PodView& object : report.members()) {
        if (auto clock = graphClock(object)) clocks.push_back(std::move(*clock));
    }
    return clocks;
}

}  // namespace purlock::host_linux
