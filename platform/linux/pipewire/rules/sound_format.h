#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "audio/audio_hardware.h"
#include "platform/linux/alsa/pcm_text.h"
#include "platform/linux/pipewire/rules/pod_view.h"

namespace purlock::host_linux {

enum class SoundKind {
    pcm,
    companded,  // A-law or µ-law: eight bits that stand for more
    encoded,    // an IEC 61937 stream: AC-3, DTS and the like, passed through
    dsd,        // one-bit sound, passed through
};

/// More channels than this are a mistake of the peer.
inline constexpr std::uint32_t mostChannels = 1024;

/// A sound format of the server, in plain numbers.
struct SoundFormat {
    SoundKind kind = SoundKind::pcm;
    SampleLayout layout;
    bool isPlanar = false;  // one buffer for each channel
    double sampleRate = 0;  // Hz; of DSD, bits per second and channel; 0 when it is that of the graph's clock
    std::uint32_t channels = 0;
    std::uint32_t codec = 0;  // SPA_AUDIO_IEC958_CODEC_* of an encoded stream, the format of a companded one
    std::vector<std::uint32_t> positions = {};  // SPA_AUDIO_CHANNEL_*, one a channel; empty when not told

    bool operator==(const SoundFormat&) const = default;
};

/// A Format or EnumFormat parameter. If it leaves a choice, the preferred value is taken, but `rate` (Hz) if
/// that is offered. Sinks that follow the graph's clock need not name one: from PipeWire 1.4 on, combined
/// sinks do not. Absent for video, for a mixer-side format, and for one without a known sample format.
std::optional<SoundFormat> soundFormatFromPod(const PodView& pod, std::uint32_t rate);

/// The format in which the hardware runs, from the kernel.
SoundFormat soundFormatFromHardware(const HardwareParameters& parameters);

/// The places of the channels that a format's object names.
std::vector<std::uint32_t> positionsFromPod(const PodView& format);

/// The number of bits of a sample that the format keeps. The mixer computes in 32-bit float, which holds 24,
/// so no format keeps more of what passes through it. 0 for one whose steps are not even.
std::uint32_t keptBits(const SoundFormat& format);

/// The format in the words of the hardware layer.
StreamDescription streamDescription(const SoundFormat& format);

/// The format in which the mixer computes: packed 32-bit float.
SampleLayout mixerLayout();

}  // namespace purlock::host_linux
