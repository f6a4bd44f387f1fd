// Every combination of inputs that matters, against a second statement of the rules. It is written from the
// user's side, in another shape than the engine's: one flat list of sentences about what must be seen.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "base/overloaded.h"
#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::floatFormat;
using test::integerFormat;

struct Inputs {
    std::optional<DeviceState> state;
    std::optional<NowPlayingInfo> nowPlaying;
    std::optional<AudioProcessInfo> process;
    std::optional<SourceClaim> claim;
};

using Text = std::optional<std::string>;

/// One stage as a line: title, primary, secondary, bit rate, quality.
std::string line(const std::string& title, const std::string& primary, const Text& secondary,
                 const Text& bitrate, const std::string& quality) {
    return title + " / " + primary + " / " + secondary.value_or("-") + " / " + bitrate.value_or("-") + " / " +
           quality;
}

std::string kilohertz(double rate) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.1f kHz", rate / 1000);
    return buffer;
}

std::string megabits(double bitsPerSecond) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.2f Mbps", bitsPerSecond / 1e6);
    return buffer;
}

std::string expectedSource(const Inputs& in) {
    if (!in.claim) {
        const bool named = in.nowPlaying && in.nowPlaying->appName;
        return named ? line("Source", *in.nowPlaying->appName, "(source quality not detected)", {}, "unknown")
                     : line("Source", "(no source identified)", {}, {}, "unknown");
    }
    const std::vector<std::string> names = {"Tidal", "Apple Music", "Spotify", "Qobuz", "\u2014"};
    Text tier;
    for (const Text& candidate : {in.claim->configuredTier, in.claim->displayedTier}) {
        if (candidate.value_or("") != "") tier = candidate;
    }
    Text bitrate;
    if (in.claim->declaredRate && in.claim->declaredBitDepth) {
        bitrate = megabits(2 * *in.claim->declaredRate * *in.claim->declaredBitDepth);
    }
    return line("Source", names.at(static_cast<std::size_t>(in.claim->app)), tier, bitrate,
                in.claim->isLossless == true ? "lossless" : "lossy");
}

std::string expectedApp(const Inputs& in) {
    if (in.process) {
        const std::string number = "PID " + std::to_string(in.process->pid);
        return line("App", in.process->appName.value_or(in.process->bundleID.value_or(number)),
                    in.process->bundleID, {}, "unknown");
    }
    if (in.nowPlaying && in.nowPlaying->appName) {
        return line("App", *in.nowPlaying->appName, in.nowPlaying->appBundleID, {}, "unknown");
    }
    return line("App", "\u2014", {}, {}, "unknown");
}

std::string expectedFormat(const char* title, const std::optional<AudioFormat>& format) {
    if (!format) return line(title, "\u2014", {}, {}, "unknown");
    const std::string bits = std::to_string(format->bitsPerChannel);
    const std::string kind = format->formatFlags % 2 == 1 ? "Float" : "Int";
    return line(title,
                kilohertz(format->sampleRate) + " · " + bits + "-bit · " +
                    std::to_string(format->channelsPerFrame) + "ch",
                kind + bits, megabits(format->sampleRate * format->bitsPerChannel * format->channelsPerFrame),
                "unknown");
}

std::string expectedDevice(const Inputs& in) {
    if (!in.state) return line("Output", "\u2014", {}, {}, "unknown");
    Text own;
    if (const auto& format = in.state->physicalFormat) {
        own = megabits(format->sampleRate * format->bitsPerChannel * format->channelsPerFrame);
    }
    const std::string& name = in.state->name;
    const std::string transport(rawValue(in.state->transportType));
    if (transport == "USB") {
        const bool named = in.state->usbInfo && in.state->usbInfo->productName;
        return line("USB device", named ? *in.state->usbInfo->productName : name, "USB Audio", own,
                    "lossless");
    }
    if (transport == "Bluetooth") {
        return line("Bluetooth wire", in.state->bluetoothInfo ? in.state->bluetoothInfo->name : name,
                    "AAC ~256 kbps cap", "\u2264 256 kbps", "lossy");
    }
    if (transport == "AirPlay") {
        return line("AirPlay wire", name, "ALAC 16/44.1 cap", "1.41 Mbps", "formatOnly");
    }
    if (transport == "HDMI") return line("HDMI wire", name, "EDID-advertised format", own, "lossless");
    if (transport == "Built-in") {
        return line("Built-in", name, "Internal codec, fixed rate", own, "formatOnly");
    }
    if (transport == "Aggregate") return line("Aggregate", name, "Aggregate", own, "unknown");
    if (transport == "Virtual") return line("Virtual device", name, "Virtual device", own, "unknown");
    if (transport == "DisplayPort") return line("DisplayPort", name, {}, own, "lossless");
    return line("Output", name, {}, own, "unknown");
}

