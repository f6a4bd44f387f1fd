#include "platform/linux/pipewire/rules/software_gain.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace purlock::host_linux {

namespace {

bool areUnity(const std::vector<float>& factors) {
    return std::all_of(factors.begin(), factors.end(), [](float factor) { return factor == 1; });
}

/// Both lists are told, but not which of them is in force. A device that sets the volume sets the second one;
/// all others set the first. A user who sets the second by hand leaves the first as it is.
bool followsSoftVolumes(const NodeRecord& node) {
    const MixerProperties& mixing = node.mixing;
    return node.properties.isRouted || (areUnity(mixing.channelVolumes) && !areUnity(mixing.softVolumes));
}

}  // namespace

SoftwareGain softwareGain(const NodeRecord& node, double libraryVolume) {
    const MixerProperties& mixing = node.mixing;
    SoftwareGain gain;
    gain.isMuted = mixing.isSoftMuted || (mixing.isMuted && !node.properties.isRouted);
    const auto& factors = followsSoftVolumes(node) ? mixing.softVolumes : mixing.channelVolumes;
    const double common = mixing.volume * libraryVolume;
    double strongest = factors.empty() ? common : 1;
    for (const float factor : factors) {
        const double applied = common * static_cast<double>(factor);
        if (std::abs(applied - 1) > std::abs(strongest - 1)) strongest = applied;
    }
    if (strongest != 1) gain.volume = std::round(std::cbrt(std::max(strongest, 0.0)) * 10000) / 10000;
    return gain;
}

}  // namespace purlock::host_linux
