#include "platform/linux/pipewire/routes.h"

#include <set>

namespace purlock::host_linux {

namespace {

bool takesSound(NodeRole role) {
    return role == NodeRole::sink || role == NodeRole::duplex;
}

}  // namespace

Routes::Routes(const AudioGraph& graph) : graph_(graph) {
    for (const auto& [serial, node] : graph.nodes) {
        serials_[node.id] = serial;
        if (node.properties.linkGroup.empty()) continue;
        Group& group = groups_[node.properties.linkGroup];
        if (node.properties.role == NodeRole::outputStream) {
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
    return group == nullptr || node.properties.role == NodeRole::outputStream ? 0 : group->outputs.size();
}

std::vector<std::uint64_t> Routes::nextFrom(const NodeRecord& node) const {
    std::vector<std::uint64_t> next;
    const auto linked = followers_.find(node.id);
    if (linked != followers_.end()) next = linked->second;
    // A stream does not hand its sound to the other streams of its group.
    if (node.properties.role == NodeRole::outputStream) return next;
    if (const Group* const group = groupOf(node)) {
        next.insert(next.end(), group->outputs.begin(), group->outputs.end());
    }
    return next;
}

std::vector<std::uint64_t> Routes::sinksFrom(std::uint64_t serial) const {
    std::vector<std::uint64_t> sinks;
    std::set<std::uint64_t> seen = {serial};
    std::vector<std::uint64_t> queue = {serial};
    for (std::size_t i = 0; i < queue.size(); ++i) {
        const auto node = graph_.nodes.find(queue[i]);
        if (node == graph_.nodes.end()) continue;
        if (i > 0 && takesSound(node->second.properties.role)) sinks.push_back(queue[i]);
        for (const std::uint64_t next : nextFrom(node->second)) {
            if (seen.insert(next).second) queue.push_back(next);
        }
    }
    return sinks;
}

}  // namespace purlock::host_linux
