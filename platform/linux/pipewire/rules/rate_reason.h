#pragma once

#include <optional>

#include "core/mixer_work.h"
#include "platform/linux/pipewire/rules/alterations.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The rates of a path in Hz: of the hardware at its end, of the graph there, and on the near side of the
/// conversion that is nearest to the end.
struct PathRates {
    double device = 0;
    double clock = 0;
    double near = 0;
};

/// Finds out why the rate is converted on a path, as far as the graph, its settings and the formats that the
/// device offers tell. A reason that nothing can change comes before one that can be changed. How the server
/// chooses a clock: pipewire.conf(5), "default.clock.allowed-rates", and pw_context_recalc_graph
/// (src/pipewire/context.c). Pure.
RateConversion rateConversionOnPath(const PlayingPath& path, const PathRates& rates, const AudioGraph& graph);

}  // namespace purlock::host_linux
