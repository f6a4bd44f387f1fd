// What the mixer does besides converting: the verdict, and the findings.

#include <gtest/gtest.h>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::floatFormat;
using test::integerFormat;
using namespace alteration;

DeviceState deviceWith(const AudioFormat& virtualFormat, std::optional<MixerWork> work) {
    auto state = test::device(DeviceTransport::usb, virtualFormat, integerFormat(48000, 24));
    state.mixerWork = std::move(work);
    return state;
}

TEST(Alterations, Verdicts) {
    const AudioFormat equal = integerFormat(48000, 24);
    const AudioFormat other = integerFormat(44100, 24);
    const MixerWork quiet{{DeviceVolume{"Desk", 0.4}}};
    DeviceState idle = deviceWith(equal, quiet);
    idle.isRunning = false;
    DeviceState unknown = deviceWith(equal, quiet);
    unknown.physicalFormat.reset();
    DeviceState unseen = deviceWith(equal, MixerWork{});
    unseen.virtualFormat.reset();
    unseen.mixerWork->unseenProgram = "aplay";
    DeviceState seen = unseen;
    seen.virtualFormat = equal;
    struct Case {
        const char* name;
        DeviceState state;
        Verdict expected;
    };
    const Case cases[] = {
        {"nothing is known", deviceWith(equal, {}), verdict::BitPerfect{equal}},
        {"nothing is altered", deviceWith(equal, MixerWork{}), verdict::BitPerfect{equal}},
        {"altered", deviceWith(equal, quiet), verdict::Altered{equal}},
        {"converted as well", deviceWith(other, quiet), verdict::Resampling{other, equal}},
        {"idle", idle, verdict::Idle{equal}},
        {"a format is missing", unknown, verdict::Unknown{}},
        {"a program hides it", unseen, verdict::Unknown{"aplay"}},
        {"both formats are known all the same", seen, verdict::BitPerfect{equal}},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(deviceVerdict(row.state), row.expected) << row.name;
        EXPECT_EQ(CauseEngine::evaluate(row.state, {}, {}, {}).verdict, row.expected) << row.name;
    }
}

struct FindingCase {
    const char* name;
    Alteration alteration;
    const char* title;
    const char* cause;
    const char* fix;
};

const FindingCase findings[] = {
    {"a stream turned down", StreamVolume{"mpv", 0.4}, "App volume changes the samples",
     "PipeWire turns mpv down to 40 %.", "Set mpv to 100 % in the volume control."},
    {"a stream turned up", StreamVolume{"mpv", 1.1}, "App volume changes the samples",
     "PipeWire turns mpv up to 110 %.", "Set mpv to 100 % in the volume control."},
    {"a stream turned down by little", StreamVolume{"mpv", 0.9971}, "App volume changes the samples",
     "PipeWire turns mpv down to 99.7 %.", "Set mpv to 100 % in the volume control."},
    {"a stream muted", StreamMute{"mpv"}, "App is muted", "PipeWire mutes mpv.",
     "Unmute mpv in the volume control."},
    {"stereo on one channel", Channels{"mpv", 2, 1}, "Channels are remixed",
     "PipeWire remixes 2 channels of mpv to 1.", "Choose a stereo profile for this device."},
    {"surround on stereo", Channels{"mpv", 6, 2}, "Channels are remixed",
     "PipeWire remixes 6 channels of mpv to 2.",
     "Choose a profile with 6 channels for this device, or play a version with 2."},
    {"a centre alone", Channels{"mpv", 1, 2}, "Channels are remixed",
     "PipeWire remixes 1 channel of mpv to 2.",
     "Choose a profile with 1 channel for this device, or play a version with 2."},
    {"links crossed", Channels{"mpv", 2, 2}, "Channels are remixed",
     "PipeWire sends channels of mpv to other channels of the device.",
     "Link each channel of the app to the device's channel of the same place."},
    {"a filter", Filter{"Equalizer"}, "A filter is in the path",
     "Equalizer works on the sound between the app and the device.",
     "Choose the device itself as the output device, or switch the filter off."},
    {"another stream", Mixed{{"Firefox"}}, "Other sound is mixed in", "PipeWire mixes in what Firefox plays.",
     "Stop Firefox, or give it another device."},
    {"three other streams", Mixed{{"A", "B", "C"}}, "Other sound is mixed in",
     "PipeWire mixes in what A, B and C play.", "Stop A, B and C, or give them another device."},
    {"a device turned down", DeviceVolume{"Desk DAC", 0.4}, "Device volume changes the samples",
     "PipeWire turns Desk DAC down to 40 %.",
     "Set the volume of Desk DAC to 100 % and use the amplifier's own control."},
    {"a device muted", DeviceMute{"Desk DAC"}, "Device is muted", "PipeWire mutes Desk DAC.",
     "Unmute Desk DAC."},
    {"another clock", alteration::Clock{"Desk DAC", "HDMI"}, "Another device sets the clock",
     "Desk DAC follows the clock of HDMI. PipeWire resamples what it plays to keep pace.",
     "Play to one device at a time."},
    {"dither", Dither{"Desk DAC"}, "Noise is added", "PipeWire dithers what Desk DAC plays.",
     "Switch dithering off in the settings of Desk DAC."},
    {"elsewhere", Elsewhere{"mpv", "Hall Amplifier", "Desk DAC"}, "Another device plays",
     "mpv plays to Hall Amplifier.", "Choose System default, or move mpv to Desk DAC in the volume control."},
};

