#pragma once

#include <cstdint>
#include <optional>

#include "audio/audio_hardware.h"
#include "platform/linux/alsa/pcm_text.h"
#include "platform/linux/pipewire/pod_view.h"

namespace purlock::host_linux {

enum class SoundKind {
    pcm,
    encoded,  // an IEC 61937 stream: AC-3, DTS and the like, passed through
    dsd,      // one-bit sound, passed through
};

/// A sound format of the server, in plain numbers.
struct SoundFormat {
    SoundKind kind = SoundKind::pcm;
    SampleLayout layout;
    bool isPlanar = false;  // one buffer for each channel
    double sampleRate = 0;  // Hz; of DSD, bits per second and channel; 0 when it is that of the graph's clock
    std::uint32_t channels = 0;
    std::uint32_t codec = 0;  // of an encoded stream: SPA_AUDIO_IEC958_CODEC_*

    bool operator==(const SoundFormat&) const = default;
};

/// A Format or EnumFormat parameter. Where it leaves a choice, the preferred value is taken; of the rates,
/// `rate` (Hz) if it is offered. Sinks that follow the graph's clock need not name one: from PipeWire 1.4 on,
/// combined sinks do not. Absent for video, for a mixer-side format, and for one without a known
/// sample format.
std::optional<SoundFormat> soundFormatFromPod(const PodView& pod, std::uint32_t rate);

/// What the kernel says that the hardware runs at.
SoundFormat soundFormatFromHardware(const HardwareParameters& parameters);

/// The format in the words of the hardware layer.
StreamDescription streamDescription(const SoundFormat& format);

/// What the mixer takes: packed 32-bit float.
StreamDescription mixerDescription(double sampleRate, std::uint32_t channels);

}  // namespace purlock::host_linux
