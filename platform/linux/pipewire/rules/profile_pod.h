#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/pipewire/rules/pod_view.h"

namespace purlock::host_linux {

/// One cycle of one driver's graph in a report of the server's profiler: the rate of its clock and the nodes
/// that it drives.
struct GraphClock {
    double rate = 0;                   // Hz
    std::int64_t time = 0;             // of the cycle: the monotonic clock, ns
    std::vector<std::uint32_t> nodes;  // the server's ids; the driver is the first
};

/// The cycles of a report (spa/param/profiler.h), the oldest first; one without a driver, a rate or a time is
/// left out. Pure; no input makes it fail.
std::vector<GraphClock> graphClocksFromPod(const PodView& report);

}  // namespace purlock::host_linux
