#pragma once

#include <optional>
#include <vector>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The nodes that the sound of a stream passes: the stream first, the sink at which it ends last. Borrows the
/// graph's records.
using SoundPath = std::vector<const NodeRecord*>;

/// True if a sink hands on samples that its converter has processed. Otherwise others listen to its monitor,
/// which gives what the sink takes in. Pure.
bool handsOnConverted(const NodeRecord& sink, const NodeRecord& next);

/// The loss on a path by converting the samples.
struct PathLoss {
    std::optional<double> rate;          // Hz, on the near side of the conversion that is nearest to the end
    std::optional<SampleLayout> layout;  // what had more bits than the path keeps

    bool isAny() const { return rate || layout; }
};

/// The loss between a stream and the hardware at the end of its path, which runs in `physical`. `clock` is
/// the rate of the graph. Captured samples show the rules: 24 bits pass the mixer, widening changes
/// nothing, and every conversion of the rate changes every sample. Pure.
PathLoss lossOnPath(const SoundPath& path, const SoundFormat& physical, double clock);

}  // namespace purlock::host_linux
