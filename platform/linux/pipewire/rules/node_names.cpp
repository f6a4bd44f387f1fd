#include "platform/linux/pipewire/rules/node_names.h"

#include <string_view>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

/// Names stand in sentences; the server's may be up to 1024 bytes long.
constexpr std::size_t longestShown = 160;

std::string cut(std::string_view name) {
    return name.size() <= longestShown ? std::string(name) : wellFormed(name.substr(0, longestShown));
}

}  // namespace

std::string nameOf(const NodeProperties& node) {
    if (!node.description.empty()) return node.description;
    return node.nick.empty() ? node.name : node.nick;
}

std::string applicationNameOf(const NodeProperties& stream, const AudioGraph& graph) {
    if (!stream.applicationName.empty()) return cut(stream.applicationName);
    const auto client = graph.clients.find(stream.client.value_or(0));
    if (client != graph.clients.end() && !client->second.properties.applicationName.empty()) {
        return cut(client->second.properties.applicationName);
    }
    return cut(nameOf(stream));
}

}  // namespace purlock::host_linux
