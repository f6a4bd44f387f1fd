#include "platform/linux/pipewire/rules/missed_default.h"

#include <set>

#include "platform/linux/pipewire/rules/routes.h"

namespace purlock::host_linux {

std::optional<MissedDefault> missedDefault(const AudioGraph& graph) {
    const Routes routes(graph);
    std::set<std::uint64_t> reached;
    for (const auto& [serial, node] : graph.nodes) {
        if (!node.properties.isStream() || routes.isRelay(node)) continue;
        for (const std::uint64_t sink : routes.sinksFrom(serial)) reached.insert(sink);
    }
    if (reached.empty()) return std::nullopt;
    const std::string named = graph.defaultSinkName.value_or("");
    for (const std::uint64_t sink : reached) {
        if (graph.nodes.at(sink).properties.name == named) return std::nullopt;
    }
    return MissedDefault{named, {reached.begin(), reached.end()}};
}

}  // namespace purlock::host_linux
