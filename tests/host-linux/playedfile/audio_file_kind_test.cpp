#include "platform/linux/playedfile/audio_file_kind.h"

#include <gtest/gtest.h>

#include <string>

namespace purlock::host_linux {
namespace {

using Kind = AudioFileKind;
using namespace std::string_literals;

std::string oggPage(const std::string& packet, std::size_t segments = 1) {
    std::string page = "OggS" + std::string(22, '\0') + static_cast<char>(segments);
    return page + std::string(segments, '\x1e') + packet;
}

struct KindRow {
    const char* name;
    std::string start;
    Kind kind;
};

const KindRow kindRows[] = {
    {"nothing", "", Kind::unknown},
    {"zeros", std::string(512, '\0'), Kind::unknown},
    {"a text", "TITLE \"Record\"\nFILE \"record.flac\" WAVE\n", Kind::unknown},
    {"FLAC", "fLaC\0\0\0\x22"s, Kind::flac},
    {"the start of FLAC", "fLa", Kind::unknown},
    {"WAV", "RIFF\0\0\0\0WAVE"s, Kind::wav},
    {"another RIFF", "RIFF\0\0\0\0AVI "s, Kind::unknown},
    {"AIFF", "FORM\0\0\0\0AIFF"s, Kind::aiff},
    {"AIFF-C", "FORM\0\0\0\0AIFC"s, Kind::aiff},
    {"another FORM", "FORM\0\0\0\0ILBM"s, Kind::unknown},
    {"MP4",
     "\0\0\0\x20"
     "ftypM4A "s,
     Kind::mp4},
    {"WavPack", "wvpk", Kind::wavPack},
    {"Monkey's Audio", "MAC \x96\x0f"s, Kind::monkeysAudio},
    {"True Audio", "TTA1", Kind::trueAudio},
    {"DSF", "DSD ", Kind::dsf},
    {"DSDIFF", "FRM8", Kind::dsdiff},
    {"Musepack 8", "MPCK", Kind::musepack},
    {"Musepack 7", "MP+\x07", Kind::musepack},
    {"Windows Media", "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9", Kind::asf},
    {"Vorbis", oggPage("\x01vorbis"), Kind::vorbis},
    {"Opus", oggPage("OpusHead"), Kind::opus},
    {"FLAC in Ogg",
     oggPage("\x7f"
             "FLAC"),
     Kind::oggFlac},
    {"Speex", oggPage("Speex   "), Kind::speex},
    {"a long table of segments", oggPage("OpusHead", 255), Kind::opus},
    {"video in Ogg", oggPage("\x80theora"), Kind::unknown},
    {"Ogg without a packet", "OggS", Kind::unknown},
    {"an MP3 frame", "\xFF\xFB\x90\x64", Kind::mpeg},
    {"an MP3 frame behind zeros", "\0\0\0\xFF\xFB\x90\x64"s, Kind::mpeg},
    {"a reserved version", "\xFF\xEB\x90\x64", Kind::unknown},
    {"AAC's own stream", "\xFF\xF1\x50\x80", Kind::unknown},
    {"a reserved bit rate", "\xFF\xFB\xF0\x64", Kind::unknown},
    {"a reserved sample rate", "\xFF\xFB\x9C\x64", Kind::unknown},
    {"half a frame's header", "\xFF\xFB", Kind::unknown},
};

TEST(AudioFileKindOf, GoesByTheFirstBytes) {
    for (const KindRow& row : kindRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(static_cast<int>(audioFileKindOf(row.start)), static_cast<int>(row.kind));
    }
}

struct TagRow {
    const char* name;
    std::string start;
    std::uint64_t length;
};

const TagRow tagRows[] = {
    {"no tag", "fLaC\0\0\0\x22\0\0"s, 0},
    {"an empty tag", "ID3\4\0\0\0\0\0\0"s, 10},
    {"a tag", "ID3\3\0\0\0\0\2\1"s, 10 + 257},
    {"a tag with a footer", "ID3\4\0\x10\0\0\0\1"s, 21},
    {"the longest tag", "ID3\4\0\0\x7f\x7f\x7f\x7f"s, 10 + 0xFFFFFFF},
    {"a length that is none", "ID3\4\0\0\0\0\x80\0"s, 0},
    {"half a header", "ID3\4\0\0\0\0\0", 0},
};

TEST(LeadingTagLength, IsThatOfTheHeader) {
    for (const TagRow& row : tagRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(leadingTagLength(row.start), row.length);
    }
}

}  // namespace
}  // namespace purlock::host_linux
