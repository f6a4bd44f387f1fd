#include "platform/linux/playedfile/audio_file_reader.h"

#include <aifffile.h>
#include <apefile.h>
#include <asffile.h>
#include <flacfile.h>
#include <id3v2framefactory.h>
#include <mp4file.h>
#include <mpcfile.h>
#include <mpegfile.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <speexfile.h>
#include <trueaudiofile.h>
#include <vorbisfile.h>
#include <wavfile.h>
#include <wavpackfile.h>

#if TAGLIB_MAJOR_VERSION >= 2
#include <dsdifffile.h>
#include <dsffile.h>
#endif

#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/playedfile/audio_file_kind.h"
#include "platform/linux/playedfile/bounded_stream.h"

namespace purlock::host_linux {

namespace {

using Style = TagLib::AudioProperties::ReadStyle;

constexpr std::size_t bytesThatTell = 512;
constexpr int maximumLeadingTags = 4;

// Limits that no real file exceeds; larger values are a mistake of the file or of its reader.
constexpr int smallestRate = 1000;
constexpr int largestRate = 100'000'000;
constexpr int largestBitDepth = 64;
constexpr int largestChannelCount = 256;
constexpr double bitsPerKilobit = 1000;

std::string_view viewOf(const TagLib::ByteVector& bytes) {
    return {bytes.data(), bytes.size()};
}

/// The properties that every reader tells. A file without a rate was not understood.
std::optional<PlayedFile> basics(const TagLib::AudioProperties* properties, std::string codec,
                                 bool isLossless) {
    if (properties == nullptr) return std::nullopt;
    const int rate = properties->sampleRate();
    const int channels = properties->channels();
    if (rate < smallestRate || rate > largestRate || channels < 1 || channels > largestChannelCount) {
        return std::nullopt;
    }
    PlayedFile file;
    file.codec = std::move(codec);
    file.sampleRate = rate;
    file.isLossless = isLossless;
    file.channelCount = static_cast<std::uint32_t>(channels);
    if (properties->bitrate() > 0) file.bitsPerSecond = properties->bitrate() * bitsPerKilobit;
    return file;
}

/// The bit depth counts for what it is where nothing is lost; of a lossy file it is only its decoder's.
template <typename Properties>
std::optional<PlayedFile> withDepth(const Properties* properties, std::string codec, bool isLossless) {
    auto file = basics(properties, std::move(codec), isLossless);
    if (!file || !isLossless) return file;
    const int depth = properties->bitsPerSample();
    if (depth < 1 || depth > largestBitDepth) return std::nullopt;
    file->bitDepth = static_cast<std::uint32_t>(depth);
    return file;
}

std::optional<PlayedFile> readFlac(BoundedStream& stream) {
#if TAGLIB_MAJOR_VERSION >= 2
    TagLib::FLAC::File file(&stream, true, Style::Average);
#else
    TagLib::FLAC::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), true, Style::Average);
#endif
    return withDepth(file.audioProperties(), "FLAC", true);
}

std::optional<PlayedFile> readWav(BoundedStream& stream) {
    constexpr int pcm = 1;        // WAVE_FORMAT_PCM
    constexpr int ieeeFloat = 3;  // WAVE_FORMAT_IEEE_FLOAT
    const TagLib::RIFF::WAV::File file(&stream, true, Style::Average);
    const auto* properties = file.audioProperties();
    if (properties == nullptr) return std::nullopt;
    return withDepth(properties, "WAV", properties->format() == pcm || properties->format() == ieeeFloat);
}

std::optional<PlayedFile> readAiff(BoundedStream& stream) {
    constexpr std::array<std::string_view, 10> uncompressed = {"NONE", "sowt", "twos", "raw ", "in24",
                                                               "in32", "fl32", "FL32", "fl64", "FL64"};
    const TagLib::RIFF::AIFF::File file(&stream, true, Style::Average);
    const auto* properties = file.audioProperties();
    if (properties == nullptr) return std::nullopt;
    const TagLib::ByteVector type = properties->compressionType();
    const bool isLossless =
        !properties->isAiffC() || std::ranges::find(uncompressed, viewOf(type)) != uncompressed.end();
    return withDepth(properties, "AIFF", isLossless);
}

std::optional<PlayedFile> readMp4(BoundedStream& stream) {
    const TagLib::MP4::File file(&stream, true, Style::Average);
    const auto* properties = file.audioProperties();
    if (properties == nullptr) return std::nullopt;
    switch (properties->codec()) {
        case TagLib::MP4::Properties::AAC:
            return basics(properties, "AAC", false);
        case TagLib::MP4::Properties::ALAC:
            return withDepth(properties, "ALAC", true);
        case TagLib::MP4::Properties::Unknown:
            break;
    }
    return std::nullopt;
}

std::optional<PlayedFile> readWavPack(BoundedStream& stream) {
    const TagLib::WavPack::File file(&stream, true, Style::Average);
    const auto* properties = file.audioProperties();
    return withDepth(properties, "WavPack", properties != nullptr && properties->isLossless());
}

