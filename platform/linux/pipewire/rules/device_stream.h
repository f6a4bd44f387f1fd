#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "audio/audio_hardware.h"
#include "core/mixer_work.h"
#include "platform/linux/pipewire/rules/alterations.h"
#include "platform/linux/pipewire/rules/card_facts.h"
#include "platform/linux/pipewire/rules/routes.h"

namespace purlock::host_linux {

/// The sound of an output device: its formats, and the alterations between the applications and its hardware.
struct DeviceStream {
    bool isRunning = false;
    std::optional<SoundFormat> physical;
    std::optional<StreamDescription> virtualFormat;
    MixerWork work;
};

/// `sink` is the device's serial, `playing` are all paths on which something plays. Pure.
DeviceStream deviceStream(std::uint64_t sink, const AudioGraph& graph, const CardFacts& cards,
                          const Routes& routes, const std::vector<PlayingPath>& playing);

}  // namespace purlock::host_linux
