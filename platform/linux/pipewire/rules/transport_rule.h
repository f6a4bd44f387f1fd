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

/// How a device is attached, as one of the hardware layer's codes; 0 for a way that it has no code for. Pure.
std::uint32_t transportCode(const NodeProperties& node, const TransportFacts& facts);

/// Whether the node is an HDMI or DisplayPort PCM, whose monitor is worth asking for. Pure.
bool isDisplayOutput(const NodeProperties& node);

}  // namespace purlock::host_linux
