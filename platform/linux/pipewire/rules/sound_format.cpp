#include "platform/linux/pipewire/rules/sound_format.h"

#include <spa/debug/types.h>
#include <spa/param/audio/iec958.h>
#include <spa/param/audio/raw-types.h>
#include <spa/param/audio/raw.h>
#include <spa/param/format.h>
#include <spa/pod/pod.h>
#include <spa/utils/type.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <utility>

#include "core/audio_format.h"

namespace purlock::host_linux {

namespace {

constexpr std::int32_t highestRate = 1 << 28;

// The remaining flags of CoreAudio's stream description (CoreAudioBaseTypes.h); the engine reads none of
// them.
constexpr std::uint32_t formatFlagIsNonInterleaved = 32;

/// "S24_32LE", "F32P"; empty for a format without a name.
std::string_view nameOfFormat(std::uint32_t format) {
    const char* const name = spa_debug_type_find_short_name(spa_type_audio_format, format);
    return name != nullptr ? name : "";
}

std::optional<PodView> valueOf(const std::vector<PodView::Property>& properties, std::uint32_t key) {
    const auto found = std::ranges::find(properties, key, &PodView::Property::key);
    return found != properties.end() ? std::optional(found->value) : std::nullopt;
}

std::optional<PodView> preferred(const std::optional<PodView>& value) {
    if (!value) return std::nullopt;
    const PodView::Choice choice = value->choice();
    if (choice.values.empty()) return std::nullopt;
    return choice.values.front();
}

std::optional<std::uint32_t> preferredID(const std::vector<PodView::Property>& properties,
                                         std::uint32_t key) {
    const auto value = preferred(valueOf(properties, key));
    return value ? value->id() : std::nullopt;
}

std::optional<std::int32_t> preferredInteger(const std::vector<PodView::Property>& properties,
                                             std::uint32_t key) {
    const auto value = preferred(valueOf(properties, key));
    return value ? value->integer() : std::nullopt;
}

bool offers(const PodView::Choice& choice, std::int32_t wanted) {
    if (choice.kind == SPA_CHOICE_Range || choice.kind == SPA_CHOICE_Step) {
        if (choice.values.size() < 3) return false;
        const auto least = choice.values[1].integer();
        const auto greatest = choice.values[2].integer();
        return least && greatest && *least <= wanted && wanted <= *greatest;
    }
    return std::any_of(choice.values.begin(), choice.values.end(),
                       [wanted](const PodView& value) { return value.integer() == wanted; });
}

std::optional<std::int32_t> chosenRate(const std::vector<PodView::Property>& properties,
                                       std::uint32_t wanted) {
    const auto value = valueOf(properties, SPA_FORMAT_AUDIO_rate);
    if (!value) return std::nullopt;
    const auto rate = static_cast<std::int32_t>(std::min<std::uint32_t>(wanted, highestRate));
    if (offers(value->choice(), rate)) return rate;
    return preferredInteger(properties, SPA_FORMAT_AUDIO_rate);
}

std::optional<SoundFormat> withChannels(SoundFormat format, std::optional<std::int32_t> channels) {
    if (!channels || *channels <= 0 || static_cast<std::uint32_t>(*channels) > mostChannels) {
        return std::nullopt;
    }
    format.channels = static_cast<std::uint32_t>(*channels);
    return format;
}

std::optional<SoundFormat> checked(SoundFormat format, std::optional<std::int32_t> rate,
                                   std::optional<std::int32_t> channels) {
    if (!rate || *rate <= 0 || *rate > highestRate) return std::nullopt;
    format.sampleRate = *rate;
    return withChannels(format, channels);
}

std::uint32_t encodedFormatID(std::uint32_t codec) {
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 8> rows = {{
        {SPA_AUDIO_IEC958_CODEC_PCM, formatLinearPCM},
        {SPA_AUDIO_IEC958_CODEC_AC3, fourCharCode("cac3")},
        {SPA_AUDIO_IEC958_CODEC_EAC3, fourCharCode("ec-3")},
        {SPA_AUDIO_IEC958_CODEC_DTS, fourCharCode("dtsc")},
        {SPA_AUDIO_IEC958_CODEC_DTSHD, fourCharCode("dtsh")},
        {SPA_AUDIO_IEC958_CODEC_TRUEHD, fourCharCode("mlpa")},
        {SPA_AUDIO_IEC958_CODEC_MPEG, fourCharCode(".mp2")},
        {SPA_AUDIO_IEC958_CODEC_MPEG2_AAC, fourCharCode("aac ")},
    }};
    const auto* const row = std::ranges::find(rows, codec, [](const auto& each) { return each.first; });
    return row != rows.end() ? row->second : fourCharCode("enco");
}

std::uint32_t formatID(const SoundFormat& format) {
    switch (format.kind) {
        case SoundKind::pcm:
            return formatLinearPCM;
        case SoundKind::companded:
            return format.codec == SPA_AUDIO_FORMAT_ALAW ? fourCharCode("alaw") : fourCharCode("ulaw");
        case SoundKind::encoded:
            return encodedFormatID(format.codec);
        case SoundKind::dsd:
            return fourCharCode("dsd ");
    }
    return formatLinearPCM;
}

std::uint32_t formatFlags(const SoundFormat& format) {
    if (format.kind == SoundKind::encoded || format.kind == SoundKind::companded) return formatFlagIsPacked;
    std::uint32_t flags = 0;
    if (format.layout.encoding == SampleEncoding::floatingPoint) flags |= formatFlagIsFloat;
    if (format.layout.encoding == SampleEncoding::signedInteger) flags |= formatFlagIsSignedInteger;
    if (format.layout.order == std::endian::big) flags |= formatFlagIsBigEndian;
    if (format.layout.bits == format.layout.container || format.kind == SoundKind::dsd) {
        flags |= formatFlagIsPacked;
    }
    if (format.isPlanar) flags |= formatFlagIsNonInterleaved;
    return flags;
}

}  // namespace

std::optional<SoundFormat> soundFormatFromPod(const PodView& pod, std::uint32_t rate) {
    const auto properties = pod.properties(SPA_TYPE_OBJECT_Format);
    if (preferredID(properties, SPA_FORMAT_mediaType) != SPA_MEDIA_TYPE_audio) return std::nullopt;
    const auto subtype = preferredID(properties, SPA_FORMAT_mediaSubtype);
    const auto channels = preferredInteger(properties, SPA_FORMAT_AUDIO_channels);
    SoundFormat format;
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        const std::uint32_t sample = preferredID(properties, SPA_FORMAT_AUDIO_format).value_or(0);
        if (sample == SPA_AUDIO_FORMAT_ALAW || sample == SPA_AUDIO_FORMAT_ULAW) {
            format.kind = SoundKind::companded;
            format.layout = {8, 8, SampleEncoding::unsignedInteger};
            format.codec = sample;
        } else if (const auto layout = sampleLayoutFromName(nameOfFormat(sample))) {
            format.layout = *layout;
            format.isPlanar = nameOfFormat(sample).ends_with('P');
        } else {
            return std::nullopt;
        }
        format.positions = positionsFromPod(pod);
        if (!valueOf(properties, SPA_FORMAT_AUDIO_rate)) return withChannels(format, channels);
        return checked(format, chosenRate(properties, rate), channels);
    }
    if (subtype == SPA_MEDIA_SUBTYPE_iec958) {
        format.kind = SoundKind::encoded;
        format.codec = preferredID(properties, SPA_FORMAT_AUDIO_iec958Codec).value_or(0);
        format.layout = {16, 16, SampleEncoding::signedInteger};
        return checked(format, chosenRate(properties, rate), channels.value_or(2));
    }
    if (subtype == SPA_MEDIA_SUBTYPE_dsd) {
        format.kind = SoundKind::dsd;
        format.layout = {1, 8, SampleEncoding::dsd};
        auto found = checked(format, preferredInteger(properties, SPA_FORMAT_AUDIO_rate), channels);
        if (found) found->sampleRate *= 8;  // the server counts bytes
        return found;
    }
    return std::nullopt;
}

