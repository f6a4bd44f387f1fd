#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/pipewire/rules/pod_view.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

// The work of a node's converter, from its parameters (spa/param/props.h, spa/param/port-config.h). Pure
// functions; any thread; a value that is not told stays at its default.

/// All values of the `Props` parameter, in the node's order. The first is the converter's own; a filter lists
/// its controls in another one.
MixerProperties mixerPropertiesFromPods(const std::vector<PodView>& values);

/// The places of a node's ports, from its `PortConfig` parameter; empty when they are not told.
std::vector<std::uint32_t> portPositionsFromPods(const std::vector<PodView>& values);

}  // namespace purlock::host_linux
