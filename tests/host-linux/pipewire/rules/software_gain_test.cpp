#include "platform/linux/pipewire/rules/software_gain.h"

#include <gtest/gtest.h>

namespace purlock::host_linux {
namespace {

TEST(SoftwareGain, Rows) {
    struct Case {
        const char* name;
        MixerProperties mixing;
        bool isRouted;
        std::optional<double> volume;
        bool isMuted;
    };
    const auto volumes = [](std::vector<float> channel, std::vector<float> soft) {
        MixerProperties mixing;
        mixing.channelVolumes = std::move(channel);
        mixing.softVolumes = std::move(soft);
        return mixing;
    };
    MixerProperties muted;
    muted.isMuted = true;
    MixerProperties softMuted;
    softMuted.isSoftMuted = true;
    MixerProperties quiet = volumes({1, 1}, {1, 1});
    quiet.volume = 0.125;
    MixerProperties both = volumes({0.5F, 0.5F}, {1, 1});
    both.volume = 2;
    const Case cases[] = {
        {"nothing told", {}, false, {}, false},
        {"full", volumes({1, 1}, {1, 1}), false, {}, false},
        {"half in software", volumes({0.125F, 0.125F}, {1, 1}), false, 0.5, false},
        {"half in the hardware", volumes({0.125F, 0.125F}, {1, 1}), true, {}, false},
        {"the hardware leaves a remainder", volumes({0.125F, 0.125F}, {0.729F, 0.729F}), true, 0.9, false},
        {"set by hand", volumes({1, 1}, {0.125F, 0.125F}), false, 0.5, false},
        {"the balance is off", volumes({1, 0.125F}, {1, 1}), false, 0.5, false},
        {"above full", volumes({1.728F, 1}, {1, 1}), false, 1.2, false},
        {"the factor alone", quiet, false, 0.5, false},
        {"the factor makes up for it", both, false, {}, false},
        {"muted in software", muted, false, {}, true},
        {"muted in the hardware", muted, true, {}, false},
        {"the hardware cannot mute", softMuted, true, {}, true},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        NodeRecord node;
        node.mixing = row.mixing;
        node.properties.isRouted = row.isRouted;
        const SoftwareGain gain = softwareGain(node);
        EXPECT_EQ(gain.volume, row.volume);
        EXPECT_EQ(gain.isMuted, row.isMuted);
    }
}

}  // namespace
}  // namespace purlock::host_linux
