#pragma once

#include <vector>

#include "platform/linux/pipewire/rules/pod_view.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The rates of the uncompressed formats among the values of an EnumFormat parameter. A format that names no
/// rate runs at every one. Pure.
std::vector<RateRange> offeredRatesFromPods(const std::vector<PodView>& formats);

/// True if a node can run at a rate (Hz), or does not tell its rates. Pure.
bool canRunAt(const NodeRecord& node, double rate);

}  // namespace purlock::host_linux
