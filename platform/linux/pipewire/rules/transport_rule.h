#pragma once

#include <cstdint>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The facts that the rule needs besides a device's own properties.
struct TransportFacts {
    const DeviceProperties* device = nullptr;  // null for a node that no device made
    bool feedsSeveral = false;                 // passes its sound on by more than one stream
    EldConnection display = EldConnection::unknown;
};

/// The hardware layer's code for the way in which a device is attached; 0 where it has none. Pure.
std::uint32_t transportCode(const NodeProperties& node, const TransportFacts& facts);

/// True if the node is an HDMI or DisplayPort PCM, whose monitor is worth asking for. Pure.
bool isDisplayOutput(const NodeProperties& node);

}  // namespace purlock::host_linux
