#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The ways of sound in a graph: along links, and inside a group from the node that takes it to the streams
/// that pass it on (a combined sink, a loopback, a filter). Borrows the graph, which must not change
/// meanwhile. Pure.
class Routes {
  public:
    explicit Routes(const AudioGraph& graph);

    /// The serials of the sinks that a node's sound reaches, nearest first.
    std::vector<std::uint64_t> sinksFrom(std::uint64_t serial) const;

    /// The serials of the nodes from one node to a sink behind which there is no other: both ends included.
    using Path = std::vector<std::uint64_t>;

    /// The shortest path to each sink at which a node's sound ends, nearest first.
    std::vector<Path> pathsFrom(std::uint64_t serial) const;

    /// The sinks at which the sound of a sink ends: itself, unless it hands its sound on.
    std::vector<std::uint64_t> endsOf(std::uint64_t sink) const;

    /// True if a stream only passes on what another node of its group has taken in: it is no application's
    /// own.
    bool isRelay(const NodeRecord& stream) const;

    /// How many streams pass on what the node takes in.
    std::size_t relayCount(const NodeRecord& node) const;

  private:
    struct Group {
        std::vector<std::uint64_t> outputs;  // serials of output streams
        bool hasInput = false;
    };

    /// A node that sound reaches, and the place in the same list of the one that it comes from.
    struct Reached {
        std::uint64_t serial = 0;
        std::size_t from = 0;
    };
    std::vector<Reached> reachedFrom(std::uint64_t serial) const;
    bool isSink(std::uint64_t serial) const;
    bool handsOn(std::uint64_t sink) const;
    std::vector<std::uint64_t> nextFrom(const NodeRecord& node) const;
    const Group* groupOf(const NodeRecord& node) const;

    const AudioGraph& graph_;
    std::map<std::uint32_t, std::uint64_t> serials_;  // by id
    std::map<std::uint32_t, std::vector<std::uint64_t>>
        followers_;  // serials of input nodes by id of output node
    std::map<std::string, Group, std::less<>> groups_;
};

}  // namespace purlock::host_linux
