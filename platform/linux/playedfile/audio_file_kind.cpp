#include "platform/linux/playedfile/audio_file_kind.h"

#include <array>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

unsigned byteAt(std::string_view text, std::size_t place) {
    return static_cast<unsigned char>(text[place]);
}

bool standsAt(std::string_view text, std::size_t place, std::string_view word) {
    return text.size() >= place && text.substr(place).starts_with(word);
}

/// An Ogg page is a header of 27 bytes, a table of segments, and the packet that tells the codec (RFC 3533).
AudioFileKind oggKind(std::string_view start) {
    constexpr std::size_t headerLength = 27;
    if (start.size() < headerLength) return AudioFileKind::unknown;
    const std::size_t packet = headerLength + byteAt(start, headerLength - 1);
    if (standsAt(start, packet, "\x01vorbis")) return AudioFileKind::vorbis;
    if (standsAt(start, packet, "OpusHead")) return AudioFileKind::opus;
    if (standsAt(start, packet,
                 "\x7f"
                 "FLAC")) {
        return AudioFileKind::oggFlac;
    }
    if (standsAt(start, packet, "Speex   ")) return AudioFileKind::speex;
    return AudioFileKind::unknown;
}

/// A frame's header (ISO/IEC 11172-3, 2.4.1.3): eleven bits that are set, then version, layer, bit rate and
/// sample rate, each with a value that is reserved. Layer 0 is what AAC's own stream has.
bool isMpegFrame(std::string_view start) {
    if (start.size() < 4 || byteAt(start, 0) != 0xFF || (byteAt(start, 1) & 0xE0U) != 0xE0U) return false;
    const unsigned version = byteAt(start, 1) >> 3U & 3U;
    const unsigned layer = byteAt(start, 1) >> 1U & 3U;
    const unsigned bitRate = byteAt(start, 2) >> 4U;
    const unsigned sampleRate = byteAt(start, 2) >> 2U & 3U;
    return version != 1 && layer != 0 && bitRate != 15 && sampleRate != 3;
}

struct Signature {
    std::size_t place;
    std::string_view word;
    AudioFileKind kind;
};

constexpr std::string_view asfHeader = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9";

constexpr std::array signatures = {
    Signature{0, "fLaC", AudioFileKind::flac},      Signature{4, "ftyp", AudioFileKind::mp4},
    Signature{0, "wvpk", AudioFileKind::wavPack},   Signature{0, "MAC ", AudioFileKind::monkeysAudio},
    Signature{0, "TTA1", AudioFileKind::trueAudio}, Signature{0, "TTA2", AudioFileKind::trueAudio},
    Signature{0, "DSD ", AudioFileKind::dsf},       Signature{0, "FRM8", AudioFileKind::dsdiff},
    Signature{0, "MPCK", AudioFileKind::musepack},  Signature{0, "MP+", AudioFileKind::musepack},
    Signature{0, asfHeader, AudioFileKind::asf},
};

}  // namespace

AudioFileKind audioFileKindOf(std::string_view start) {
    if (start.starts_with("OggS")) return oggKind(start);
    if (start.starts_with("RIFF") && standsAt(start, 8, "WAVE")) return AudioFileKind::wav;
    if (start.starts_with("FORM") && (standsAt(start, 8, "AIFF") || standsAt(start, 8, "AIFC"))) {
        return AudioFileKind::aiff;
    }
    for (const Signature& signature : signatures) {
        if (standsAt(start, signature.place, signature.word)) return signature.kind;
    }
    // Between the tag and the first frame some writers leave zeros.
    const std::size_t first = start.find_first_not_of('\0');
    if (first != std::string_view::npos && isMpegFrame(start.substr(first))) return AudioFileKind::mpeg;
    return AudioFileKind::unknown;
}

std::uint64_t leadingTagLength(std::string_view start) {
    constexpr std::size_t headerLength = 10;
    if (start.size() < headerLength || !start.starts_with("ID3")) return 0;
    std::uint64_t length = 0;
    for (std::size_t i = 6; i < headerLength; ++i) {
        if (byteAt(start, i) > 0x7F) return 0;
        length = length << 7U | byteAt(start, i);
    }
    const bool hasFooter = (byteAt(start, 5) & 0x10U) != 0;
    return headerLength + length + (hasFooter ? headerLength : 0);
}

}  // namespace purlock::host_linux
