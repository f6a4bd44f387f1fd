#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "platform/linux/pipewire/mirror/bind_context.h"
#include "platform/linux/pipewire/mirror/bound_dictionary.h"
#include "platform/linux/pipewire/mirror/bound_metadata.h"
#include "platform/linux/pipewire/mirror/bound_node.h"

namespace purlock::host_linux {

/// The server's objects that the mirror follows. Each is bound, and writes what it hears to its record.
///
/// Owned by a session; the loop's thread. Objects are routed by their type and nothing else; the rules say
/// what their dictionaries and parameters mean.
class BoundObjects {
  public:
    explicit BoundObjects(const BindContext& context) : context_(context) {}
    BoundObjects(const BoundObjects&) = delete;
    BoundObjects& operator=(const BoundObjects&) = delete;

    /// True if the mirror follows this object from now on.
    bool add(std::uint32_t id, std::string_view type, const spa_dict* properties);

    /// True if the mirror followed it.
    bool remove(std::uint32_t id);

    /// The sync of this number is done. The lists that were asked for before it are whole now and go to the
    /// mirror. The result says whether anything else of the mirror has changed.
    bool syncDone(std::uint64_t sync);

    /// A cycle of the graph that a node belongs to. True if its rate is new.
    bool clockCycle(std::uint32_t node, const GraphClock& clock);

  private:
    bool addNode(std::uint32_t id, const spa_dict* properties);
    bool addDevice(std::uint32_t id, const spa_dict* properties);
    bool addClient(std::uint32_t id, const spa_dict* properties);
    bool addLink(std::uint32_t id, const spa_dict* properties);
    bool addPort(std::uint32_t id, const spa_dict* properties);
    bool addMetadata(std::uint32_t id, const spa_dict* properties);
    void settingsChanged();
    std::uint64_t serialOf(const spa_dict* properties);

    const BindContext context_;
    std::map<std::uint32_t, std::unique_ptr<BoundNode>> nodes_;  // all by id
    std::map<std::uint32_t, std::unique_ptr<BoundDictionary>> devices_;
    std::map<std::uint32_t, std::unique_ptr<BoundDictionary>> clients_;
    std::map<std::uint32_t, std::unique_ptr<BoundMetadata>> metadata_;
    std::uint64_t inventedSerials_ = 0;
};

}  // namespace purlock::host_linux
