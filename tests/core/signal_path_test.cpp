#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::claim;
using test::floatFormat;
using test::integerFormat;
using Kind = SignalStage::Kind;
using Quality = SignalStage::Quality;
using Text = std::optional<std::string>;

struct Stage {
    Kind kind;
    std::string title;
    std::string primary;
    Text secondary;
    Text bitrate;
    Quality quality;

    bool operator==(const Stage&) const = default;
};

void PrintTo(const Stage& stage, std::ostream* out) {
    *out << static_cast<int>(stage.kind) << " | " << stage.title << " | " << stage.primary << " | "
         << stage.secondary.value_or("(absent)") << " | " << stage.bitrate.value_or("(absent)") << " | "
         << static_cast<int>(stage.quality);
}

std::vector<Stage> stagesOf(const SignalPathReport& report) {
    std::vector<Stage> stages;
    for (const SignalStage& s : report.stages) {
        stages.push_back({s.kind, s.title, s.primary, s.secondary, s.bitrate, s.quality});
    }
    return stages;
}

std::vector<std::string> titlesOf(const SignalPathReport& report) {
    std::vector<std::string> titles;
    for (const Diagnostic& diagnostic : report.diagnostics) titles.push_back(diagnostic.title);
    return titles;
}

using Titles = std::vector<std::string>;

TEST(Evaluate, NothingKnown) {
    const auto report = CauseEngine::evaluate({}, {}, {}, {});
    EXPECT_EQ(stagesOf(report),
              (std::vector<Stage>{
                  {Kind::source, "Source", "(no source identified)", {}, {}, Quality::unknown},
                  {Kind::app, "App", "\u2014", {}, {}, Quality::unknown},
                  {Kind::halVirtual, "HAL virtual", "\u2014", {}, {}, Quality::unknown},
                  {Kind::halPhysical, "HAL physical", "\u2014", {}, {}, Quality::unknown},
                  {Kind::device, "Output", "\u2014", {}, {}, Quality::unknown},
              }));
    EXPECT_TRUE(report.diagnostics.empty());
    EXPECT_EQ(report.verdict, Verdict(verdict::Unknown{}));
}

TEST(Evaluate, BitPerfectUsbConverter) {
    const AudioFormat format = integerFormat(96000, 24);
    DeviceState state = test::device(DeviceTransport::usb, format, format);
    state.usbInfo = USBDeviceInfo{"Maker", "Converter One", "USB Audio", {}};
    const auto report = CauseEngine::evaluate(state, {}, {}, {});
    const Stage hal{Kind::halVirtual, "HAL virtual", "96.0 kHz · 24-bit · 2ch",
                    "Int24",          "4.61 Mbps",   Quality::unknown};
    EXPECT_EQ(stagesOf(report)[2], hal);
    EXPECT_EQ(stagesOf(report)[3], (Stage{Kind::halPhysical, "HAL physical", hal.primary, hal.secondary,
                                          hal.bitrate, Quality::unknown}));
    EXPECT_EQ(stagesOf(report)[4], (Stage{Kind::device, "USB device", "Converter One", "USB Audio",
                                          "4.61 Mbps", Quality::lossless}));
    EXPECT_TRUE(report.diagnostics.empty());
    EXPECT_EQ(report.verdict, Verdict(verdict::BitPerfect{format}));

    state.isRunning = false;
    const auto idle = CauseEngine::evaluate(state, {}, {}, {});
    EXPECT_EQ(idle.verdict, Verdict(verdict::Idle{format}));
    EXPECT_EQ(stagesOf(idle), stagesOf(report));
}

struct SourceRow {
    const char* name;
    std::optional<SourceClaim> claim;
    std::optional<NowPlayingInfo> nowPlaying;
    Stage expected;
};

SourceClaim claimWith(SourceApp app, Text displayed, Text configured, std::optional<bool> lossless) {
    SourceClaim result = claim(app, {}, {});
    result.displayedTier = std::move(displayed);
    result.configuredTier = std::move(configured);
    result.isLossless = lossless;
    return result;
}

NowPlayingInfo playing(Text appName, Text bundleID) {
    NowPlayingInfo info;
    info.title = "Song";
    info.appName = std::move(appName);
    info.appBundleID = std::move(bundleID);
    return info;
}

