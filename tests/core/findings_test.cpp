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
using Severity = Diagnostic::Severity;

struct Finding {
    Severity severity;
    std::string title;
    std::string cause;
    std::string fix;

    bool operator==(const Finding&) const = default;
};

void PrintTo(const Finding& finding, std::ostream* out) {
    *out << static_cast<int>(finding.severity) << " | " << finding.title << " | " << finding.cause << " | "
         << finding.fix;
}

using Findings = std::vector<Finding>;

Findings withoutIdentity(const std::vector<Diagnostic>& diagnostics) {
    Findings findings;
    for (const Diagnostic& d : diagnostics) findings.push_back({d.severity, d.title, d.cause, d.fix});
    return findings;
}

struct TierTexts {
    std::optional<std::string> displayed;
    std::optional<std::string> configured;
};

SourceClaim tidal(TierTexts tiers) {
    SourceClaim result = claim(SourceApp::tidal, 192000, 24);
    result.displayedTier = std::move(tiers.displayed);
    result.configuredTier = std::move(tiers.configured);
    return result;
}

Finding tidalDowngraded(const std::string& rate, const std::string& tier) {
    return {
        Severity::high, "Source app downgraded",
        "Tidal sent the OS " + rate + " but its UI claims " + tier +
            ". "
            "Likely causes: track isn't available in HiRes on Tidal, or your Tidal quality preference is set lower than MAX.",
        "Open Tidal \u2192 Settings \u2192 Streaming \u2192 set quality to MAX. "
        "If still down, the track isn't available in HiRes."};
}

Finding lowerBitDepth(const std::string& app, const std::string& declared, const std::string& seen) {
    return {Severity::medium, "Source app delivered lower bit depth",
            app + " advertised " + declared + "-bit but the OS sees " + seen + "-bit.",
            "Confirm the track has a higher-bit master available in this service."};
}

const Finding appleMusicDowngraded = {
    Severity::high, "Source app downgraded",
    "Apple Music delivered 44.1 kHz \u2014 lower than Hi-Res Lossless. "
    "Track may not have a Hi-Res master, or Music app is set to standard Lossless.",
    "Music \u2192 Settings \u2192 Playback \u2192 Audio Quality \u2192 Hi-Res Lossless. "
    "Note: not every track has a Hi-Res master."};
const Finding spotifyDowngraded = {Severity::high, "Source app downgraded",
                                   "Spotify is lossy by design; max is 320 kbps Ogg Vorbis.",
                                   "(no fix \u2014 Spotify doesn't offer lossless)"};
const Finding otherDowngraded = {
    Severity::high, "Source app downgraded", "Source app sent a lower rate than its claimed tier.",
    "Check the app's quality preference; the track may not be available at the higher tier."};

struct SourceRow {
    const char* name;
    std::optional<SourceClaim> claim;
    std::optional<AudioFormat> virtualFormat;
    Findings expected;
};

TEST(SourceVsHAL, Findings) {
    const AudioFormat cd = integerFormat(44100, 16);
    const SourceRow rows[] = {
        {"no claim", {}, cd, {}},
        {"no format", claim(SourceApp::tidal, 192000, 24), {}, {}},
        {"neither", {}, {}, {}},
        {"no rate", claim(SourceApp::tidal, {}, 24), cd, {}},
        {"no bit depth silences the rate too", claim(SourceApp::tidal, 192000, {}), cd, {}},
        {"Tidal, no tier known",
         tidal({}),
         cd,
         {tidalDowngraded("44.1 kHz", "MAX"), lowerBitDepth("Tidal", "24", "16")}},
        {"Tidal, displayed tier wins",
         tidal({"HI-RES", "LOSSLESS"}),
         integerFormat(48000, 24),
         {tidalDowngraded("48.0 kHz", "HI-RES")}},
        {"Tidal, configured tier next",
         tidal({{}, "LOSSLESS"}),
         integerFormat(48000, 24),
         {tidalDowngraded("48.0 kHz", "LOSSLESS")}},
        {"Tidal, an empty displayed tier is present",
         tidal({"", "LOSSLESS"}),
         integerFormat(48000, 24),
         {tidalDowngraded("48.0 kHz", "")}},
        {"Tidal, rate below a kilohertz",
         tidal({}),
         integerFormat(999.9, 24),
         {tidalDowngraded("999 Hz", "MAX")}},
        {"Apple Music", claim(SourceApp::appleMusic, 96000, 16), cd, {appleMusicDowngraded}},
        {"Spotify", claim(SourceApp::spotify, 96000, 16), cd, {spotifyDowngraded}},
        {"Qobuz", claim(SourceApp::qobuz, 96000, 16), cd, {otherDowngraded}},
        {"another application", claim(SourceApp::other, 96000, 16), cd, {otherDowngraded}},
        {"equal rate", claim(SourceApp::tidal, 44100, 16), cd, {}},
        {"lower rate", claim(SourceApp::tidal, 22050, 16), cd, {}},
        {"a hair above", claim(SourceApp::qobuz, 44100.001, 16), cd, {otherDowngraded}},
        {"depth alone",
         claim(SourceApp::appleMusic, 44100, 24),
         cd,
         {lowerBitDepth("Apple Music", "24", "16")}},
        {"depth, Spotify", claim(SourceApp::spotify, 44100, 17), cd, {lowerBitDepth("Spotify", "17", "16")}},
        {"depth, Qobuz", claim(SourceApp::qobuz, 44100, 24), cd, {lowerBitDepth("Qobuz", "24", "16")}},
        {"depth, another", claim(SourceApp::other, 44100, 24), cd, {lowerBitDepth("\u2014", "24", "16")}},
        {"depth is unsigned",
         claim(SourceApp::tidal, 44100, 4294967295),
         cd,
         {lowerBitDepth("Tidal", "4294967295", "16")}},
        {"lower depth", claim(SourceApp::tidal, 44100, 8), cd, {}},
        {"lower depth, higher rate", claim(SourceApp::spotify, 48000, 8), cd, {spotifyDowngraded}},
    };
    for (const SourceRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(withoutIdentity(CauseEngine::sourceVsHALDiagnostics(row.claim, row.virtualFormat)),
                  row.expected);
    }
}

