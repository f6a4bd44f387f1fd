#include "platform/linux/pipewire/rules/routes.h"

#include <algorithm>
#include <set>

namespace purlock::host_linux {

Routes::Routes(const AudioGraph& graph) : graph_(graph) {
    for (const auto& [serial, node] : graph.nodes) {
        serials_[node.id] = serial;
        if (node.properties.linkGroup.empty()) continue;
        Group& group = groups_[node.properties.linkGroup];
        if (node.properties.isStream()) {
            group.outputs.push_back(serial);
        } else {
            group.hasInput = true;
        }
    }
    for (const auto& [id, link] : graph.links) {
        const auto input = serials_.find(link.inputNode);
        if (input != serials_.end()) followers_[link.outputNode].push_back(input->second);
    }
}

const Routes::Group* Routes::groupOf(const NodeRecord& node) const {
    const auto group = groups_.find(node.properties.linkGroup);
    return group == groups_.end() ? nullptr : &group->second;
}

bool Routes::isRelay(const NodeRecord& stream) const {
    const Group* const group = groupOf(stream);
    return group != nullptr && group->hasInput;
}

std::size_t Routes::relayCount(const NodeRecord& node) const {
    const Group* const group = groupOf(node);
    return group == nullptr || node.properties.isStream() ? 0 : group->outputs.size();
}

std::vector<std::uint64_t> Routes::nextFrom(const NodeRecord& node) const {
    std::vector<std::uint64_t> next;
    const auto linked = followers_.find(node.id);
    if (linked != followers_.end()) next = linked->second;
    // A stream does not hand its sound to the other streams of its group.
    if (node.properties.isStream()) return next;
    if (const Group* const group = groupOf(node)) {
        next.insert(next.end(), group->outputs.begin(), group->outputs.end());
    }
    return next;
}

std::vector<Routes::Reached> Routes::reachedFrom(std::uint64_t serial) const {
    std::set<std::uint64_t> seen = {serial};
    std::vector<Reached> reached = {{serial, 0}};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const auto node = graph_.nodes.find(reached[i].serial);
        if (node == graph_.nodes.end()) continue;
        for (const std::uint64_t next : nextFrom(node->second)) {
            if (seen.insert(next).second) reached.push_back({next, i});
        }
    }
    return reached;
}

std::vector<std::uint64_t> Routes::sinksFrom(std::uint64_t serial) const {
    std::vector<std::uint64_t> sinks;
    for (const Reached& each : reachedFrom(serial)) {
        if (each.serial != serial && isSink(each.serial)) sinks.push_back(each.serial);
    }
    return sinks;
}

std::vector<Routes::Path> Routes::pathsFrom(std::uint64_t serial) const {
    const std::vector<Reached> reached = reachedFrom(serial);
    std::vector<Path> paths;
    for (std::size_t i = 1; i < reached.size(); ++i) {
        if (!isSink(reached[i].serial) || handsOn(reached[i].serial)) continue;
        Path path;
        for (std::size_t at = i; at != 0; at = reached[at].from) path.push_back(reached[at].serial);
        path.push_back(serial);
        std::reverse(path.begin(), path.end());
        paths.push_back(std::move(path));
    }
    return paths;
}

std::vector<std::uint64_t> Routes::endsOf(std::uint64_t sink) const {
    std::vector<std::uint64_t> ends;
    if (handsOn(sink)) {
        for (const std::uint64_t each : sinksFrom(sink)) {
            if (!handsOn(each)) ends.push_back(each);
        }
    }
    if (ends.empty()) ends.push_back(sink);
    return ends;
}

bool Routes::isSink(std::uint64_t serial) const {
    const auto node = graph_.nodes.find(serial);
    return node != graph_.nodes.end() && node->second.properties.isSink();
}

/// Hardware plays what it gets, also while another program listens to its monitor.
bool Routes::handsOn(std::uint64_t sink) const {
    const NodeProperties& properties = graph_.nodes.at(sink).properties;
    return !properties.pcm && !properties.device && !sinksFrom(sink).empty();
}

}  // namespace purlock::host_linux
