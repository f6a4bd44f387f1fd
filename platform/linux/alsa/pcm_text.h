#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace purlock::host_linux {

// What the kernel prints of an open PCM below /proc/asound/card<N>/pcm<M>p/sub<K>/ (sound/core/pcm.c and
// Documentation/sound/designs/procfile.rst of the kernel). Pure functions; any thread; no input makes them
// fail.

/// One of ALSA's sample formats, in plain numbers.
struct SampleLayout {
    std::uint32_t bits = 0;       // that carry sound: 24 for S24_LE
    std::uint32_t container = 0;  // bits that a sample takes: 32 for S24_LE, 24 for S24_3LE
    bool isFloat = false;
    bool isSigned = false;
    bool isBigEndian = false;
    bool isDsd = false;  // one-bit samples, `container` of them in a word

    bool operator==(const SampleLayout&) const = default;
};

/// The layout of a format by ALSA's name: "S24_3LE", "FLOAT_LE", "DSD_U32_BE"; absent for one that is no PCM.
std::optional<SampleLayout> sampleLayoutFromName(std::string_view name);

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
