#include "platform/linux/pipewire/mirror/bound_objects.h"

#include <utility>

#include "platform/linux/pipewire/rules/dictionaries.h"

namespace purlock::host_linux {

namespace {

/// More objects of one kind than any real session has; a client that makes more is not followed any further.
constexpr std::size_t mostObjects = 8192;
constexpr std::size_t mostPorts = 4 * mostObjects;

/// Numbers for objects of servers that give no serials; above any that a server gives.
constexpr std::uint64_t firstInventedSerial = std::uint64_t{1} << 48;

template <typename Map>
bool hasRoom(const Map& map) {
    return map.size() < mostObjects;
}

}  // namespace

bool BoundObjects::add(std::uint32_t id, std::string_view type, const spa_dict* properties) {
    if (type == PW_TYPE_INTERFACE_Node) return addNode(id, properties);
    if (type == PW_TYPE_INTERFACE_Device) return addDevice(id, properties);
    if (type == PW_TYPE_INTERFACE_Client) return addClient(id, properties);
    if (type == PW_TYPE_INTERFACE_Link) return addLink(id, properties);
    if (type == PW_TYPE_INTERFACE_Port) return addPort(id, properties);
    if (type == PW_TYPE_INTERFACE_Metadata) return addMetadata(id, properties);
    return false;
}

std::uint64_t BoundObjects::serialOf(const spa_dict* properties) {
    const std::uint64_t serial = objectSerial(properties);
    return serial != 0 ? serial : firstInventedSerial + ++inventedSerials_;
}

bool BoundObjects::addNode(std::uint32_t id, const spa_dict* properties) {
    if (!isSoundClass(dictionaryText(properties, "media.class")) || !hasRoom(nodes_)) return false;
    remove(id);
    const std::uint64_t serial = serialOf(properties);
    if (context_.graph.nodes.contains(serial)) return false;
    NodeRecord& record = context_.graph.nodes[serial];
    record.id = id;
    record.properties = nodeProperties(properties);
    record.isArriving = true;
    nodes_[id] = std::make_unique<BoundNode>(context_, serial);
    return true;
}

bool BoundObjects::addDevice(std::uint32_t id, const spa_dict* properties) {
    if (!isSoundClass(dictionaryText(properties, "media.class")) || !hasRoom(devices_)) return false;
    context_.graph.devices[id] = deviceProperties(properties);
    devices_[id] = std::make_unique<BoundDictionary>(context_.registry, id, BoundDictionary::Kind::device,
                                                     [this, id](const spa_dict* told) {
                                                         context_.graph.devices[id] = deviceProperties(told);
                                                         context_.sync.changed();
                                                     });
    return true;
}

bool BoundObjects::addClient(std::uint32_t id, const spa_dict* properties) {
    if (!hasRoom(clients_)) return false;
    context_.graph.clients[id] = {serialOf(properties), clientProperties(properties)};
    clients_[id] = std::make_unique<BoundDictionary>(
        context_.registry, id, BoundDictionary::Kind::client, [this, id](const spa_dict* told) {
            context_.graph.clients[id].properties = clientProperties(told);
            context_.sync.changed();
        });
    return true;
}

bool BoundObjects::addLink(std::uint32_t id, const spa_dict* properties) {
    const auto link = linkRecord(properties);
    if (!link || !hasRoom(context_.graph.links)) return false;
    context_.graph.links[id] = *link;
    return true;
}

/// Only the dictionary of a port is of interest, and the registry tells that.
bool BoundObjects::addPort(std::uint32_t id, const spa_dict* properties) {
    auto port = portRecord(properties);
    if (!port || !nodes_.contains(port->node) || context_.graph.ports.size() >= mostPorts) return false;
    context_.graph.ports[id] = std::move(*port);
    return true;
}

bool BoundObjects::addMetadata(std::uint32_t id, const spa_dict* properties) {
    const std::string name = dictionaryText(properties, "metadata.name");
    if (name != "default" && name != "settings") return false;
    if (!hasRoom(metadata_)) return false;
    const auto kind = name == "default" ? BoundMetadata::Kind::defaults : BoundMetadata::Kind::settings;
    metadata_[id] = std::make_unique<BoundMetadata>(context_, id, kind, [this] { settingsChanged(); });
    return true;
}

void BoundObjects::settingsChanged() {
    for (const auto& [id, node] : nodes_) node->choosePreferred();
    context_.sync.changed();
}

bool BoundObjects::remove(std::uint32_t id) {
    AudioGraph& graph = context_.graph;
    if (const auto node = nodes_.find(id); node != nodes_.end()) {
        const std::uint64_t serial = node->second->serial();
        nodes_.erase(node);
        graph.nodes.erase(serial);
        return true;
    }
    std::size_t removed = graph.links.erase(id) + graph.ports.erase(id);
    if (devices_.erase(id) > 0) removed += graph.devices.erase(id);
    if (clients_.erase(id) > 0) removed += graph.clients.erase(id);
    if (const auto store = metadata_.find(id); store != metadata_.end()) {
        store->second->removed();
        removed += metadata_.erase(id);
    }
    return removed > 0;
}

bool BoundObjects::syncDone(std::uint64_t sync) {
    bool isNews = false;
    for (const auto& [id, node] : nodes_) node->syncDone(sync);
    for (const auto& [id, store] : metadata_) isNews = store->syncDone(sync) || isNews;
    return isNews;
}

bool BoundObjects::clockCycle(std::uint32_t node, const GraphClock& clock) {
    const auto found = nodes_.find(node);
    return found != nodes_.end() && found->second->clockCycle(clock);
}

}  // namespace purlock::host_linux
