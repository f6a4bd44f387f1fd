#include "platform/linux/pipewire/rules/transition.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

#include "platform/linux/pipewire/rules/routes.h"

namespace purlock::host_linux {

namespace {

/// The streams of applications that run and lead to a sink, and those sinks.
struct Playing {
    std::set<double> rates;
    std::vector<const NodeRecord*> sinks;
    int streams = 0;
    bool forcesRate = false;
    bool isUnfinished = false;
};

Playing playingIn(const AudioGraph& graph) {
    const Routes routes(graph);
    Playing playing;
    for (const auto& [serial, node] : graph.nodes) {
        const NodeProperties& properties = node.properties;
        if (!properties.isStream() || routes.isRelay(node)) continue;
        if (node.state != NodeState::running) continue;
        const auto sinks = routes.sinksFrom(serial);
        // JACK's clients run whether they are connected or not, and have no format.
        if (!properties.isJack && (sinks.empty() || !node.format)) playing.isUnfinished = true;
        if (sinks.empty()) continue;
        ++playing.streams;
        for (const std::uint64_t sink : sinks) playing.sinks.push_back(&graph.nodes.at(sink));
        if (node.format && node.format->sampleRate > 0) playing.rates.insert(node.format->sampleRate);
        playing.forcesRate = playing.forcesRate || properties.forcedRate.has_value();
    }
    return playing;
}

/// A recorder or another device that runs may have held a clock at its rate before the stream came.
bool isAnythingElseRunning(const AudioGraph& graph, const Playing& playing) {
    return std::any_of(graph.nodes.begin(), graph.nodes.end(), [&playing](const auto& each) {
        const NodeRecord& node = each.second;
        if (node.state != NodeState::running || !node.properties.linkGroup.empty()) return false;
        if (node.properties.isStream()) return false;
        return std::find(playing.sinks.begin(), playing.sinks.end(), &node) == playing.sinks.end();
    });
}

/// The rate that the server gives the clock; absent when that depends on what played before.
std::optional<double> expectedClock(const AudioGraph& graph, const Playing& playing) {
    const ServerSettings& settings = graph.settings;
    if (settings.forcedRate != 0) return settings.forcedRate;
    if (playing.forcesRate) return std::nullopt;
    if (settings.allowedRates.size() <= 1) return settings.clockRate;
    if (playing.streams != 1 || playing.rates.size() != 1) return std::nullopt;
    if (isAnythingElseRunning(graph, playing)) return std::nullopt;
    const double rate = *playing.rates.begin();
    return settings.allows(rate) ? std::optional(rate) : std::nullopt;
}

}  // namespace

bool isInTransition(const AudioGraph& graph, bool knowsClocks, std::int64_t newRateFrom) {
    const Playing playing = playingIn(graph);
    if (playing.isUnfinished) return true;
    const auto expected = expectedClock(graph, playing);
    return std::any_of(playing.sinks.begin(), playing.sinks.end(), [&](const NodeRecord* sink) {
        if (sink->state != NodeState::running || !sink->format) return true;
        if (!knowsClocks) return false;
        if (!sink->clockRate) return !expected;  // else the expected one is as good as seen
        return sink->clockTime < newRateFrom && sink->clockRate != expected;
    });
}

}  // namespace purlock::host_linux
