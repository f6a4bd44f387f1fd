#pragma once

#include <cstdint>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// True if the server is still telling a change of the graph. Signs of that are a running stream that leads
/// nowhere or to a device that does not run, and a clock that is not the expected one. Such a state is only
/// told if it lasts.
///
/// `knowsClocks` is true if the server has a profiler. A cycle that began after `newRateFrom` (monotonic
/// clock, ns) is believed, also with an unexpected rate. Pure.
bool isInTransition(const AudioGraph& graph, bool knowsClocks, std::int64_t newRateFrom);

}  // namespace purlock::host_linux
