#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace purlock::test {

/// How a sample is written: the formats that files and devices of the tests have.
enum class SampleFormat { u8, s16, s24, s24in32, s32, f32 };

/// The server's word for it: "S24_32LE".
const char* serverName(SampleFormat format);
int bytesOf(SampleFormat format);

/// Bits of a sample that can differ: 8 to 24, and 32 for what is deeper than the server's mixer.
int bitsOf(SampleFormat format);

/// Sound, a sample a channel and frame, as 32-bit integers: narrower samples are widened by zeros.
struct Sound {
    int channels = 0;
    std::vector<std::int32_t> samples;  // interleaved

    std::size_t frames() const {
        return channels == 0 ? 0 : samples.size() / static_cast<std::size_t>(channels);
    }
    std::int32_t at(std::size_t frame, int channel) const {
        return samples[frame * static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel)];
    }
};

/// White noise in which every value of the format is about as likely as any other, below full scale, other in
/// every channel. The same for the same arguments.
Sound noise(SampleFormat format, int channels, std::size_t frames, std::uint32_t seed);

/// The sound as a WAV file; what does not fit the format is cut off.
std::string wavBytes(const Sound& sound, SampleFormat format, int rate);

/// Bytes of a format as sound; a frame that is not whole is left out.
Sound soundFromBytes(const std::string& bytes, SampleFormat format, int channels);

}  // namespace purlock::test