TEST(Evaluate, SourceStage) {
    const auto source = [](std::string primary, Text secondary, Text bitrate, Quality quality) {
        return Stage{Kind::source,         "Source",           std::move(primary),
                     std::move(secondary), std::move(bitrate), quality};
    };
    const auto tidal = [](Text displayed, Text configured, std::optional<bool> lossless = true) {
        return claimWith(SourceApp::tidal, std::move(displayed), std::move(configured), lossless);
    };
    const SourceRow rows[] = {
        {"Tidal", tidal({}, {}), {}, source("Tidal", {}, {}, Quality::lossless)},
        {"Apple Music",
         claimWith(SourceApp::appleMusic, {}, {}, true),
         {},
         source("Apple Music", {}, {}, Quality::lossless)},
        {"Spotify",
         claimWith(SourceApp::spotify, {}, {}, false),
         {},
         source("Spotify", {}, {}, Quality::lossy)},
        {"Qobuz", claimWith(SourceApp::qobuz, {}, {}, true), {}, source("Qobuz", {}, {}, Quality::lossless)},
        {"another", claimWith(SourceApp::other, {}, {}, {}), {}, source("\u2014", {}, {}, Quality::lossy)},
        {"displayed tier first", tidal("MAX", "HIGH"), {}, source("Tidal", "MAX", {}, Quality::lossless)},
        {"configured tier next", tidal({}, "HIGH"), {}, source("Tidal", "HIGH", {}, Quality::lossless)},
        {"empty displayed tier is passed over",
         tidal("", "HIGH"),
         {},
         source("Tidal", "HIGH", {}, Quality::lossless)},
        {"both empty", tidal("", ""), {}, source("Tidal", {}, {}, Quality::lossless)},
        {"lossy", tidal({}, {}, false), {}, source("Tidal", {}, {}, Quality::lossy)},
        {"not said counts as lossy", tidal({}, {}, {}), {}, source("Tidal", {}, {}, Quality::lossy)},
        {"bit rate, two channels assumed",
         claim(SourceApp::tidal, 96000, 24),
         {},
         source("Tidal", {}, "4.61 Mbps", Quality::lossy)},
        {"rate without depth",
         claim(SourceApp::tidal, 96000, {}),
         {},
         source("Tidal", {}, {}, Quality::lossy)},
        {"depth without rate", claim(SourceApp::tidal, {}, 24), {}, source("Tidal", {}, {}, Quality::lossy)},
        {"the claim beats what plays", tidal({}, {}), playing("Player", {}),
         source("Tidal", {}, {}, Quality::lossless)},
        {"an application without a claim",
         {},
         playing("Player", "org.player"),
         source("Player", "(source quality not detected)", {}, Quality::unknown)},
        {"something plays, no name",
         {},
         playing({}, "org.player"),
         source("(no source identified)", {}, {}, Quality::unknown)},
    };
    for (const SourceRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(stagesOf(CauseEngine::evaluate({}, row.nowPlaying, {}, row.claim))[0], row.expected);
    }
}

struct AppRow {
    const char* name;
    std::optional<AudioProcessInfo> process;
    std::optional<NowPlayingInfo> nowPlaying;
    Stage expected;
};

TEST(Evaluate, AppStage) {
    const auto app = [](std::string primary, Text secondary) {
        return Stage{Kind::app, "App", std::move(primary), std::move(secondary), {}, Quality::unknown};
    };
    const auto process = [](Text appName, Text bundleID) {
        return AudioProcessInfo{4711, std::move(bundleID), std::move(appName), true};
    };
    const AppRow rows[] = {
        {"name and identifier", process("Player", "org.player"), {}, app("Player", "org.player")},
        {"name only", process("Player", {}), {}, app("Player", {})},
        {"identifier only stands on both lines",
         process({}, "org.player"),
         {},
         app("org.player", "org.player")},
        {"neither", process({}, {}), {}, app("PID 4711", {})},
        {"an empty name is a name", process("", "org.player"), {}, app("", "org.player")},
        {"a negative process identifier", AudioProcessInfo{-1, {}, {}, true}, {}, app("PID -1", {})},
        {"the process beats what plays", process({}, {}), playing("Other", "org.other"), app("PID 4711", {})},
        {"no process", {}, playing("Other", "org.other"), app("Other", "org.other")},
        {"no process, no identifier", {}, playing("Other", {}), app("Other", {})},
        {"no process, no name hides the identifier", {}, playing({}, "org.other"), app("\u2014", {})},
        {"nothing", {}, {}, app("\u2014", {})},
    };
    for (const AppRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(stagesOf(CauseEngine::evaluate({}, row.nowPlaying, row.process, {}))[1], row.expected);
    }
}

struct LinkRow {
    DeviceTransport transport;
    const char* title;
    const char* primary;
    Text secondary;
    Text bitrate;
    Text bitrateWithoutFormat;
    Quality quality;
};

