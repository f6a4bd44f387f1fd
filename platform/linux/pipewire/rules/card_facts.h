#pragma once

#include <cstdint>
#include <map>

#include "platform/linux/alsa/sound_cards.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The kernel's facts of the sound hardware behind the nodes.
struct CardFacts {
    std::map<PcmAddress, PcmInfo> pcms;
    std::map<PcmAddress, EldConnection> displays;
    // A factor by the number of the card: what ALSA's library applies on the way to PCMs that go through its
    // volume.
    std::map<std::uint32_t, double> libraryVolumes;

    bool operator==(const CardFacts&) const = default;
};

/// Absent for a node that is no output of ALSA hardware. Pure, as the others are.
const PcmInfo* pcmOf(const NodeRecord& node, const CardFacts& cards);

/// True if a PCM is open in a process that is not part of the audio server.
bool isTakenByAnother(const PcmInfo& pcm);

/// True if a program is a sound server, which mixes and converts for others.
bool isSoundServer(const PcmOwner& owner);

}  // namespace purlock::host_linux
