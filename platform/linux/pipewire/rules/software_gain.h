#pragma once

#include <optional>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The factors by which a node's converter multiplies the samples.
struct SoftwareGain {
    bool isMuted = false;

    /// The volume of the channel that is changed most, as volume controls show it (the cube root of the
    /// factor); absent when every channel stays as it is.
    std::optional<double> volume;
};

/// A device that sets the volume leaves a remainder to be done in software, and only that counts. For all
/// others all of the volume is done in software. `libraryVolume` is a factor that is applied behind the node.
/// Pure.
SoftwareGain softwareGain(const NodeRecord& node, double libraryVolume = 1);

}  // namespace purlock::host_linux