TEST(Evaluate, DeviceStage) {
    const Text own = "2.30 Mbps";  // 48 kHz, 24 bits, two channels
    const LinkRow rows[] = {
        {DeviceTransport::usb, "USB device", "Desk", "USB Audio", own, {}, Quality::lossless},
        {DeviceTransport::bluetooth, "Bluetooth wire", "Desk", "AAC ~256 kbps cap", "\u2264 256 kbps",
         "\u2264 256 kbps", Quality::lossy},
        {DeviceTransport::airplay, "AirPlay wire", "Desk", "ALAC 16/44.1 cap", "1.41 Mbps", "1.41 Mbps",
         Quality::formatOnly},
        {DeviceTransport::hdmi, "HDMI wire", "Desk", "EDID-advertised format", own, {}, Quality::lossless},
        {DeviceTransport::builtIn,
         "Built-in",
         "Desk",
         "Internal codec, fixed rate",
         own,
         {},
         Quality::formatOnly},
        {DeviceTransport::aggregate, "Aggregate", "Desk", "Aggregate", own, {}, Quality::unknown},
        {DeviceTransport::virtualDevice,
         "Virtual device",
         "Desk",
         "Virtual device",
         own,
         {},
         Quality::unknown},
        {DeviceTransport::displayPort, "DisplayPort", "Desk", {}, own, {}, Quality::lossless},
        {DeviceTransport::unknown, "Output", "Desk", {}, own, {}, Quality::unknown},
    };
    ASSERT_EQ(std::size(rows), allDeviceTransports.size());
    for (const LinkRow& row : rows) {
        SCOPED_TRACE(row.title);
        const auto last = [&](std::optional<AudioFormat> physical) {
            return stagesOf(CauseEngine::evaluate(test::device(row.transport, {}, physical), {}, {}, {}))[4];
        };
        EXPECT_EQ(last(integerFormat(48000, 24)),
                  (Stage{Kind::device, row.title, row.primary, row.secondary, row.bitrate, row.quality}));
        EXPECT_EQ(last({}), (Stage{Kind::device, row.title, row.primary, row.secondary,
                                   row.bitrateWithoutFormat, row.quality}));
    }
}

struct NameRow {
    const char* name;
    DeviceTransport transport;
    std::optional<USBDeviceInfo> usb;
    std::optional<BluetoothDeviceInfo> bluetooth;
    const char* primary;
};

TEST(Evaluate, DeviceName) {
    const USBDeviceInfo named{"Maker", "Converter", "USB Audio", {}};
    const USBDeviceInfo nameless{"Maker", {}, "USB Audio", {}};
    const USBDeviceInfo emptyName{"Maker", "", "USB Audio", {}};
    const BluetoothDeviceInfo cans{"Cans", {}, {}};
    const BluetoothDeviceInfo unnamed{"", {}, {}};
    const NameRow rows[] = {
        {"USB with a product name", DeviceTransport::usb, named, {}, "Converter"},
        {"USB with an empty one, which is one", DeviceTransport::usb, emptyName, {}, ""},
        {"USB without one", DeviceTransport::usb, nameless, {}, "Desk"},
        {"USB without information", DeviceTransport::usb, {}, {}, "Desk"},
        {"Bluetooth with information", DeviceTransport::bluetooth, {}, cans, "Cans"},
        {"Bluetooth with an empty name, which is one", DeviceTransport::bluetooth, {}, unnamed, ""},
        {"Bluetooth without", DeviceTransport::bluetooth, {}, {}, "Desk"},
        {"USB information elsewhere", DeviceTransport::hdmi, named, {}, "Desk"},
        {"Bluetooth information elsewhere", DeviceTransport::builtIn, {}, cans, "Desk"},
        {"Bluetooth information on USB", DeviceTransport::usb, {}, cans, "Desk"},
        {"USB information on Bluetooth", DeviceTransport::bluetooth, named, {}, "Desk"},
    };
    for (const NameRow& row : rows) {
        SCOPED_TRACE(row.name);
        DeviceState state = test::device(row.transport, {}, {});
        state.usbInfo = row.usb;
        state.bluetoothInfo = row.bluetooth;
        EXPECT_EQ(stagesOf(CauseEngine::evaluate(state, {}, {}, {}))[4].primary, row.primary);
    }
}

struct VerdictRow {
    const char* name;
    std::optional<DeviceState> state;
    Verdict expected;
};