Finding resampling(const std::string& from, const std::string& to) {
    return {Severity::high, "macOS is resampling",
            "App is sending " + from + " but the device is locked at " + to +
                ". CoreAudio's HAL is converting between them.",
            "Open Audio MIDI Setup, select this device, and set its Format to " + from +
                ". Or enable an app that auto-matches the rate (LosslessSwitcher, Audirvana)."};
}

Finding depthChanged(const std::string& from, const std::string& to) {
    return {
        Severity::medium, "Bit depth changed",
        "App format is " + from + "; device physical is " + to + ". CoreAudio is converting representations.",
        "Usually inaudible if both are \u226516-bit integer or float. "
        "Worth investigating only if app expects native bit-perfect."};
}

struct ResamplingRow {
    const char* name;
    std::optional<AudioFormat> virtualFormat;
    std::optional<AudioFormat> physicalFormat;
    Findings expected;
};

TEST(HalResampling, Findings) {
    const ResamplingRow rows[] = {
        {"neither", {}, {}, {}},
        {"no virtual format", {}, integerFormat(44100, 16), {}},
        {"no physical format", integerFormat(44100, 16), {}, {}},
        {"equal", integerFormat(44100, 16), integerFormat(44100, 16), {}},
        {"float mixer into a 24-bit device",
         floatFormat(48000),
         integerFormat(44100, 24),
         {resampling("48.0 kHz", "44.1 kHz"), depthChanged("32-bit Float32", "24-bit Int24")}},
        {"rate up", floatFormat(44100), floatFormat(96000), {resampling("44.1 kHz", "96.0 kHz")}},
        {"rate differs by a hair",
         floatFormat(44100),
         floatFormat(44100.5),
         {resampling("44.1 kHz", "44.1 kHz")}},
        {"depth up",
         integerFormat(44100, 16),
         integerFormat(44100, 24),
         {depthChanged("16-bit Int16", "24-bit Int24")}},
        {"channels only", integerFormat(44100, 16, 2), integerFormat(44100, 16, 8), {}},
        {"float against integer of equal depth", floatFormat(44100, 32), integerFormat(44100, 32), {}},
        {"format identifier only",
         integerFormat(44100, 16),
         AudioFormat{44100, 16, 2, 12, fourCharCode("ac-3")},
         {}},
    };
    for (const ResamplingRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto actual = [&](std::optional<SourceClaim> source) {
            return withoutIdentity(
                CauseEngine::halResamplingDiagnostics(row.virtualFormat, row.physicalFormat, source));
        };
        EXPECT_EQ(actual({}), row.expected);
        EXPECT_EQ(actual(claim(SourceApp::tidal, 192000, 24)), row.expected) << "the claim is not consulted";
    }
}

const Finding fixedRate = {
    Severity::low, "Internal speakers are fixed-rate",
    "MacBook internal speakers run at a fixed sample rate (typically 48 kHz). "
    "Anything else gets resampled in hardware.",
    "Use a DAC for any HiRes verification. Internal speakers can't deliver bit-perfect for >48k sources."};

Finding airPlay(const std::string& rate) {
    return {Severity::medium, "AirPlay caps at 16/44.1",
            "AirPlay 2 transports lossless ALAC at 16-bit/44.1 kHz max. Your source claims " + rate +
                " but the wire downsamples it.",
            "Use a wired/USB DAC for HiRes. AirPlay tops out at CD quality."};
}

