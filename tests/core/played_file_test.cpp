#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::floatFormat;
using test::integerFormat;
using Quality = SignalStage::Quality;
using Severity = Diagnostic::Severity;

/// A claim that mpv plays such a file; a depth of 0 is none.
SourceClaim fileClaim(const char* codec, std::optional<double> rate, std::uint32_t depth, bool isLossless) {
    SourceClaim claim;
    claim.codec = codec;
    claim.declaredRate = rate;
    if (depth > 0) claim.declaredBitDepth = depth;
    claim.isLossless = isLossless;
    claim.file = FileClaim{"mpv", 2, 320000.0, 7};
    return claim;
}

struct StageRow {
    const char* name;
    SourceClaim claim;
    const char* secondary;
    std::optional<std::string> bitrate;
    Quality quality;
};

const StageRow stageRows[] = {
    {"lossless", fileClaim("FLAC", 96000, 24, true), "FLAC · 24-bit · 96.0 kHz", "4.61 Mbps",
     Quality::lossless},
    {"lossy", fileClaim("MP3", 44100, 0, false), "MP3 · 44.1 kHz", "320 kbps", Quality::lossy},
    {"single bits", fileClaim("DSD64", {}, 0, true), "DSD64", "320 kbps", Quality::lossless},
    {"a rate alone", fileClaim("ALAC", 48000, 0, true), "ALAC · 48.0 kHz", "320 kbps", Quality::lossless},
};

TEST(PlayedFileStage, ShowsThePlayerAndWhatIsInTheFile) {
    for (const StageRow& row : stageRows) {
        SCOPED_TRACE(row.name);
        const NowPlayingInfo info{"Song", {}, {}, "mpv", "mpv", true, {}, {}};
        const auto stage = CauseEngine::evaluate({}, info, {}, row.claim).stages.at(0);
        EXPECT_EQ(stage.title, "Source");
        EXPECT_EQ(stage.primary, "mpv");
        EXPECT_EQ(stage.secondary, row.secondary);
        EXPECT_EQ(stage.bitrate, row.bitrate);
        EXPECT_EQ(stage.quality, row.quality);
    }
}

TEST(PlayedFileStage, CountsTheFilesOwnChannelsAndDoesWithoutAName) {
    auto claim = fileClaim("FLAC", 96000, 24, true);
    claim.file = FileClaim{std::nullopt, 6, std::nullopt, std::nullopt};
    const auto stage = CauseEngine::evaluate({}, {}, {}, claim).stages.at(0);
    EXPECT_EQ(stage.primary, "—");
    EXPECT_EQ(stage.bitrate, "13.82 Mbps");
}

struct FindingRow {
    const char* name;
    SourceClaim claim;
    AudioFormat virtualFormat;
    std::vector<std::string> findings;  // title: cause
};

const FindingRow findingRows[] = {
    {"handed over as it is", fileClaim("FLAC", 96000, 24, true), floatFormat(96000), {}},
    {"a lower rate",
     fileClaim("FLAC", 96000, 24, true),
     floatFormat(48000),
     {"Source app downgraded: mpv is playing a 96.0 kHz file but hands the system 48.0 kHz."}},
    {"a higher rate",
     fileClaim("FLAC", 44100, 16, true),
     floatFormat(48000),
     {"Source app is resampling: mpv is playing a 44.1 kHz file but hands the system 48.0 kHz."}},
    {"a higher rate of a lossy file, whose decoder may do that",
     fileClaim("AAC", 24000, 0, false),
     floatFormat(48000),
     {}},
    {"a lower rate of a lossy file",
     fileClaim("Opus", 48000, 0, false),
     integerFormat(44100, 16),
     {"Source app downgraded: mpv is playing a 48.0 kHz file but hands the system 44.1 kHz."}},
    {"fewer bits",
     fileClaim("FLAC", 96000, 24, true),
     integerFormat(96000, 16),
     {"Source app delivered lower bit depth: mpv is playing a 24-bit file but hands the system 16-bit."}},
    {"more bits", fileClaim("FLAC", 44100, 16, true), integerFormat(44100, 32), {}},
    {"as many bits as the mixer holds", fileClaim("WAV", 48000, 32, true), integerFormat(48000, 24), {}},
    {"fewer bits than the mixer holds",
     fileClaim("WAV", 48000, 32, true),
     integerFormat(48000, 16),
     {"Source app delivered lower bit depth: mpv is playing a 32-bit file but hands the system 16-bit."}},
    {"both",
     fileClaim("FLAC", 192000, 24, true),
     integerFormat(44100, 16),
     {"Source app downgraded: mpv is playing a 192.0 kHz file but hands the system 44.1 kHz.",
      "Source app delivered lower bit depth: mpv is playing a 24-bit file but hands the system 16-bit."}},
    {"single bits", fileClaim("DSD64", {}, 0, true), floatFormat(176400), {}},
};

TEST(PlayedFileFindings, FindThePlayerThatConvertsByItself) {
    for (const FindingRow& row : findingRows) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> found;
        for (const auto& finding : CauseEngine::sourceVsHALDiagnostics(row.claim, row.virtualFormat)) {
            found.push_back(finding.title + ": " + finding.cause);
            EXPECT_TRUE(finding.fix.starts_with("Look in mpv's audio settings for "));
        }
        EXPECT_EQ(found, row.findings);
    }
}

TEST(PlayedFileFindings, WeighALossMoreThanAConversion) {
    const auto of = [](double rate) {
        return CauseEngine::sourceVsHALDiagnostics(fileClaim("FLAC", rate, 16, true), floatFormat(48000))
            .at(0)
            .severity;
    };
    EXPECT_EQ(of(96000), Severity::high);
    EXPECT_EQ(of(44100), Severity::medium);
}

TEST(PlayedFileFindings, NothingIsSaidWithoutAFormat) {
    EXPECT_TRUE(CauseEngine::sourceVsHALDiagnostics(fileClaim("FLAC", 96000, 24, true), {}).empty());
}

TEST(PlayedFileFindings, NameThePlayerOnBluetooth) {
    auto claim = fileClaim("FLAC", 44100, 16, true);
    const auto cause = [&] {
        return CauseEngine::transportCapDiagnostics(DeviceTransport::bluetooth, {}, claim).at(0).cause;
    };
    EXPECT_NE(cause().find("Whatever mpv sends"), std::string::npos);
    claim.file->playerName.reset();
    EXPECT_NE(cause().find("Whatever — sends"), std::string::npos);
    claim.isLossless = false;
    EXPECT_TRUE(CauseEngine::transportCapDiagnostics(DeviceTransport::bluetooth, {}, claim).empty());
}

}  // namespace
}  // namespace purlock
