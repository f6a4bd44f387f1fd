#pragma once

#include <string>
#include <vector>

#include "core/mixer_work.h"
#include "platform/linux/pipewire/rules/hardware_sight.h"
#include "platform/linux/pipewire/rules/sound_path.h"

namespace purlock::host_linux {

/// The sound of an application on its way to the hardware.
struct PlayingPath {
    SoundPath nodes;
    std::string application;  // as a volume control calls it
};

/// What the mixer does to the samples on a path besides converting their rate and depth, in the order in
/// which it works. `playing` are all paths on which
/// something plays, this one among them. Pure.
std::vector<Alteration> alterationsOnPath(const PlayingPath& path, const std::vector<PlayingPath>& playing,
                                          const AudioGraph& graph, const HardwareSight& hardware);

}  // namespace purlock::host_linux