std::vector<std::string> expectedFindings(const Inputs& in) {
    std::vector<std::string> titles;
    const auto mixer = in.state ? in.state->virtualFormat : std::nullopt;
    const auto device = in.state ? in.state->physicalFormat : std::nullopt;
    if (in.claim && mixer && in.claim->declaredRate && in.claim->declaredBitDepth) {
        if (mixer->sampleRate < *in.claim->declaredRate) titles.emplace_back("high: Source app downgraded");
        if (mixer->bitsPerChannel < *in.claim->declaredBitDepth) {
            titles.emplace_back("medium: Source app delivered lower bit depth");
        }
    }
    if (mixer && device) {
        if (mixer->sampleRate != device->sampleRate) titles.emplace_back("high: macOS is resampling");
        if (mixer->bitsPerChannel != device->bitsPerChannel) titles.emplace_back("medium: Bit depth changed");
    }
    if (in.claim && in.claim->declaredRate && in.state) {
        const std::string transport(rawValue(in.state->transportType));
        const double rate = *in.claim->declaredRate;
        if (transport == "Built-in" && rate > 48000) {
            titles.emplace_back("low: Internal speakers are fixed-rate");
        }
        if (transport == "AirPlay" && rate > 44100) titles.emplace_back("medium: AirPlay caps at 16/44.1");
        if (transport == "Bluetooth" && in.claim->isLossless == true) {
            titles.emplace_back("high: Bluetooth can't carry lossless");
        }
    }
    return titles;
}

std::string expectedVerdict(const Inputs& in) {
    if (!in.state || !in.state->virtualFormat || !in.state->physicalFormat) return "unknown";
    const std::string mixer = in.state->virtualFormat->summary();
    const std::string device = in.state->physicalFormat->summary();
    if (!in.state->isRunning) return "idle " + mixer;
    const bool same = in.state->virtualFormat->sampleRate == in.state->physicalFormat->sampleRate &&
                      in.state->virtualFormat->bitsPerChannel == in.state->physicalFormat->bitsPerChannel;
    return same ? "bitPerfect " + mixer : "resampling " + mixer + " to " + device;
}

std::string text(const Verdict& verdict) {
    return std::visit(
        Overloaded{
            [](const verdict::Idle& v) { return "idle " + v.format.summary(); },
            [](const verdict::BitPerfect& v) { return "bitPerfect " + v.format.summary(); },
            [](const verdict::Resampling& v) {
                return "resampling " + v.virtualFormat.summary() + " to " + v.physicalFormat.summary();
            },
            [](const verdict::Unknown&) { return std::string("unknown"); },
            [](const verdict::Altered& altered) { return "altered " + altered.format.summary(); },
        },
        verdict);
}

std::string lineOf(const SignalStage& stage) {
    const std::vector<std::string> qualities = {"lossless", "formatOnly", "lossy", "unknown"};
    return line(stage.title, stage.primary, stage.secondary, stage.bitrate,
                qualities.at(static_cast<std::size_t>(stage.quality)));
}

std::vector<std::string> titlesOf(const SignalPathReport& report) {
    const std::vector<std::string> severities = {"low", "medium", "high"};
    std::vector<std::string> titles;
    for (const Diagnostic& finding : report.diagnostics) {
        titles.push_back(severities.at(static_cast<std::size_t>(finding.severity)) + ": " + finding.title);
    }
    return titles;
}

/// Returns whether the engine and the sentences above agree.
bool agrees(const Inputs& in) {
    const auto report = CauseEngine::evaluate(in.state, in.nowPlaying, in.process, in.claim);
    const std::vector<std::string> expected = {
        expectedSource(in), expectedApp(in),
        expectedFormat("HAL virtual", in.state ? in.state->virtualFormat : std::nullopt),
        expectedFormat("HAL physical", in.state ? in.state->physicalFormat : std::nullopt),
        expectedDevice(in)};
    std::vector<std::string> actual;
    for (const SignalStage& stage : report.stages) actual.push_back(lineOf(stage));
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(titlesOf(report), expectedFindings(in));
    EXPECT_EQ(text(report.verdict), expectedVerdict(in));
    return !testing::Test::HasFailure();
}

