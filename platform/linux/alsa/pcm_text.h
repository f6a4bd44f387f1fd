#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/linux/alsa/sample_layout.h"

namespace purlock::host_linux {

// What the kernel prints of an open PCM below /proc/asound/card<N>/pcm<M>p/sub<K>/ (sound/core/pcm.c and
// Documentation/sound/designs/procfile.rst of the kernel). Pure functions; any thread; no input makes them
// fail.

/// `hw_params` of a PCM that has been set up.
struct HardwareParameters {
    SampleLayout layout;
    double sampleRate = 0;  // Hz
    std::uint32_t channels = 0;
    // The program writes samples into the card's own buffer, instead of handing them to the kernel. All
    // plugins of ALSA's library that convert or mix do so (`snd_pcm_plug_hw_params`, `dmix`), and few
    // players.
    bool isMapped = false;

    bool operator==(const HardwareParameters&) const = default;
};

/// Absent for "closed", "no setup", and for a text without a known format, a rate and a channel count.
std::optional<HardwareParameters> parseHardwareParameters(std::string_view text);

enum class PcmState {
    closed,
    open,
    setup,
    prepared,
    running,
    xrun,
    draining,
    paused,
    suspended,
    disconnected
};

/// `status`: "closed", or the state and the thread that opened the PCM.
struct PcmStatus {
    PcmState state = PcmState::closed;
    std::optional<std::int32_t> ownerThread;  // a thread id; its process is another question

    bool operator==(const PcmStatus&) const = default;
};

/// A text without a known state is a closed PCM.
PcmStatus parsePcmStatus(std::string_view text);

}  // namespace purlock::host_linux
