// The table of the system's words, with words that are made up, and the findings that are made of it.

#include "core/system_words.h"

#include <gtest/gtest.h>

#include <set>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::integerFormat;

/// Every reason says its own name and what it puts in.
SystemWords madeUp() {
    SystemWords words;
    words.resamplingCause = "{from} to {to}.";
    words.resamplingTwiceCause = "{from} by {mixer} to {to}.";
    words.resamplingFix = "no reason";
    words.deviceCannot = {"cannot {from}", "other device", ""};
    words.deviceIsSet = {"is set", "set {hertz}", "grep {hertz}"};
    words.rateNotAllowed = {"not allowed", "run {command}", "allow {rates}"};
    words.rateForced = {"forced", "run {command}", "unforce"};
    words.rateForcedByStream = {"{app} forces", "stop {app}", ""};
    words.heldByStream = {"{app} holds", "stop {app}", ""};
    words.bluetoothCodecLink = "{codec}, lossy";
    words.bluetoothCodecCause = "{codec} of {app}";
    return words;
}

struct ReasonRow {
    const char* name;
    std::optional<RateReason> reason;
    const char* cause;
    const char* fix;
    std::optional<std::string> command;
};

TEST(SystemWords, ReasonsOfAConversion) {
    using namespace rate_reason;
    const ReasonRow rows[] = {
        {"unknown", {}, "44.1 kHz to 48.0 kHz.", "no reason", {}},
        {"the device cannot", DeviceCannot{}, "44.1 kHz to 48.0 kHz. cannot 44.1 kHz", "other device", {}},
        {"the device is set", DeviceIsSet{}, "44.1 kHz to 48.0 kHz. is set", "set 44100", "grep 44100"},
        {"not allowed", NotAllowed{{96000, 48000}}, "44.1 kHz to 48.0 kHz. not allowed",
         "run allow 44100 48000 96000", "allow 44100 48000 96000"},
        {"forced", Forced{}, "44.1 kHz to 48.0 kHz. forced", "run unforce", "unforce"},
        {"forced by a stream", ForcedByStream{"A"}, "44.1 kHz to 48.0 kHz. A forces", "stop A", {}},
        {"held by a stream", HeldByStream{"B"}, "44.1 kHz to 48.0 kHz. B holds", "stop B", {}},
    };
    for (const ReasonRow& row : rows) {
        SCOPED_TRACE(row.name);
        MixerWork work;
        work.rateConversion = RateConversion{44100, 48000, row.reason};
        const auto found = CauseEngine::halResamplingDiagnostics(
            integerFormat(44100, 16), integerFormat(48000, 16), {}, madeUp(), work);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].cause, row.cause);
        EXPECT_EQ(found[0].fix, row.fix);
        EXPECT_EQ(found[0].command, row.command);
    }
}

TEST(SystemWords, AConversionThereAndBack) {
    MixerWork work;
    work.rateConversion = RateConversion{44100, 96000, rate_reason::Forced{}};
    const auto found = CauseEngine::halResamplingDiagnostics(integerFormat(96000, 16),
                                                             integerFormat(48000, 16), {}, madeUp(), work);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].cause, "44.1 kHz by 96.0 kHz to 48.0 kHz. forced");
}

TEST(SystemWords, TheCodecOfABluetoothLink) {
    auto state = test::device(DeviceTransport::bluetooth, integerFormat(48000, 16), integerFormat(48000, 16));
    SourceClaim claim = test::claim(SourceApp::qobuz, 44100, 16);
    claim.isLossless = true;
    state.mixerWork = MixerWork{};
    const auto linkText = [&] { return CauseEngine::evaluate(state, {}, {}, claim, madeUp()).stages[4]; };
    EXPECT_EQ(linkText().secondary, "AAC ~256 kbps cap") << "it is not known";
    state.mixerWork->linkCodec = "LDAC";
    EXPECT_EQ(linkText().secondary, "LDAC, lossy");
    const auto report = CauseEngine::evaluate(state, {}, {}, claim, madeUp());
    ASSERT_EQ(report.diagnostics.size(), 1U);
    EXPECT_EQ(report.diagnostics[0].cause, "LDAC of Qobuz");
}

TEST(SystemWords, WithoutWordsForACodecTheFindingIsTheOneForAnyLink) {
    auto state = test::device(DeviceTransport::bluetooth, integerFormat(48000, 16), integerFormat(48000, 16));
    SourceClaim claim = test::claim(SourceApp::qobuz, 44100, 16);
    claim.isLossless = true;
    const auto cause = [&] {
        return CauseEngine::evaluate(state, {}, {}, claim, {}).diagnostics.at(0).cause;
    };
    const std::string ofAnyLink = cause();
    state.mixerWork = MixerWork{};
    state.mixerWork->linkCodec = "LDAC";
    EXPECT_EQ(cause(), ofAnyLink);
    EXPECT_NE(ofAnyLink, "");
}