SoundFormat soundFormatFromHardware(const HardwareParameters& parameters) {
    SoundFormat format;
    const bool isDsd = parameters.layout.encoding == SampleEncoding::dsd;
    format.kind = isDsd ? SoundKind::dsd : SoundKind::pcm;
    format.layout = parameters.layout;
    format.sampleRate = parameters.sampleRate;
    format.channels = parameters.channels;
    if (isDsd) format.sampleRate *= parameters.layout.container;  // the kernel counts words
    return format;
}

StreamDescription streamDescription(const SoundFormat& format) {
    StreamDescription description;
    description.sampleRate = format.sampleRate;
    description.formatID = formatID(format);
    description.formatFlags = formatFlags(format);
    description.channelsPerFrame = format.channels;
    description.bitsPerChannel = format.layout.bits;
    if (format.kind == SoundKind::dsd) return description;  // its frames are no whole bytes
    const std::uint32_t sampleBytes = format.layout.container / 8;
    description.bytesPerFrame = format.isPlanar ? sampleBytes : sampleBytes * format.channels;
    description.framesPerPacket = 1;
    description.bytesPerPacket = description.bytesPerFrame;
    return description;
}

SampleLayout mixerLayout() {
    return {32, 32, SampleEncoding::floatingPoint, std::endian::native};
}

std::uint32_t keptBits(const SoundFormat& format) {
    constexpr std::uint32_t heldByFloat = 24;
    if (format.kind == SoundKind::companded) return 0;
    return std::min(format.layout.bits, heldByFloat);
}

std::vector<std::uint32_t> positionsFromPod(const PodView& format) {
    std::vector<std::uint32_t> positions;
    const auto value =
        preferred(valueOf(format.properties(SPA_TYPE_OBJECT_Format), SPA_FORMAT_AUDIO_position));
    if (!value) return positions;
    for (const PodView& element : value->elements()) {
        if (positions.size() == mostChannels) break;
        positions.push_back(element.id().value_or(SPA_AUDIO_CHANNEL_UNKNOWN));
    }
    return positions;
}

}  // namespace purlock::host_linux
