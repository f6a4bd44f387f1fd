#include "platform/linux/pipewire/mirror/bound_objects.h"

#include <string_view>
#include <utility>

#include "platform/linux/pipewire/mirror/bound_metadata.h"
#include "platform/linux/pipewire/mirror/bound_node.h"
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

/// A sound card or the like; only its dictionary matters.
class BoundObjects::Device {
  public:
    Device(Owner& owner, std::uint32_t id)
        : owner_(owner),
          id_(id),
          proxy_(static_cast<pw_proxy*>(
              pw_registry_bind(owner.registry(), id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE, 0))) {
        auto* const device = reinterpret_cast<pw_device*>(proxy_.get());
        if (device != nullptr) pw_device_add_listener(device, listener_.hook(), &events, this);
    }

  private:
    void informed(const pw_device_info& info) {
        if ((info.change_mask & PW_DEVICE_CHANGE_MASK_PROPS) == 0) return;
        owner_.mirror().devices[id_] = deviceProperties(info.props);
        owner_.changed();
    }

    static const pw_device_events events;

    Owner& owner_;
    const std::uint32_t id_;
    Proxy proxy_;
    Listener listener_;
};

const pw_device_events BoundObjects::Device::events = {
    .version = PW_VERSION_DEVICE_EVENTS,
    .info =
        [](void* data, const pw_device_info* info) {
            if (info != nullptr) static_cast<Device*>(data)->informed(*info);
        },
};

/// A program that is connected to the server; only its dictionary matters.
class BoundObjects::Client {
  public:
    Client(Owner& owner, std::uint32_t id)
        : owner_(owner),
          id_(id),
          proxy_(static_cast<pw_proxy*>(
              pw_registry_bind(owner.registry(), id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0))) {
        auto* const client = reinterpret_cast<pw_client*>(proxy_.get());
        if (client != nullptr) pw_client_add_listener(client, listener_.hook(), &events, this);
    }

  private:
    void informed(const pw_client_info& info) {
        if ((info.change_mask & PW_CLIENT_CHANGE_MASK_PROPS) == 0) return;
        owner_.mirror().clients[id_].properties = clientProperties(info.props);
        owner_.changed();
    }

    static const pw_client_events events;

    Owner& owner_;
    const std::uint32_t id_;
    Proxy proxy_;
    Listener listener_;
};

const pw_client_events BoundObjects::Client::events = {
    .version = PW_VERSION_CLIENT_EVENTS,
    .info =
        [](void* data, const pw_client_info* info) {
            if (info != nullptr) static_cast<Client*>(data)->informed(*info);
        },
};

BoundObjects::BoundObjects(Owner& owner) : owner_(owner) {}

BoundObjects::~BoundObjects() = default;

bool BoundObjects::add(std::uint32_t id, const char* type, std::uint32_t, const spa_dict* properties) {
    const std::string_view kind = type;
    if (kind == PW_TYPE_INTERFACE_Node) return addNode(id, properties);
    if (kind == PW_TYPE_INTERFACE_Device) return addDevice(id, properties);
    if (kind == PW_TYPE_INTERFACE_Client) return addClient(id, properties);
    if (kind == PW_TYPE_INTERFACE_Link) return addLink(id, properties);
    if (kind == PW_TYPE_INTERFACE_Port) return addPort(id, properties);
    if (kind == PW_TYPE_INTERFACE_Metadata) return addMetadata(id, properties);
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
    NodeRecord& record = owner_.mirror().nodes[serial];
    record.id = id;
    record.properties = nodeProperties(properties);
    record.isArriving = true;
    nodes_[id] = std::make_unique<Node>(owner_, id, serial);
    return true;
}

bool BoundObjects::addDevice(std::uint32_t id, const spa_dict* properties) {
    if (!isSoundClass(dictionaryText(properties, "media.class")) || !hasRoom(devices_)) return false;
    owner_.mirror().devices[id] = deviceProperties(properties);
    devices_[id] = std::make_unique<Device>(owner_, id);
    return true;
}

bool BoundObjects::addClient(std::uint32_t id, const spa_dict* properties) {
    if (!hasRoom(clients_)) return false;
    owner_.mirror().clients[id] = {serialOf(properties), clientProperties(properties)};
    clients_[id] = std::make_unique<Client>(owner_, id);
    return true;
}

bool BoundObjects::addLink(std::uint32_t id, const spa_dict* properties) {
    const auto link = linkRecord(properties);
    if (!link || !hasRoom(owner_.mirror().links)) return false;
    owner_.mirror().links[id] = *link;
    return true;
}

/// Only the dictionary of a port is of interest, and the registry tells that.
bool BoundObjects::addPort(std::uint32_t id, const spa_dict* properties) {
    auto port = portRecord(properties);
    if (!port || !nodes_.contains(port->node) || owner_.mirror().ports.size() >= mostPorts) return false;
    owner_.mirror().ports[id] = std::move(*port);
    return true;
}

bool BoundObjects::addMetadata(std::uint32_t id, const spa_dict* properties) {
    const std::string name = dictionaryText(properties, "metadata.name");
    if (name != "default" && name != "settings") return false;
    const auto kind = name == "default" ? Metadata::Kind::defaults : Metadata::Kind::settings;
    if (!hasRoom(metadata_)) return false;
    metadata_[id] = std::make_unique<Metadata>(*this, id, kind);
    return true;
}

bool BoundObjects::remove(std::uint32_t id) {
    AudioGraph& mirror = owner_.mirror();
    if (const auto node = nodes_.find(id); node != nodes_.end()) {
        mirror.nodes.erase(node->second->serial());
        nodes_.erase(node);
        return true;
    }
    std::size_t removed = mirror.links.erase(id) + mirror.ports.erase(id);
    if (devices_.erase(id) > 0) removed += mirror.devices.erase(id);
    if (clients_.erase(id) > 0) removed += mirror.clients.erase(id);
    if (const auto store = metadata_.find(id); store != metadata_.end()) {
        store->second->forget();
        removed += metadata_.erase(id);
    }
    return removed > 0;
}

void BoundObjects::commit(std::uint64_t sync) {
    for (const auto& [id, node] : nodes_) node->commit(sync);
    for (const auto& [id, store] : metadata_) store->commit(sync);
}

bool BoundObjects::sawClock(std::uint32_t node, const GraphClock& clock) {
    const auto found = nodes_.find(node);
    return found != nodes_.end() && found->second->sawClock(clock);
}

}  // namespace purlock::host_linux
