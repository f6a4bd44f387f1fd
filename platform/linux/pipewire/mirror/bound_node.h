#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/pipewire/mirror/bound_objects.h"
#include "platform/linux/pipewire/rules/seen_clock.h"

namespace purlock::host_linux {

/// One node, bound: its state, its dictionary, the format that it runs with, those that it offers, and what
/// its converter does.
///
/// A parameter has no event for its disappearance: the node tells that it has changed, and it is then listed
/// anew. The old value stays until the new list is whole.
class BoundObjects::Node {
  public:
    Node(Owner& owner, std::uint32_t id, std::uint64_t serial);

    /// Takes over the lists that are whole once the sync of this number is answered.
    void commit(std::uint64_t sync);

    /// The default rate may have changed, and with it what the node would be opened with.
    void choosePreferred();

    /// Whether the rate, or whose clock it is, is news.
    bool sawClock(const GraphClock& clock);

    std::uint64_t serial() const { return serial_; }

  private:
    using PodBytes = std::vector<std::byte>;

    /// The values of one parameter.
    struct Parameter {
        std::uint32_t id;
        std::optional<std::uint32_t> flags;    // as last told; they flip with each change
        std::optional<std::uint64_t> dueSync;  // a list is arriving, and whole at this sync
        int sequence = 0;
        std::vector<PodBytes> arriving;
        std::vector<PodBytes> values;
    };

    void informed(const pw_node_info& info);
    void told(int sequence, std::uint32_t id, const spa_pod* pod);
    bool list(Parameter& parameter, std::uint32_t flags);
    void take(const Parameter& parameter);
    bool setState(NodeRecord& node, NodeState state);
    NodeRecord* record();

    static const pw_node_events events;

    Owner& owner_;
    const std::uint64_t serial_;
    Proxy proxy_;
    Listener listener_;
    std::array<Parameter, 4> parameters_;
    bool isInformed_ = false;
    SeenClock clock_;
};

}  // namespace purlock::host_linux
