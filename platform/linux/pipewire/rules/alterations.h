#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "core/mixer_work.h"
#include "platform/linux/pipewire/rules/card_facts.h"
#include "platform/linux/pipewire/rules/sound_path.h"

namespace purlock::host_linux {

/// The sound of an application on its way to the hardware.
struct PlayingPath {
    SoundPath nodes;
    std::string application;  // as a volume control calls it
    std::int32_t process = 0;

    bool passes(const NodeRecord& node) const {
        return std::find(nodes.begin() + 1, nodes.end(), &node) != nodes.end();
    }
};

/// The alterations of the samples on a path besides conversions of their rate and depth, in the order in
/// which the mixer makes them. `playing` are all paths on which something plays, this one among them. Pure.
std::vector<Alteration> alterationsOnPath(const PlayingPath& path, const std::vector<PlayingPath>& playing,
                                          const AudioGraph& graph, const CardFacts& cards);

}  // namespace purlock::host_linux