TEST(Alterations, Findings) {
    SystemWords words;
    words.mixer = "PipeWire";
    for (const FindingCase& row : findings) {
        SCOPED_TRACE(row.name);
        const auto found = CauseEngine::alterationDiagnostics(MixerWork{{row.alteration}}, words);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].severity, Diagnostic::Severity::medium);
        EXPECT_EQ(found[0].title, row.title);
        EXPECT_EQ(found[0].cause, row.cause);
        EXPECT_EQ(found[0].fix, row.fix);
    }
    EXPECT_TRUE(CauseEngine::alterationDiagnostics({}, words).empty());
    EXPECT_TRUE(CauseEngine::alterationDiagnostics(MixerWork{}, words).empty());
}

/// The clock runs at 48 kHz, and the mixer's format is what it has made of the stream, or of another one.
TEST(Alterations, APlayerOfFilesIsComparedWithItsOwnStream) {
    auto state = test::device(DeviceTransport::usb, integerFormat(48000, 24), integerFormat(44100, 24));
    state.mixerWork = MixerWork{};
    SourceClaim claim = test::claim(SourceApp::other, 44100, 24);
    claim.isLossless = true;
    claim.file = FileClaim{};
    claim.file->playerName = "mpv";
    claim.file->playerProcess = 7;
    const auto titleOfFirst = [&] {
        return CauseEngine::evaluate(state, {}, {}, claim).diagnostics[0].title;
    };
    EXPECT_EQ(titleOfFirst(), "macOS is resampling") << "its stream is not known";
    state.mixerWork->streamFormat = integerFormat(44100, 16);
    EXPECT_EQ(titleOfFirst(), "macOS is resampling") << "nor whose stream this is";
    state.mixerWork->streamProcess = 8;
    EXPECT_EQ(titleOfFirst(), "macOS is resampling") << "another's stream";
    state.mixerWork->streamProcess = 7;
    EXPECT_EQ(titleOfFirst(), "Source app delivered lower bit depth");
    state.mixerWork->streamFormat = integerFormat(44100, 24);
    EXPECT_EQ(titleOfFirst(), "macOS is resampling");
    state.mixerWork->streamFormat = integerFormat(48000, 24);
    EXPECT_EQ(titleOfFirst(), "Source app is resampling");
    claim.file->playerProcess.reset();
    state.mixerWork->streamProcess.reset();
    EXPECT_EQ(titleOfFirst(), "macOS is resampling") << "the player is not heard";
    state.mixerWork.reset();
    claim.file->playerProcess = 7;
    EXPECT_EQ(titleOfFirst(), "macOS is resampling");
}

TEST(Alterations, ComeAfterTheFindingsOfTheLinkInTheirOwnOrder) {
    auto state = test::device(DeviceTransport::bluetooth, floatFormat(48000), integerFormat(44100, 24));
    state.mixerWork = MixerWork{{StreamMute{"mpv"}, DeviceMute{"Desk"}}};
    SourceClaim claim = test::claim(SourceApp::qobuz, 96000, 24);
    claim.isLossless = true;
    std::vector<std::string> titles;
    for (const auto& each : CauseEngine::evaluate(state, {}, {}, claim).diagnostics) {
        titles.push_back(each.title);
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"Source app downgraded", "macOS is resampling",
                                                "Bit depth changed", "Bluetooth can't carry lossless",
                                                "App is muted", "Device is muted"}));
}

}  // namespace
}  // namespace purlock