TEST(SystemWords, ABluetoothLinkWithoutABitRateOfItsOwnShowsNone) {
    SystemWords words = madeUp();
    words.bluetoothBitrate = "";
    const auto state =
        test::device(DeviceTransport::bluetooth, integerFormat(48000, 16), integerFormat(48000, 16));
    const auto report = CauseEngine::evaluate(state, {}, {}, {}, words);
    EXPECT_EQ(report.stages.back().bitrate, std::nullopt)
        << "the device's is that of the sound before coding";
}

TEST(SystemWords, FillingPutsInWhatIsNamedAndLeavesTheRest) {
    struct Row {
        const char* name;
        const char* text;
        const char* expected;
    };
    const Row rows[] = {
        {"nothing", "", ""},
        {"a place", "a {x} b", "a 1 b"},
        {"twice", "{x}{x}", "11"},
        {"what is put in is not looked at again", "{y}", "{x}"},
        {"an unknown name stays", "{z}", "{z}"},
        {"an open brace", "a {x", "a {x"},
        {"a brace before a place", "{{x}", "{1"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(fill(row.text, {{"x", "1"}, {"y", "{x}"}}), row.expected) << row.name;
    }
}

TEST(SystemWords, EveryEntryIsVisitedOnce) {
    std::set<std::string> names;
    int visits = 0;
    std::string mixer;
    forEachEntry(madeUp(), [&](const std::string& name, const std::string& text) {
        ++visits;
        names.insert(name);
        if (name == "mixer") mixer = text;
    });
    EXPECT_EQ(visits, 40);
    EXPECT_EQ(names.size(), 40U);
    EXPECT_EQ(mixer, "CoreAudio");
    EXPECT_TRUE(names.contains("rateForced.command"));
}

/// Values that all differ from one another.
template <typename Value>
void expectAllDifferent(const std::vector<Value>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            EXPECT_EQ(values[i] == values[j], i == j) << i << " " << j;
        }
    }
}

TEST(MixerWork, EqualityComparesEveryField) {
    using namespace alteration;
    expectAllDifferent<Alteration>({
        StreamVolume{"a", 0.5},
        StreamVolume{"b", 0.5},
        StreamVolume{"a", 0.6},
        StreamMute{"a"},
        StreamMute{"b"},
        Channels{"a", 2, 1},
        Channels{"b", 2, 1},
        Channels{"a", 6, 1},
        Channels{"a", 2, 2},
        Filter{"a"},
        Filter{"b"},
        Mixed{{"a"}},
        Mixed{{"a", "b"}},
        DeviceVolume{"a", 0.5},
        DeviceVolume{"b", 0.5},
        DeviceVolume{"a", 0.6},
        DeviceMute{"a"},
        DeviceMute{"b"},
        alteration::Clock{"a", "b"},
        alteration::Clock{"b", "b"},
        alteration::Clock{"a", "a"},
        Dither{"a"},
        Dither{"b"},
        Elsewhere{"a", "b", "c"},
        Elsewhere{"b", "b", "c"},
        Elsewhere{"a", "c", "c"},
        Elsewhere{"a", "b", "d"},
    });
    using namespace rate_reason;
    expectAllDifferent<RateReason>({DeviceCannot{}, DeviceIsSet{}, NotAllowed{{1}}, NotAllowed{{2}}, Forced{},
                                    ForcedByStream{"a"}, ForcedByStream{"b"}, HeldByStream{"a"},
                                    HeldByStream{"b"}});
    expectAllDifferent<RateConversion>({{1, 2, {}}, {2, 2, {}}, {1, 1, {}}, {1, 2, Forced{}}});
    std::vector<MixerWork> works(6);
    works[1].alterations = {Filter{"a"}};
    works[2].linkCodec = "SBC";
    works[3].rateConversion = RateConversion{1, 2, {}};
    works[4].streamFormat = integerFormat(48000, 16);
    works[5].streamProcess = 7;
    expectAllDifferent(works);
}

TEST(PlayedFile, EqualityComparesEveryField) {
    std::vector<PlayedFile> files(7);
    files[1].codec = "FLAC";
    files[2].sampleRate = 44100;
    files[3].bitDepth = 16;
    files[4].channelCount = 2;
    files[5].bitsPerSecond = 1000;
    files[6].isLossless = true;
    expectAllDifferent(files);
    std::vector<NowPlayingInfo> infos(2);
    infos[1].playedFile = files[1];
    expectAllDifferent(infos);
    std::vector<FileClaim> claims(5);
    claims[1].playerName = "mpv";
    claims[2].channelCount = 2;
    claims[3].bitsPerSecond = 1000;
    claims[4].playerProcess = 7;
    expectAllDifferent(claims);
    std::vector<SourceClaim> sources(2);
    sources[1].file = claims[1];
    expectAllDifferent(sources);
}

}  // namespace
}  // namespace purlock
