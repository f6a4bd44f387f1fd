#pragma once

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/rules/profile_pod.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The server's objects that the mirror follows: each is bound, and writes what it hears to its record.
///
/// Owned by a session; the loop's thread. Objects are routed by their kind and nothing else; what their
/// dictionaries and parameters mean is decided by pure functions elsewhere.
class BoundObjects {
  public:
    /// The session, as its objects see it.
    class Owner {
      public:
        Owner() = default;
        virtual ~Owner() = default;
        Owner(const Owner&) = delete;
        Owner& operator=(const Owner&) = delete;

        virtual AudioGraph& mirror() = 0;
        virtual pw_registry* registry() = 0;

        /// The mirror has changed, or will when an answer has come.
        virtual void changed() = 0;

        /// The number of the next sync. When it is answered, everything that is asked now has been answered
        /// too.
        virtual std::uint64_t nextSync() const = 0;
    };

    explicit BoundObjects(Owner& owner);
    ~BoundObjects();
    BoundObjects(const BoundObjects&) = delete;
    BoundObjects& operator=(const BoundObjects&) = delete;

    /// Whether the mirror follows this object from now on.
    bool add(std::uint32_t id, const char* type, std::uint32_t version, const spa_dict* properties);

    /// Whether the mirror followed it.
    bool remove(std::uint32_t id);

    /// The server has answered the sync of this number. The lists that were asked for before it are whole now
    /// and go to the mirror.
    void commit(std::uint64_t sync);

    /// A cycle of the graph that a node belongs to; whether its rate is news.
    bool sawClock(std::uint32_t node, const GraphClock& clock);

  private:
    class Node;
    class Device;
    class Client;
    class Metadata;

    bool addNode(std::uint32_t id, const spa_dict* properties);
    bool addDevice(std::uint32_t id, const spa_dict* properties);
    bool addClient(std::uint32_t id, const spa_dict* properties);
    bool addLink(std::uint32_t id, const spa_dict* properties);
    bool addPort(std::uint32_t id, const spa_dict* properties);
    bool addMetadata(std::uint32_t id, const spa_dict* properties);
    std::uint64_t serialOf(const spa_dict* properties);

    Owner& owner_;
    std::map<std::uint32_t, std::unique_ptr<Node>> nodes_;  // all by id
    std::map<std::uint32_t, std::unique_ptr<Device>> devices_;
    std::map<std::uint32_t, std::unique_ptr<Client>> clients_;
    std::map<std::uint32_t, std::unique_ptr<Metadata>> metadata_;
    std::uint64_t inventedSerials_ = 0;
};

}  // namespace purlock::host_linux
