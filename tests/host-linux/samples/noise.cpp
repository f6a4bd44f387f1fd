#include "tests/host-linux/samples/noise.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

namespace purlock::test {

namespace {

constexpr double fullScale = 2147483648.0;

void append(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

/// The speakers of a WAV file's channels, as its format chunk lists them: front left is 1, front right 2,
/// front centre 4, low frequency 8, back left 0x10, back right 0x20, side left 0x200, side right 0x400.
std::uint32_t speakersOf(int channels) {
    switch (channels) {
        case 1:
            return 0;  // mono, rather than a front centre alone
        case 2:
            return 0x3;
        case 4:
            return 0x33;
        case 6:
            return 0x3F;
        case 8:
            return 0x63F;
        default:
            return 0;
    }
}

std::uint32_t encoded(std::int32_t sample, SampleFormat format) {
    switch (format) {
        case SampleFormat::u8:
            return static_cast<std::uint32_t>((sample >> 24) + 128);
        case SampleFormat::s16:
            return static_cast<std::uint32_t>(sample >> 16);
        case SampleFormat::s24:
        case SampleFormat::s24in32:
            return static_cast<std::uint32_t>(sample >> 8);
        case SampleFormat::s32:
            return static_cast<std::uint32_t>(sample);
        case SampleFormat::f32:
            return std::bit_cast<std::uint32_t>(static_cast<float>(static_cast<double>(sample) / fullScale));
    }
    return 0;
}

std::int32_t decoded(const unsigned char* bytes, SampleFormat format) {
    std::uint32_t value = 0;
    for (int i = 0; i < bytesOf(format); ++i) value |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
    switch (format) {
        case SampleFormat::u8:
            return static_cast<std::int32_t>((value - 128) << 24);
        case SampleFormat::s16:
            return static_cast<std::int32_t>(value << 16);
        case SampleFormat::s24:
        case SampleFormat::s24in32:
            return static_cast<std::int32_t>(value << 8);
        case SampleFormat::s32:
            return static_cast<std::int32_t>(value);
        case SampleFormat::f32:
            break;
    }
    const double scaled = static_cast<double>(std::bit_cast<float>(value)) * fullScale;
    return static_cast<std::int32_t>(std::clamp(std::round(scaled), -fullScale, fullScale - 1));
}

}  // namespace

const char* serverName(SampleFormat format) {
    constexpr const char* names[] = {"U8", "S16LE", "S24LE", "S24_32LE", "S32LE", "F32LE"};
    return names[static_cast<int>(format)];
}

int bytesOf(SampleFormat format) {
    constexpr int bytes[] = {1, 2, 3, 4, 4, 4};
    return bytes[static_cast<int>(format)];
}

int bitsOf(SampleFormat format) {
    constexpr int bits[] = {8, 16, 24, 24, 32, 32};
    return bits[static_cast<int>(format)];
}

Sound noise(SampleFormat format, int channels, std::size_t frames, std::uint32_t seed) {
    std::mt19937 random(seed);
    const int unused = 32 - bitsOf(format);
    Sound sound{channels, {}};
    sound.samples.resize(frames * static_cast<std::size_t>(channels));
    for (std::int32_t& sample : sound.samples) {
        const auto value = static_cast<std::int32_t>(random());
        const std::int32_t quieter = value - value / 8;
        sample = static_cast<std::int32_t>(static_cast<std::uint32_t>(quieter >> unused) << unused);
        if (format == SampleFormat::f32) {
            sample =
                decoded(std::bit_cast<std::array<unsigned char, 4>>(encoded(sample, format)).data(), format);
        }
    }
    return sound;
}

std::string wavBytes(const Sound& sound, SampleFormat format, int rate) {
    // WAVE_FORMAT_EXTENSIBLE: the only form that names the speakers.
    constexpr std::uint32_t extensible = 0xFFFE;
    constexpr unsigned char identifier[] = {0x00, 0x00, 0x10, 0x00, 0x80, 0x00,
                                            0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    const auto sampleBytes = static_cast<std::uint32_t>(bytesOf(format));
    const std::uint32_t frameBytes = sampleBytes * static_cast<std::uint32_t>(sound.channels);
    const auto dataBytes = static_cast<std::uint32_t>(sound.samples.size()) * sampleBytes;
    std::string bytes = "RIFF";
    append(bytes, 4 + 8 + 40 + 8 + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, 40, 4);
    append(bytes, extensible, 2);
    append(bytes, static_cast<std::uint32_t>(sound.channels), 2);
    append(bytes, static_cast<std::uint32_t>(rate), 4);
    append(bytes, static_cast<std::uint32_t>(rate) * frameBytes, 4);
    append(bytes, frameBytes, 2);
    append(bytes, sampleBytes * 8, 2);
    append(bytes, 22, 2);
    append(bytes, sampleBytes * 8, 2);
    append(bytes, speakersOf(sound.channels), 4);
    append(bytes, format == SampleFormat::f32 ? 3 : 1, 4);
    bytes.append(reinterpret_cast<const char*>(identifier), sizeof identifier);
    bytes += "data";
    append(bytes, dataBytes, 4);
    for (const std::int32_t sample : sound.samples) append(bytes, encoded(sample, format), bytesOf(format));
    return bytes;
}

Sound soundFromBytes(const std::string& bytes, SampleFormat format, int channels) {
    Sound sound{channels, {}};
    const auto sampleBytes = static_cast<std::size_t>(bytesOf(format));
    const std::size_t frameBytes = sampleBytes * static_cast<std::size_t>(channels);
    const std::size_t count = bytes.size() / frameBytes * static_cast<std::size_t>(channels);
    sound.samples.reserve(count);
    const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
    for (std::size_t i = 0; i < count; ++i, at += sampleBytes) sound.samples.push_back(decoded(at, format));
    return sound;
}

}  // namespace purlock::test
