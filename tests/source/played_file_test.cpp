#include "source/played_file.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <utility>

namespace purlock {
namespace {

const PlayedFile hiRes{"FLAC", 96000.0, 24, 2, 2'800'000.0, true};
const PlayedFile lossy{"MP3", 44100.0, std::nullopt, 2, 320'000.0, false};

TEST(PlayedFile, ComesThroughTheDictionaryAsItIs) {
    for (const PlayedFile& file : {hiRes, lossy, PlayedFile{"DSD64", 2822400.0, 1, {}, {}, true}}) {
        NowPlayingDictionary dictionary;
        addPlayedFile(dictionary, file);
        EXPECT_EQ(playedFileOf(dictionary), file) << file.codec;
    }
}

TEST(PlayedFile, ADictionaryWithoutACodecHasNone) {
    NowPlayingDictionary dictionary;
    EXPECT_EQ(playedFileOf(dictionary), std::nullopt);
    addPlayedFile(dictionary, hiRes);
    for (auto& [key, value] : dictionary) value = OtherNowPlayingType{};
    EXPECT_EQ(playedFileOf(dictionary), std::nullopt);
}

TEST(PlayedFile, NumbersThatNoFileHasAreAbsent) {
    for (const double number : {0.0, -1.0, 1e300, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        NowPlayingDictionary dictionary;
        addPlayedFile(dictionary, {"FLAC", 1.0, 1, 1, 1.0, false});
        for (auto& [key, value] : dictionary) {
            if (std::holds_alternative<double>(value)) value = number;
        }
        const auto file = playedFileOf(dictionary);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->sampleRate, std::nullopt) << number;
        EXPECT_EQ(file->bitDepth, std::nullopt) << number;
        EXPECT_EQ(file->channelCount, std::nullopt) << number;
        EXPECT_EQ(file->bitsPerSecond, std::nullopt) << number;
    }
}

TEST(PlayedFile, AThousandChannelsAreTheMost) {
    for (const auto& [count, expected] :
         {std::pair(1.0, std::optional(1U)), std::pair(1000.0, std::optional(1000U)),
          std::pair(1001.0, std::optional<unsigned>()), std::pair(0.5, std::optional<unsigned>())}) {
        NowPlayingDictionary dictionary;
        addPlayedFile(dictionary, {"FLAC", 1.0, 1, 1, 1.0, false});
        for (auto& [key, value] : dictionary) {
            if (std::holds_alternative<double>(value)) value = count;
        }
        EXPECT_EQ(playedFileOf(dictionary)->channelCount, expected) << count;
    }
}

NowPlayingInfo playing(const PlayedFile& file) {
    NowPlayingInfo info;
    info.title = "Song";
    info.appName = "mpv";
    info.isPlaying = true;
    info.playedFile = file;
    return info;
}

TEST(ClaimOfPlayedFile, IsWhatTheFileSays) {
    const auto claim = claimOfPlayedFile(playing(hiRes), 7);
    SourceClaim expected;
    expected.declaredRate = 96000;
    expected.declaredBitDepth = 24;
    expected.isLossless = true;
    expected.isHiRes = true;
    expected.codec = "FLAC";
    expected.file = FileClaim{"mpv", 2, 2'800'000.0, 7};
    EXPECT_EQ(claim, expected);
}

struct HiResRow {
    const char* name;
    PlayedFile file;
    bool isHiRes;
};

const HiResRow hiResRows[] = {
    {"a CD's", {"FLAC", 44100.0, 16, 2, {}, true}, false},
    {"a film's", {"WAV", 48000.0, 16, 2, {}, true}, false},
    {"more bits", {"FLAC", 44100.0, 24, 2, {}, true}, true},
    {"a higher rate", {"FLAC", 88200.0, 16, 2, {}, true}, true},
    {"lossy at a higher rate", {"AAC", 96000.0, {}, 2, {}, false}, false},
};

TEST(ClaimOfPlayedFile, IsHiResBeyondACDs) {
    for (const HiResRow& row : hiResRows) {
        EXPECT_EQ(claimOfPlayedFile(playing(row.file), std::nullopt)->isHiRes, row.isHiRes) << row.name;
    }
}

TEST(ClaimOfPlayedFile, OfSingleBitsDeclaresNothingToCompare) {
    const auto claim = claimOfPlayedFile(playing({"DSD64", 2822400.0, 1, 2, {}, true}), 7);
    ASSERT_TRUE(claim);
    EXPECT_EQ(claim->declaredRate, std::nullopt);
    EXPECT_EQ(claim->declaredBitDepth, std::nullopt);
    EXPECT_EQ(claim->codec, "DSD64");
    EXPECT_EQ(claim->isHiRes, true);
}

TEST(ClaimOfPlayedFile, WithoutAFileThereIsNone) {
    EXPECT_EQ(claimOfPlayedFile(std::nullopt, 7), std::nullopt);
    EXPECT_EQ(claimOfPlayedFile(NowPlayingInfo{}, 7), std::nullopt);
}

}  // namespace
}  // namespace purlock
