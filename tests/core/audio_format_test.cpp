#include "core/audio_format.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

struct FormatRow {
    const char* name;
    AudioFormat format;
    const char* summary;
    const char* formatLabel;
    const char* bitrateLabel;
};

constexpr std::uint32_t pcm = formatLinearPCM;

const FormatRow formatRows[] = {
    {"CD", {44100, 16, 2, 12, pcm}, "44.1 kHz · 16-bit · 2ch", "Int16", "1.41 Mbps"},
    {"float mixer", {48000, 32, 2, 9, pcm}, "48.0 kHz · 32-bit · 2ch", "Float32", "3.07 Mbps"},
    {"high resolution", {96000, 24, 2, 12, pcm}, "96.0 kHz · 24-bit · 2ch", "Int24", "4.61 Mbps"},
    {"telephone", {8000, 16, 1, 12, pcm}, "8.0 kHz · 16-bit · 1ch", "Int16", "128 kbps"},
    {"no flags", {44100, 16, 2, 0, pcm}, "44.1 kHz · 16-bit · 2ch", "Fmt16", "1.41 Mbps"},
    {"both flags", {44100, 16, 2, 5, pcm}, "44.1 kHz · 16-bit · 2ch", "Float16", "1.41 Mbps"},
    {"neither flag among others",
     {44100, 24, 2, 8 | 2 | 16, pcm},
     "44.1 kHz · 24-bit · 2ch",
     "Fmt24",
     "2.12 Mbps"},
    {"below a kilohertz", {999.9, 16, 1, 12, pcm}, "999 Hz · 16-bit · 1ch", "Int16", "16 kbps"},
    {"one kilohertz", {1000, 16, 1, 12, pcm}, "1.0 kHz · 16-bit · 1ch", "Int16", "16 kbps"},
    {"just below a kilohertz", {999.999, 8, 1, 12, pcm}, "999 Hz · 8-bit · 1ch", "Int8", "8 kbps"},
    {"rate zero", {0, 24, 2, 12, pcm}, "0 Hz · 24-bit · 2ch", "Int24", "0 kbps"},
    {"rate below zero", {-0.9, 24, 2, 12, pcm}, "0 Hz · 24-bit · 2ch", "Int24", "-0 kbps"},
    {"no channels", {48000, 24, 0, 12, pcm}, "48.0 kHz · 24-bit · 0ch", "Int24", "0 kbps"},
    {"no bits", {48000, 0, 2, 12, pcm}, "48.0 kHz · 0-bit · 2ch", "Int0", "0 kbps"},
    {"exactly a megabit", {62500, 16, 1, 12, pcm}, "62.5 kHz · 16-bit · 1ch", "Int16", "1.00 Mbps"},
    {"just below a megabit", {62499, 16, 1, 12, pcm}, "62.5 kHz · 16-bit · 1ch", "Int16", "1000 kbps"},
    {"DSD-like rate", {2822400, 1, 2, 0, pcm}, "2822.4 kHz · 1-bit · 2ch", "Fmt1", "5.64 Mbps"},
    {"halves round to even", {44250, 16, 2, 12, pcm}, "44.2 kHz · 16-bit · 2ch", "Int16", "1.42 Mbps"},
    {"largest counts",
     {48000, 4294967295, 4294967295, 12, pcm},
     "48.0 kHz · 4294967295-bit · 4294967295ch",
     "Int4294967295",
     "885443715125741568.00 Mbps"},
    {"infinite rate",
     {std::numeric_limits<double>::infinity(), 16, 2, 12, pcm},
     "inf kHz · 16-bit · 2ch",
     "Int16",
     "inf Mbps"},
};

TEST(AudioFormat, Texts) {
    for (const FormatRow& row : formatRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.format.summary(), row.summary);
        EXPECT_EQ(row.format.formatLabel(), row.formatLabel);
        EXPECT_EQ(row.format.bitrateLabel(), row.bitrateLabel);
    }
}

TEST(AudioFormat, TheEnginesRateAndBitRateFollowTheSameRules) {
    for (const FormatRow& row : formatRows) {
        SCOPED_TRACE(row.name);
        const std::string summary = row.summary;
        EXPECT_EQ(CauseEngine::formatRate(row.format.sampleRate), summary.substr(0, summary.find(" · ")));
        if (row.format.channelsPerFrame > 2) continue;  // the engine's channel count is signed
        EXPECT_EQ(CauseEngine::bitrateLabel(row.format.sampleRate, row.format.bitsPerChannel,
                                            static_cast<int>(row.format.channelsPerFrame)),
                  row.bitrateLabel);
    }
    EXPECT_EQ(CauseEngine::formatRate(192000), "192.0 kHz");
    EXPECT_EQ(CauseEngine::bitrateLabel(1000, 16, -1), "-16 kbps");
}

struct NoIntegerRow {
    const char* name;
    double rate;
};

// Only a rate below 1000 is shown as an integer, so positive infinity is not among them.
const NoIntegerRow noIntegerRows[] = {
    {"not a number", std::numeric_limits<double>::quiet_NaN()},
    {"minus infinity", -std::numeric_limits<double>::infinity()},
    {"too small for 64 bits", -1e300},
};

TEST(AudioFormatDeathTest, ARateWithoutAnIntegerFormStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const NoIntegerRow& row : noIntegerRows) {
        SCOPED_TRACE(row.name);
        EXPECT_DEATH(static_cast<void>(test::integerFormat(row.rate, 16).summary()), "no integer form");
        EXPECT_DEATH(static_cast<void>(CauseEngine::formatRate(row.rate)), "no integer form");
    }
}

TEST(AudioFormat, ABitRateNeedsNoIntegerForm) {
    EXPECT_EQ(test::integerFormat(std::numeric_limits<double>::quiet_NaN(), 16).bitrateLabel(), "nan kbps");
}

TEST(AudioFormat, EqualityComparesEveryField) {
    const AudioFormat format{44100, 16, 2, 12, pcm};
    EXPECT_EQ(format, (AudioFormat{44100, 16, 2, 12, pcm}));
    EXPECT_NE(format, (AudioFormat{44100.0000001, 16, 2, 12, pcm}));
    EXPECT_NE(format, (AudioFormat{44100, 24, 2, 12, pcm}));
    EXPECT_NE(format, (AudioFormat{44100, 16, 1, 12, pcm}));
    EXPECT_NE(format, (AudioFormat{44100, 16, 2, 4, pcm}));
    EXPECT_NE(format, (AudioFormat{44100, 16, 2, 12, fourCharCode("aac ")}));
}

}  // namespace
}  // namespace purlock
