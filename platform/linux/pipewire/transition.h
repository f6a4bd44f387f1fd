#pragma once

#include <cstdint>

#include "platform/linux/pipewire/records.h"

namespace purlock::host_linux {

/// Whether the graph is on its way from one state to another that the server has not told to its end: a
/// stream runs that leads nowhere yet, to a device that stands still, or in a graph whose clock is not the
/// one that is to be expected. Such a state is not worth telling unless it lasts.
///
/// `knowsClocks`: whether the server has a profiler. A cycle that began after `settledFrom` (monotonic clock,
/// ns) is believed, whatever its rate. Pure.
bool isInTransition(const AudioGraph& graph, bool knowsClocks, std::int64_t settledFrom);

}  // namespace purlock::host_linux