std::optional<PlayedFile> readMpeg(BoundedStream& stream) {
#if TAGLIB_MAJOR_VERSION >= 2
    TagLib::MPEG::File file(&stream, true, Style::Average);
#else
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), true, Style::Average);
#endif
    const auto* properties = file.audioProperties();
    if (properties == nullptr || properties->layer() < 1 || properties->layer() > 3) return std::nullopt;
    return basics(properties, "MP" + std::to_string(properties->layer()), false);
}

std::optional<PlayedFile> readAsf(BoundedStream& stream) {
    const TagLib::ASF::File file(&stream, true, Style::Average);
    const auto* properties = file.audioProperties();
    if (properties == nullptr) return std::nullopt;
    if (properties->codec() == TagLib::ASF::Properties::WMA9Lossless) {
        return withDepth(properties, "WMA Lossless", true);
    }
    return basics(properties, "WMA", false);
}

template <typename File>
std::optional<PlayedFile> readLossless(BoundedStream& stream, const char* codec) {
    const File file(&stream, true, Style::Average);
    return withDepth(file.audioProperties(), codec, true);
}

template <typename File>
std::optional<PlayedFile> readLossy(BoundedStream& stream, const char* codec) {
    const File file(&stream, true, Style::Average);
    return basics(file.audioProperties(), codec, false);
}

#if TAGLIB_MAJOR_VERSION >= 2
/// Named by how much faster than a CD's samples the single bits come: "DSD64".
template <typename File>
std::optional<PlayedFile> readSingleBits(BoundedStream& stream) {
    constexpr int cdRate = 44100;
    const File file(&stream, true, Style::Average);
    auto result = basics(file.audioProperties(), "DSD", true);
    if (!result) return std::nullopt;
    result->bitDepth = 1;
    result->codec += std::to_string(file.audioProperties()->sampleRate() / cdRate);
    return result;
}
#endif

std::optional<PlayedFile> readKind(AudioFileKind kind, BoundedStream& stream) {
    switch (kind) {
        case AudioFileKind::flac:
            return readFlac(stream);
        case AudioFileKind::wav:
            return readWav(stream);
        case AudioFileKind::aiff:
            return readAiff(stream);
        case AudioFileKind::mp4:
            return readMp4(stream);
        case AudioFileKind::wavPack:
            return readWavPack(stream);
        case AudioFileKind::monkeysAudio:
            return readLossless<TagLib::APE::File>(stream, "Monkey's Audio");
        case AudioFileKind::trueAudio:
            return readLossless<TagLib::TrueAudio::File>(stream, "True Audio");
        case AudioFileKind::mpeg:
            return readMpeg(stream);
        case AudioFileKind::vorbis:
            return readLossy<TagLib::Ogg::Vorbis::File>(stream, "Vorbis");
        case AudioFileKind::opus:
            return readLossy<TagLib::Ogg::Opus::File>(stream, "Opus");
        case AudioFileKind::oggFlac:
            return readLossless<TagLib::Ogg::FLAC::File>(stream, "FLAC");
        case AudioFileKind::speex:
            return readLossy<TagLib::Ogg::Speex::File>(stream, "Speex");
        case AudioFileKind::musepack:
            return readLossy<TagLib::MPC::File>(stream, "Musepack");
        case AudioFileKind::asf:
            return readAsf(stream);
        case AudioFileKind::dsf:
        case AudioFileKind::dsdiff:
#if TAGLIB_MAJOR_VERSION >= 2
            return kind == AudioFileKind::dsf ? readSingleBits<TagLib::DSF::File>(stream)
                                              : readSingleBits<TagLib::DSDIFF::File>(stream);
#else
            return std::nullopt;
#endif
        case AudioFileKind::unknown:
            break;
    }
    return std::nullopt;
}

/// Tags in front are passed over: nothing in them is wanted, and they may be large.
std::optional<PlayedFile> readBehindTags(int descriptor, std::uint64_t size, const AudioReadLimits& limits) {
    std::uint64_t start = 0;
    for (int i = 0; i <= maximumLeadingTags && start < size; ++i) {
        BoundedStream stream(descriptor, start, size, limits);
        const TagLib::ByteVector first = stream.firstBytes(bytesThatTell);
        const std::uint64_t tag = leadingTagLength(viewOf(first));
        if (tag == 0) return readKind(audioFileKindOf(viewOf(first)), stream);
        start += tag;
    }
    return std::nullopt;
}

}  // namespace

AudioReading readAudioFile(int descriptor, std::uint64_t size) {
    return readAudioFile(descriptor, size, AudioReadLimits{});
}

AudioReading readAudioFile(int descriptor, std::uint64_t size, const AudioReadLimits& limits) {
    try {
        return {readBehindTags(descriptor, size, limits), false};
    } catch (const AudioReadEnded&) {
        return {std::nullopt, true};
    } catch (const std::exception&) {  // of the standard library inside the tag library
        return {std::nullopt, true};
    }
}

}  // namespace purlock::host_linux
