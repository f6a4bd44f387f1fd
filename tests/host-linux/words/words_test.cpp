#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/cause_engine.h"
#include "platform/linux/words/linux_words.h"
#include "tests/support/panel_states.h"
#include "tests/support/view_reading.h"
#include "ui/menubar_panel.h"

namespace purlock {
namespace {

using host_linux::linuxWords;
using Entries = std::vector<std::pair<std::string, std::string>>;

Entries entriesOf(const SystemWords& words) {
    Entries entries;
    forEachEntry(words, [&entries](const std::string& name, const std::string& text) {
        entries.emplace_back(name, text);
    });
    return entries;
}

/// The places of a text: "{from}", "{to}".
std::set<std::string> placesIn(const std::string& text) {
    std::set<std::string> places;
    for (std::size_t open = text.find('{'); open != std::string::npos; open = text.find('{', open + 1)) {
        const std::string name = text.substr(open + 1, text.find('}', open) - open - 1);
        if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos) places.insert(name);
    }
    return places;
}

/// No word of another system.
void expectOfLinux(const std::string& text) {
    for (const char* const word : {"macOS", "CoreAudio", "Audio MIDI", "MacBook", "AirPods",
                                   "LosslessSwitcher", "Audirvana", "Apple Music"}) {
        EXPECT_FALSE(contains(text, word)) << word << " in: " << text;
    }
}

void expectWhole(const std::string& text) {
    EXPECT_EQ(placesIn(text), std::set<std::string>()) << "not filled: " << text;
}

// Reasons that macOS does not tell, and what only some of them need.
const std::set<std::string> withoutCommand = {"deviceCannot.command", "rateForcedByStream.command",
                                              "heldByStream.command"};

TEST(LinuxWords, SayEveryEntryInTheirOwnWay) {
    const Entries macOS = entriesOf({});
    const Entries ours = entriesOf(linuxWords());
    ASSERT_EQ(macOS.size(), ours.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        const auto& [name, text] = ours[i];
        SCOPED_TRACE(name);
        ASSERT_EQ(name, macOS[i].first);
        EXPECT_EQ(text.empty(), withoutCommand.contains(name));
        EXPECT_NE(text.empty() ? "-" : text, macOS[i].second);
        for (const std::string& place : placesIn(macOS[i].second)) {
            // The fix of an unknown reason names no rate: none is known to help.
            if (name == "resamplingFix") continue;
            EXPECT_TRUE(placesIn(text).contains(place)) << place << " is lost in: " << text;
        }
        expectOfLinux(text);
    }
    EXPECT_NE(linuxWords().isBuiltInFixed, SystemWords{}.isBuiltInFixed);
}

TEST(MacOSWords, HaveNoReasonsAndNoCommands) {
    forEachEntry({}, [](const std::string& name, const std::string& text) {
        const bool isReason = name.find('.') != std::string::npos;
        const bool needsKnowledge = isReason || name == "resamplingTwiceCause" || name == "unseenDetail" ||
                                    name.starts_with("bluetoothCodec");
        EXPECT_EQ(text.empty(), needsKnowledge) << name;
    });
}

TEST(Filling, PutsInOnceWhatIsNamed) {
    EXPECT_EQ(fill("{a} and {b}", {{"a", "{b}"}, {"b", "c"}}), "{b} and c");
    EXPECT_EQ(fill("x = { y = [ {a} ] }", {{"a", "1 2"}}), "x = { y = [ 1 2 ] }");
    EXPECT_EQ(fill("{unknown} {", {{"a", "1"}}), "{unknown} {");
    EXPECT_EQ(fill("", {{"a", "1"}}), "");
}

// Every text that a report or the panel can show.

const std::vector<std::optional<RateReason>> reasons = {
    std::nullopt,
    rate_reason::DeviceCannot{},
    rate_reason::DeviceIsSet{},
    rate_reason::NotAllowed{{48000}},
    rate_reason::Forced{},
    rate_reason::ForcedByStream{"mpv"},
    rate_reason::HeldByStream{"Browser {from}"},
};

std::vector<Alteration> everyAlteration() {
    return {alteration::StreamVolume{"mpv", 0.5},
            alteration::StreamMute{"mpv"},
            alteration::Channels{"mpv", 1, 2},
            alteration::Channels{"mpv", 2, 2},
            alteration::Filter{"Equalizer"},
            alteration::Mixed{{"mpv", "Browser"}},
            alteration::DeviceVolume{"DAC", 0.5},
            alteration::DeviceMute{"DAC"},
            alteration::Clock{"DAC", "HDMI"},
            alteration::Dither{"DAC"},
            alteration::Elsewhere{"mpv", "DAC", "HDMI"}};
}

AudioFormat pcm(double rate, std::uint32_t bits) {
    return {rate, bits, 2, 12, formatLinearPCM};
}

void expectAllOfLinux(const View& view) {
    for (const std::string& text : test::textsOf(view)) expectOfLinux(text);
    test::visit(view, [](const View& element) {
        expectOfLinux(element.help);
        expectOfLinux(element.label);
    });
}

SourceClaim claimOf(SourceApp app, double rate) {
    SourceClaim claim;
    claim.app = app;
    claim.declaredRate = rate;
    claim.declaredBitDepth = 24;
    claim.isLossless = true;
    return claim;
}

DeviceState deviceOf(DeviceTransport transport) {
    DeviceState state;
    state.name = "DAC";
    state.transportType = transport;
    return state;
}

void expectReportOfLinux(const DeviceState& state, const SourceClaim& claim) {
    const SystemWords words = linuxWords();
    const auto report = CauseEngine::evaluate(state, {}, {}, claim, words);
    for (const SignalStage& stage : report.stages) {
        expectOfLinux(stage.primary + stage.secondary.value_or("") + stage.bitrate.value_or(""));
    }
    for (const Diagnostic& finding : report.diagnostics) {
        if (claim.app == SourceApp::appleMusic && finding.title == "Source app downgraded") continue;
        expectOfLinux(finding.title + "\n" + finding.cause + "\n" + finding.fix);
        if (finding.title == words.resamplingTitle) continue;  // an application's name has braces here
        expectWhole(finding.title + finding.cause + finding.fix);
    }
    expectOfLinux(verdictDetail(report.verdict, words));
}

TEST(Reports, SpeakOfLinuxAlone) {
    for (const DeviceTransport transport : allDeviceTransports) {
        for (const SourceApp app : allSourceApps) {
            if (app == SourceApp::appleMusic) continue;  // its name is the service's own
            for (const auto& reason : reasons) {
                for (const bool knowsCodec : {false, true}) {
                    DeviceState state = deviceOf(transport);
                    state.virtualFormat = pcm(44100, 24);
                    state.physicalFormat = pcm(48000, 16);
                    state.isRunning = true;
                    state.mixerWork = MixerWork{everyAlteration(), {}, RateConversion{44100, 96000, reason}};
                    if (knowsCodec) state.mixerWork->linkCodec = "LDAC";
                    const SourceClaim claim = claimOf(app, 96000);
                    expectReportOfLinux(state, claim);
                    state.virtualFormat = state.physicalFormat;
                    expectReportOfLinux(state, claim);
                }
            }
        }
    }
}

TEST(PanelStates, SpeakOfLinuxAlone) {
    const auto states = test::panelStates(linuxWords());
    ASSERT_FALSE(states.empty());
    for (const test::PanelState& state : states) {
        SCOPED_TRACE(state.name);
        expectAllOfLinux(state.view);
    }
}

TEST(PanelStates, OfMacOSAreWhatThisWouldFind) {
    std::string all;
    for (const test::PanelState& state : test::panelStates()) {
        for (const std::string& text : test::textsOf(state.view)) all += text + "\n";
    }
    for (const char* const word : {"macOS", "CoreAudio", "Audio MIDI"}) {
        EXPECT_TRUE(contains(all, word)) << word;
    }
}

// What the texts read like.

Diagnostic rateFindingFor(RateConversion conversion, double to) {
    const MixerWork work{{}, {}, conversion};
    const auto found =
        CauseEngine::halResamplingDiagnostics(pcm(44100, 16), pcm(to, 16), {}, linuxWords(), work);
    return found.empty() ? Diagnostic{} : found.front();
}

TEST(RateFinding, SaysTheReasonAndTheFix) {
    const auto finding = rateFindingFor({44100, 48000, rate_reason::NotAllowed{{48000, 96000}}}, 48000);
    EXPECT_EQ(finding.title, "PipeWire is resampling");
    EXPECT_EQ(finding.cause,
              "The app sends 44.1 kHz, the device runs at 48.0 kHz. PipeWire converts between them. "
              "PipeWire may not switch to 44.1 kHz.");
    const std::string command = "pw-metadata -n settings 0 clock.allowed-rates '[ 44100 48000 96000 ]'";
    EXPECT_EQ(finding.command, command);
    EXPECT_EQ(
        finding.fix,
        "Run this in a terminal: " + command +
            " — then start the track again. "
            "To make it last, put this line into the file ~/.config/pipewire/pipewire.conf.d/rates.conf: context.properties = { default.clock.allowed-rates = [ 44100 48000 96000 ] }");
}

TEST(RateFinding, SaysWhatIsConvertedTwice) {
    const auto finding = rateFindingFor({44100, 48000, rate_reason::HeldByStream{"Browser"}}, 44100.5);
    EXPECT_EQ(finding.cause,
              "The app sends 44.1 kHz, PipeWire mixes at 48.0 kHz, the device runs at 44.1 kHz. "
              "The rate is converted twice. Browser keeps PipeWire at 48.0 kHz.");
    EXPECT_EQ(finding.fix, "Stop Browser. Then start the track again.");
    EXPECT_EQ(finding.command, std::nullopt);
}

TEST(RateFinding, OfAnUnknownReasonHasNoCommand) {
    const auto finding = rateFindingFor({44100, 48000, std::nullopt}, 48000);
    EXPECT_EQ(finding.fix, linuxWords().resamplingFix);
    EXPECT_EQ(finding.command, std::nullopt);
}

TEST(RateFinding, OfMacOSKeepsItsWordsWhateverIsKnown) {
    const MixerWork work{{}, {}, RateConversion{44100, 48000, rate_reason::Forced{}}};
    const auto found = CauseEngine::halResamplingDiagnostics(pcm(44100, 16), pcm(48000, 16), {}, {}, work);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].fix, fill(SystemWords{}.resamplingFix, {{"from", "44.1 kHz"}}));
    EXPECT_EQ(found[0].command, std::nullopt);
}