Finding bluetooth(const std::string& app) {
    return {
        Severity::high, "Bluetooth can't carry lossless",
        "Your output is Bluetooth (AirPods or similar). "
        "The BT audio link uses lossy AAC/SBC compression \u2014 no Bluetooth profile carries lossless audio. "
        "Whatever " +
            app + " sends, the wire downgrades it.",
        "Use a wired DAC or AirPlay 2 (lossless 16/44.1) for lossless playback. "
        "AirPods Max wired mode also works."};
}

SourceClaim withLossless(SourceClaim source, std::optional<bool> lossless) {
    source.isLossless = lossless;
    return source;
}

struct CapRow {
    const char* name;
    DeviceTransport transport;
    std::optional<SourceClaim> source;
    Findings expected;
};

TEST(TransportCap, Findings) {
    const auto lossless = [](SourceApp app) { return withLossless(claim(app, 44100, 16), true); };
    const auto rate = [](double hertz) { return claim(SourceApp::tidal, hertz, {}); };
    const CapRow rows[] = {
        {"built-in at the threshold", DeviceTransport::builtIn, rate(48000), {}},
        {"built-in above it", DeviceTransport::builtIn, rate(48000.001), {fixedRate}},
        {"built-in far above it", DeviceTransport::builtIn, rate(96000), {fixedRate}},
        {"built-in below it", DeviceTransport::builtIn, rate(44100), {}},
        {"AirPlay at the threshold", DeviceTransport::airplay, rate(44100), {}},
        {"AirPlay above it", DeviceTransport::airplay, rate(44100.001), {airPlay("44.1 kHz")}},
        {"AirPlay far above it", DeviceTransport::airplay, rate(192000), {airPlay("192.0 kHz")}},
        {"AirPlay below it", DeviceTransport::airplay, rate(22050), {}},
        {"Bluetooth, Tidal", DeviceTransport::bluetooth, lossless(SourceApp::tidal), {bluetooth("Tidal")}},
        {"Bluetooth, Apple Music",
         DeviceTransport::bluetooth,
         lossless(SourceApp::appleMusic),
         {bluetooth("Apple Music")}},
        {"Bluetooth, Spotify",
         DeviceTransport::bluetooth,
         lossless(SourceApp::spotify),
         {bluetooth("Spotify")}},
        {"Bluetooth, Qobuz", DeviceTransport::bluetooth, lossless(SourceApp::qobuz), {bluetooth("Qobuz")}},
        {"Bluetooth, another", DeviceTransport::bluetooth, lossless(SourceApp::other), {bluetooth("\u2014")}},
        {"Bluetooth, lossy", DeviceTransport::bluetooth, withLossless(rate(44100), false), {}},
        {"Bluetooth, not said", DeviceTransport::bluetooth, rate(192000), {}},
        {"Bluetooth, lossless without a rate",
         DeviceTransport::bluetooth,
         withLossless(claim(SourceApp::tidal, {}, 16), true),
         {}},
        {"built-in without a rate", DeviceTransport::builtIn, claim(SourceApp::tidal, {}, 24), {}},
        {"AirPlay without a rate", DeviceTransport::airplay, claim(SourceApp::tidal, {}, 24), {}},
        {"USB", DeviceTransport::usb, withLossless(rate(192000), true), {}},
        {"HDMI", DeviceTransport::hdmi, withLossless(rate(192000), true), {}},
        {"aggregate", DeviceTransport::aggregate, withLossless(rate(192000), true), {}},
        {"virtual", DeviceTransport::virtualDevice, withLossless(rate(192000), true), {}},
        {"DisplayPort", DeviceTransport::displayPort, withLossless(rate(192000), true), {}},
        {"unknown", DeviceTransport::unknown, withLossless(rate(192000), true), {}},
    };
    for (const CapRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto actual = [&](std::optional<AudioFormat> physical) {
            return withoutIdentity(CauseEngine::transportCapDiagnostics(row.transport, physical, row.source));
        };
        EXPECT_EQ(actual({}), row.expected);
        EXPECT_EQ(actual(integerFormat(48000, 24)), row.expected) << "the physical format is not consulted";
    }
    for (const DeviceTransport transport : allDeviceTransports) {
        EXPECT_TRUE(CauseEngine::transportCapDiagnostics(transport, {}, {}).empty())
            << "no claim, no finding";
    }
}

TEST(Findings, EachHasAnIdentityOfItsOwn) {
    const auto findings = CauseEngine::sourceVsHALDiagnostics(tidal({}), integerFormat(44100, 16));
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_NE(findings[0].id, findings[1].id);
}

}  // namespace
}  // namespace purlock
