#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/pipewire/mirror/bind_context.h"
#include "platform/linux/pipewire/rules/node_clock.h"
#include "platform/linux/pipewire/rules/profile_pod.h"

namespace purlock::host_linux {

/// One node, bound: its state, its dictionary, the format that it runs with, those that it offers, and what
/// its converter does.
///
/// A parameter has no event for its disappearance: the node tells that it has changed, and it is then listed
/// anew. The old value stays until the new list is whole. The loop's thread.
class BoundNode {
  public:
    /// The node of this serial has a record in the graph, for as long as this lives.
    BoundNode(const BindContext& context, std::uint64_t serial);

    std::uint64_t serial() const { return serial_; }

    /// The sync of this number is done. The lists that were asked for before it are whole and count now.
    void syncDone(std::uint64_t sync);

    /// The default rate may have changed, and with it what the node would be opened with.
    void choosePreferred();

    /// A cycle of its graph. True if the rate or the driver is new.
    bool clockCycle(const GraphClock& clock);

  private:
    using PodBytes = std::vector<std::byte>;

    /// The values of one parameter.
    struct Param {
        std::uint32_t id;
        std::optional<std::uint32_t> flags;    // as last told; they flip with each change
        std::optional<std::uint64_t> dueSync;  // a list is arriving, and whole at this sync
        int sequence = 0;
        std::vector<PodBytes> arriving;
        std::vector<PodBytes> values;
    };

    void info(const pw_node_info* info);
    void param(int sequence, std::uint32_t id, std::uint32_t, std::uint32_t, const spa_pod* pod);
    bool enumerate(Param& param, std::uint32_t flags);
    void use(const Param& param);
    bool setState(NodeState state);

    static const pw_node_events events;

    const BindContext context_;
    const std::uint64_t serial_;
    NodeRecord& record_;
    Proxy proxy_;
    Listener listener_;
    std::array<Param, 4> params_;
    bool hasInfo_ = false;
    NodeClock clock_;
};

}  // namespace purlock::host_linux