TEST(BuiltInOutput, IsNamedOnlyWhereItRunsBelowTheClaim) {
    const SourceClaim claim = claimOf(SourceApp::tidal, 96000);
    const auto findings = [&](std::optional<AudioFormat> physical) {
        return CauseEngine::transportCapDiagnostics(DeviceTransport::builtIn, physical, claim, linuxWords());
    };
    EXPECT_TRUE(findings(pcm(96000, 24)).empty());
    EXPECT_TRUE(findings(pcm(192000, 24)).empty());
    EXPECT_TRUE(findings({}).empty()) << "its rate is not known";
    ASSERT_EQ(findings(pcm(48000, 24)).size(), 1U);
    EXPECT_EQ(findings(pcm(48000, 24))[0].cause,
              "The built-in output runs at 48.0 kHz, so 96.0 kHz can't reach it unchanged.");
}

TEST(Bluetooth, NamesTheCodecWhereItIsKnown) {
    const SourceClaim claim = claimOf(SourceApp::other, 44100);
    DeviceState state = deviceOf(DeviceTransport::bluetooth);
    state.mixerWork = MixerWork{{}, "aptX HD", {}};
    const auto report = CauseEngine::evaluate(state, {}, {}, claim, linuxWords());
    EXPECT_EQ(report.stages.back().secondary, "aptX HD, lossy");
    EXPECT_EQ(report.stages.back().bitrate, std::nullopt);
    ASSERT_EQ(report.diagnostics.size(), 1U);
    EXPECT_EQ(report.diagnostics[0].cause,
              "Your output is Bluetooth. Its link carries the sound in aptX HD, which is lossy. "
              "Whatever the app sends, it does not arrive unchanged.");
}

}  // namespace
}  // namespace purlock
