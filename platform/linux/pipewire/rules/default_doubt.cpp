#include "platform/linux/pipewire/rules/default_doubt.h"

#include <set>

#include "platform/linux/pipewire/rules/routes.h"

namespace purlock::host_linux {

DefaultDoubt defaultDoubt(const AudioGraph& graph) {
    const Routes routes(graph);
    std::set<std::uint64_t> reached;
    for (const auto& [serial, node] : graph.nodes) {
        if (node.properties.role != NodeRole::outputStream || routes.isRelay(node)) continue;
        for (const std::uint64_t sink : routes.sinksFrom(serial)) reached.insert(sink);
    }
    const std::string named = graph.defaultSinkName.value_or("");
    for (const std::uint64_t sink : reached) {
        if (graph.nodes.at(sink).properties.name == named) return {};
    }
    if (reached.empty()) return {};
    return {named, {reached.begin(), reached.end()}};
}

}  // namespace purlock::host_linux
