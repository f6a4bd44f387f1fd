#include "platform/linux/pipewire/rules/card_facts.h"

#include <algorithm>
#include <array>

namespace purlock::host_linux {

const PcmInfo* pcmOf(const NodeRecord& node, const CardFacts& cards) {
    if (!node.properties.pcm || !node.properties.isSink()) return nullptr;
    const auto found = cards.pcms.find(*node.properties.pcm);
    return found == cards.pcms.end() ? nullptr : &found->second;
}

bool isTakenByAnother(const PcmInfo& pcm) {
    constexpr std::array server = {"pipewire", "pipewire-media-", "pipewire-pulse", "wireplumber"};
    if (!pcm.owner || pcm.status.state == PcmState::closed) return false;
    return std::ranges::find(server, pcm.owner->command) == server.end();
}

bool isSoundServer(const PcmOwner& owner) {
    constexpr std::array servers = {"pulseaudio", "jackd", "jackdbus", "roard",  "esd",
                                    "arts",       "artsd", "nasd",     "sndiod", "cras"};
    return std::ranges::find(servers, owner.command) != servers.end();
}

}  // namespace purlock::host_linux
