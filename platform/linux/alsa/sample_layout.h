#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string_view>

namespace purlock::host_linux {

enum class SampleEncoding {
    unsignedInteger,
    signedInteger,
    floatingPoint,
    dsd,  // one-bit samples, `container` of them in a word
};

/// How a sample lies in memory. A value.
struct SampleLayout {
    std::uint32_t bits = 0;       // that carry sound: 24 for S24_LE
    std::uint32_t container = 0;  // bits that a sample takes: 32 for S24_LE, 24 for S24_3LE
    SampleEncoding encoding = SampleEncoding::unsignedInteger;
    std::endian order = std::endian::little;

    bool operator==(const SampleLayout&) const = default;
};

/// The layout of a sample format by its name; absent for one that is no PCM. Two sources name formats: ALSA
/// (snd_pcm_format_name of the kernel: "S24_LE", "S24_3LE", "FLOAT_LE", "DSD_U32_BE") and PipeWire
/// (spa/param/audio/raw-types.h: "S24_32LE", "S24LE", "F32P"). They agree but for the container: without a
/// number of its own, "_LE" means a power of two and "LE" whole bytes. Pure; any thread; no input makes it
/// fail.
std::optional<SampleLayout> sampleLayoutFromName(std::string_view name);

}  // namespace purlock::host_linux