TEST(Evaluate, Verdicts) {
    const AudioFormat mixer = floatFormat(48000);
    const AudioFormat slower = integerFormat(44100, 24);
    const auto usb = [](std::optional<AudioFormat> v, std::optional<AudioFormat> p, bool isRunning = true) {
        DeviceState state = test::device(DeviceTransport::usb, v, p);
        state.isRunning = isRunning;
        return state;
    };
    const VerdictRow rows[] = {
        {"no device", {}, verdict::Unknown{}},
        {"no formats", usb({}, {}), verdict::Unknown{}},
        {"no virtual format", usb({}, slower), verdict::Unknown{}},
        {"no physical format", usb(mixer, {}), verdict::Unknown{}},
        {"not running, no formats", usb({}, {}, false), verdict::Unknown{}},
        {"not running", usb(mixer, mixer, false), verdict::Idle{mixer}},
        {"not running, formats differ", usb(mixer, slower, false), verdict::Idle{mixer}},
        {"equal", usb(mixer, mixer), verdict::BitPerfect{mixer}},
        {"float against integer", usb(mixer, integerFormat(48000, 32)), verdict::BitPerfect{mixer}},
        {"channels differ", usb(mixer, floatFormat(48000, 32, 8)), verdict::BitPerfect{mixer}},
        {"identifier differs", usb(mixer, AudioFormat{48000, 32, 2, 9, 7}), verdict::BitPerfect{mixer}},
        {"rate differs", usb(mixer, floatFormat(44100)), verdict::Resampling{mixer, floatFormat(44100)}},
        {"rate differs by a hair", usb(mixer, floatFormat(48000.001)),
         verdict::Resampling{mixer, floatFormat(48000.001)}},
        {"depth differs", usb(mixer, integerFormat(48000, 24)),
         verdict::Resampling{mixer, integerFormat(48000, 24)}},
        {"both differ", usb(mixer, slower), verdict::Resampling{mixer, slower}},
    };
    for (const VerdictRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(CauseEngine::evaluate(row.state, {}, {}, {}).verdict, row.expected);
        EXPECT_EQ(CauseEngine::evaluate(row.state, {}, {}, claim(SourceApp::tidal, 192000, 24)).verdict,
                  row.expected)
            << "a claim never changes the verdict";
        EXPECT_EQ(deviceVerdict(row.state), row.expected);
    }
}

struct FindingsRow {
    const char* name;
    std::optional<DeviceState> state;
    std::optional<SourceClaim> claim;
    Titles expected;
};

TEST(Evaluate, FindingsInTheirOrder) {
    SourceClaim lossless = claim(SourceApp::tidal, 96000, 48);
    lossless.isLossless = true;
    const auto converting = [](DeviceTransport transport) {
        return test::device(transport, floatFormat(48000), integerFormat(44100, 24));
    };
    const Titles all = {"Source app downgraded", "Source app delivered lower bit depth",
                        "macOS is resampling", "Bit depth changed"};
    const auto allAnd = [&](const char* last) {
        Titles titles = all;
        titles.emplace_back(last);
        return titles;
    };
    const FindingsRow rows[] = {
        {"no claim", converting(DeviceTransport::builtIn), {}, {"macOS is resampling", "Bit depth changed"}},
        {"USB", converting(DeviceTransport::usb), lossless, all},
        {"built-in", converting(DeviceTransport::builtIn), lossless,
         allAnd("Internal speakers are fixed-rate")},
        {"AirPlay", converting(DeviceTransport::airplay), lossless, allAnd("AirPlay caps at 16/44.1")},
        {"Bluetooth", converting(DeviceTransport::bluetooth), lossless,
         allAnd("Bluetooth can't carry lossless")},
        {"no device", {}, lossless, {}},
        {"formats unknown",
         test::device(DeviceTransport::builtIn, {}, {}),
         lossless,
         {"Internal speakers are fixed-rate"}},
    };
    for (const FindingsRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(titlesOf(CauseEngine::evaluate(row.state, {}, {}, row.claim)), row.expected);
    }
}

TEST(Evaluate, BuiltInSpeakersUnderAHighResolutionClaim) {
    const AudioFormat format = floatFormat(48000);
    const auto report = CauseEngine::evaluate(test::device(DeviceTransport::builtIn, format, format), {}, {},
                                              claim(SourceApp::tidal, 96000, 24));
    EXPECT_EQ(stagesOf(report)[4].quality, Quality::formatOnly);
    EXPECT_EQ(stagesOf(report)[4].secondary, "Internal codec, fixed rate");
    EXPECT_EQ(titlesOf(report), (Titles{"Source app downgraded", "Internal speakers are fixed-rate"}));
}

}  // namespace
}  // namespace purlock
