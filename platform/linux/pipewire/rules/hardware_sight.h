#pragma once

#include <cstdint>
#include <map>

#include "platform/linux/alsa/sound_cards.h"

namespace purlock::host_linux {

/// The kernel's facts of the sound hardware behind the nodes.
struct HardwareSight {
    std::map<PcmAddress, PcmView> pcms;
    std::map<PcmAddress, EldConnection> displays;
    // A factor by the number of the card: what ALSA's library applies on the way to PCMs that go through its
    // volume.
    std::map<std::uint32_t, double> libraryVolumes;

    bool operator==(const HardwareSight&) const = default;
};

}  // namespace purlock::host_linux
