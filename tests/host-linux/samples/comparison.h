#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/host-linux/samples/noise.h"

namespace purlock::test {

/// What became of played samples.
enum class Outcome {
    equal,    // each channel arrived in its own channel, every sample unchanged
    changed,  // sound arrived, but not these samples
    silent,   // nothing but zeros arrived, or nothing at all
    unclear,  // some stretches are equal and some are not
};

const char* name(Outcome outcome);

/// Looks for stretches of `played` in `captured`. `places[channel]` lists the captured channels in which that
/// channel belongs; a channel without any makes the outcome `changed`. A sample counts as unchanged when it
/// differs by no more than `tolerance` (of 2^31). Stretches are searched one by one, so that a gap, where a
/// busy machine was too late, spoils the stretches around it only; few of those are forgiven.
Outcome compare(const Sound& played, const Sound& captured, const std::vector<std::vector<int>>& places,
                std::int64_t tolerance);

}  // namespace purlock::test