using FormatPair = std::pair<std::optional<AudioFormat>, std::optional<AudioFormat>>;

std::vector<std::optional<DeviceState>> states() {
    const AudioFormat mixer = floatFormat(48000);
    const std::vector<FormatPair> pairs = {
        {{}, {}},
        {mixer, {}},
        {{}, mixer},
        {mixer, mixer},
        {mixer, integerFormat(48000, 32, 8)},
        {mixer, integerFormat(48000, 24)},
        {mixer, integerFormat(44100, 32)},
        {floatFormat(44100), integerFormat(96000, 24)},
        {integerFormat(192000, 16), integerFormat(192000, 16)},
    };
    const std::vector<std::optional<USBDeviceInfo>> usb = {
        std::nullopt, USBDeviceInfo{"Maker", std::nullopt, "USB Audio", {}},
        USBDeviceInfo{"Maker", "Converter", "USB Audio", {}}};
    std::vector<std::optional<DeviceState>> all = {std::nullopt};
    for (const DeviceTransport transport : allDeviceTransports) {
        for (const auto& [virtualFormat, physicalFormat] : pairs) {
            for (const bool isRunning : {false, true}) {
                for (std::size_t info = 0; info < usb.size(); ++info) {
                    DeviceState state = test::device(transport, virtualFormat, physicalFormat);
                    state.isRunning = isRunning;
                    state.usbInfo = usb[info];
                    if (info == 1) state.bluetoothInfo = BluetoothDeviceInfo{"Cans", {}, {}};
                    all.emplace_back(state);
                }
            }
        }
    }
    return all;
}

std::vector<std::optional<SourceClaim>> claims() {
    const std::vector<std::optional<double>> rates = {{}, 44100.0, 48000.0, 96000.0};
    const std::vector<std::optional<std::uint32_t>> depths = {{}, 16, 33};
    const std::vector<std::optional<bool>> lossless = {{}, false, true};
    const std::vector<std::pair<Text, Text>> tiers = {{{}, {}}, {"MAX", "HIGH"}, {"", "HIGH"}};
    std::vector<std::optional<SourceClaim>> all = {std::nullopt};
    std::size_t app = 0;
    for (const auto& rate : rates) {
        for (const auto& depth : depths) {
            for (const auto& isLossless : lossless) {
                for (const auto& [displayed, configured] : tiers) {
                    SourceClaim claim =
                        test::claim(allSourceApps.at(app++ % allSourceApps.size()), rate, depth);
                    claim.isLossless = isLossless;
                    claim.displayedTier = displayed;
                    claim.configuredTier = configured;
                    all.emplace_back(claim);
                }
            }
        }
    }
    return all;
}

/// A process and what plays; every pair of the two.
std::vector<std::pair<std::optional<AudioProcessInfo>, std::optional<NowPlayingInfo>>> players() {
    std::vector<std::optional<AudioProcessInfo>> processes = {std::nullopt};
    std::vector<std::optional<NowPlayingInfo>> playing = {std::nullopt};
    for (const Text& name : {Text(), Text("Player")}) {
        for (const Text& identifier : {Text(), Text("org.player")}) {
            processes.emplace_back(AudioProcessInfo{4711, identifier, name, true});
            NowPlayingInfo info;
            info.appName = name;
            info.appBundleID = identifier;
            playing.emplace_back(info);
        }
    }
    std::vector<std::pair<std::optional<AudioProcessInfo>, std::optional<NowPlayingInfo>>> all;
    for (const auto& process : processes) {
        for (const auto& info : playing) all.emplace_back(process, info);
    }
    return all;
}

TEST(Sweep, EveryDeviceUnderEveryClaim) {
    std::size_t count = 0;
    for (const auto& state : states()) {
        for (const auto& claim : claims()) {
            ++count;
            ASSERT_TRUE(agrees({state, {}, {}, claim})) << "combination " << count;
        }
    }
    EXPECT_EQ(count, 487U * 109U);
}

TEST(Sweep, EveryPlayerUnderEveryClaimOnEveryTransport) {
    std::size_t count = 0;
    for (const auto& [process, nowPlaying] : players()) {
        for (const auto& claim : claims()) {
            for (const DeviceTransport transport : allDeviceTransports) {
                ++count;
                const auto state = test::device(transport, floatFormat(48000), integerFormat(44100, 24));
                ASSERT_TRUE(agrees({state, nowPlaying, process, claim})) << "combination " << count;
            }
        }
    }
    EXPECT_EQ(count, 25U * 109U * 9U);
}

}  // namespace
}  // namespace purlock
