#include <gtest/gtest.h>
#include <taglib.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/linux/playedfile/played_files.h"
#include "tests/host-linux/playedfile/made_files.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

/// A file as it is made, and what must be read of it. A bit rate is only there or not: encoders differ.
struct FileRow {
    const char* name;  // its suffix too, which must not matter
    int rate;
    int depth;
    int channels;
    std::vector<std::string> encoding;
    const char* codec;
    std::optional<std::uint32_t> readDepth;
    bool isLossless;
    int readRate;
};

const FileRow fileRows[] = {
    {"cd.flac", 44100, 16, 2, {}, "FLAC", 16, true, 44100},
    {"hires.flac", 96000, 24, 2, {}, "FLAC", 24, true, 96000},
    {"mono.flac", 192000, 24, 1, {}, "FLAC", 24, true, 192000},
    {"ogg.oga", 48000, 16, 2, {"-c:a", "flac", "-f", "ogg"}, "FLAC", 16, true, 48000},
    {"cd.wav", 44100, 16, 2, {}, "WAV", 16, true, 44100},
    {"hires.wav", 176400, 24, 2, {}, "WAV", 24, true, 176400},
    {"float.wav", 48000, 32, 2, {"-c:a", "pcm_f32le"}, "WAV", 32, true, 48000},
    {"phone.wav", 8000, 16, 1, {"-c:a", "pcm_mulaw"}, "WAV", std::nullopt, false, 8000},
    {"hires.aiff", 88200, 24, 2, {}, "AIFF", 24, true, 88200},
    {"little.aifc", 48000, 16, 2, {"-c:a", "pcm_s16le", "-f", "aiff"}, "AIFF", 16, true, 48000},
    {"alac.m4a", 96000, 24, 2, {"-c:a", "alac", "-sample_fmt", "s32p"}, "ALAC", 24, true, 96000},
    {"aac.m4a", 48000, 24, 2, {"-c:a", "aac", "-b:a", "192k"}, "AAC", std::nullopt, false, 48000},
    {"hires.wv", 96000, 24, 2, {"wavpack"}, "WavPack", 24, true, 96000},
    {"lossy.wv", 48000, 24, 2, {"wavpack", "-b320"}, "WavPack", std::nullopt, false, 48000},
    {"true.tta", 48000, 16, 2, {"-c:a", "tta"}, "True Audio", 16, true, 48000},
    {"lame.mp3", 44100, 16, 2, {"-c:a", "libmp3lame", "-b:a", "320k"}, "MP3", std::nullopt, false, 44100},
    {"vorbis.ogg", 44100, 16, 2, {"-c:a", "libvorbis"}, "Vorbis", std::nullopt, false, 44100},
    {"opus.opus", 48000, 16, 2, {"-c:a", "libopus"}, "Opus", std::nullopt, false, 48000},
    {"speex.spx", 32000, 16, 1, {"-c:a", "libspeex"}, "Speex", std::nullopt, false, 32000},
    {"windows.wma", 44100, 16, 2, {"-c:a", "wmav2"}, "WMA", std::nullopt, false, 44100},
};

std::ostream& operator<<(std::ostream& out, const FileRow& row) {
    return out << row.name;
}

class AudioFiles : public ::testing::TestWithParam<FileRow> {};

TEST_P(AudioFiles, SayWhatIsInThem) {
    const FileRow& row = GetParam();
    const test::TemporaryFolder folder;
    const std::string path = folder.path() / row.name;
    ASSERT_TRUE(test::makeSound(path, row.rate, row.depth, row.channels, row.encoding));
    const std::string misleading = folder.path() / "misleading.mp3";
    std::filesystem::copy_file(path, misleading);
    for (const std::string& name : {path, misleading}) {
        SCOPED_TRACE(name);
        const auto file = readPlayedFile(name);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->codec, row.codec);
        EXPECT_EQ(file->sampleRate, row.readRate);
        EXPECT_EQ(file->bitDepth, row.readDepth);
        EXPECT_EQ(file->channelCount, static_cast<std::uint32_t>(row.channels));
        EXPECT_EQ(file->isLossless, row.isLossless);
        const test::Probed probed = test::probed(name);
        EXPECT_EQ(file->sampleRate, probed.rate);
        EXPECT_EQ(file->channelCount, static_cast<std::uint32_t>(probed.channels));
        if (row.isLossless) {
            EXPECT_EQ(file->bitDepth, static_cast<std::uint32_t>(probed.depth));
        } else {
            EXPECT_GT(file->bitsPerSecond.value_or(0), 1000.0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, AudioFiles, ::testing::ValuesIn(fileRows), [](const auto& row) {
    std::string name = row.param.name;
    name[name.find('.')] = '_';
    return name;
});

TEST(AudioFile, OfMonkeysAudioIsReadFromItsHeader) {
    const test::TemporaryFolder folder;
    folder.write("monkey.ape", test::monkeysAudioHeader(96000, 24, 2));
    const auto file = readPlayedFile(folder.path() / "monkey.ape");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->codec, "Monkey's Audio");
    EXPECT_EQ(file->sampleRate, 96000);
    EXPECT_EQ(file->bitDepth, 24U);
    EXPECT_TRUE(file->isLossless);
}

/// The tag library knows files of single bits from version 2 on.
TEST(AudioFile, OfSingleBitsIsKnownWhereTheLibraryKnowsIt) {
    const test::TemporaryFolder folder;
    folder.write("single.dsf", test::dsfHeader(2822400, 2));
    folder.write("single.dff", test::dsdiffHeader(5644800, 2));
    const auto dsf = readPlayedFile(folder.path() / "single.dsf");
    const auto dsdiff = readPlayedFile(folder.path() / "single.dff");
    if (TAGLIB_MAJOR_VERSION < 2) {
        EXPECT_EQ(dsf, std::nullopt);
        EXPECT_EQ(dsdiff, std::nullopt);
        return;
    }
    ASSERT_TRUE(dsf);
    EXPECT_EQ(dsf->codec, "DSD64");
    EXPECT_EQ(dsf->bitDepth, 1U);
    ASSERT_TRUE(dsdiff);
    EXPECT_EQ(dsdiff->codec, "DSD128");
    EXPECT_EQ(dsdiff->bitDepth, 1U);
}

TEST(AudioFile, IsReadBehindALargeTag) {
    const test::TemporaryFolder folder;
    const std::string path = folder.path() / "plain.flac";
    ASSERT_TRUE(test::makeSound(path, 96000, 24, 2));
    constexpr std::size_t pictureBytes = 3U << 20U;
    std::string tagged = {'I', 'D', '3', 4, 0, 0};
    for (const int shift : {21, 14, 7, 0}) tagged += static_cast<char>(pictureBytes >> shift & 0x7FU);
    folder.write("tagged.flac", tagged + std::string(pictureBytes, 'p') + test::contentsOf(path));
    EXPECT_EQ(readPlayedFile(folder.path() / "tagged.flac"), readPlayedFile(path));
}

}  // namespace
}  // namespace purlock::host_linux
