#include <gtest/gtest.h>
#include <poll.h>

#include <filesystem>
#include <iostream>

#include "audio/property_reader.h"
#include "base/text.h"
#include "core/cause_engine.h"
#include "platform/linux/words/linux_words.h"
#include "tests/host-linux/pipewire/hardware/audio_test.h"
#include "tests/host-linux/samples/captured_sink.h"
#include "tests/host-linux/samples/comparison.h"
#include "tests/support/temporary_folder.h"

// Each reason for which a rate is converted: it is brought about, the finding is read, what its fix says is
// done to the letter, and then the samples arrive unchanged.

namespace purlock::test {
namespace {

using namespace std::chrono_literals;

constexpr int seconds = 5;
constexpr std::uint32_t judgedSeed = 1;
constexpr std::uint32_t otherSeed = 2;
constexpr auto sampleFormat = SampleFormat::s16;

class Reasons : public AudioTest {
  protected:
    std::string noiseFile(int rate, std::uint32_t seed) {
        std::string path =
            session.folder() + "/noise-" + std::to_string(rate) + "-" + std::to_string(seed) + ".wav";
        if (!std::filesystem::exists(path)) writeFile(path, wavBytes(sound(rate, seed), sampleFormat, rate));
        return path;
    }
    static Sound sound(int rate, std::uint32_t seed) {
        return noise(sampleFormat, 2, static_cast<std::size_t>(rate) * seconds, seed);
    }

    bool makeDevice(int rate) {
        device.reset();
        device = CapturedSink::make(session, {.name = target, .format = sampleFormat, .rate = rate});
        return device && waitUntil([&] { return observer().deviceByUID(target) != 0; });
    }

    bool allow(const std::string& rates) {
        return runs("pw-metadata -n settings 0 clock.allowed-rates '" + rates + "'");
    }
    bool force(int rate) {
        return runs("pw-metadata -n settings 0 clock.force-rate " + std::to_string(rate));
    }

    /// As a person does in a terminal.
    bool runs(const std::string& command) { return session.run({"sh", "-c", command}).exitStatus == 0; }

    /// What the program says of the device that is played to.
    SignalPathReport report() {
        const auto picture = hardware->picture();
        const AudioObjectID id = observer().deviceByUID(target);
        DeviceState state;
        state.name = target;
        const auto streams = outputStreams(*picture, id);
        if (streams.empty()) return {};
        state.virtualFormat = streamFormat(*picture, streams[0], kAudioStreamPropertyVirtualFormat);
        state.physicalFormat = streamFormat(*picture, streams[0], kAudioStreamPropertyPhysicalFormat);
        state.isRunning = readFlag(*picture, id, kAudioDevicePropertyDeviceIsRunningSomewhere);
        state.mixerWork = picture->mixerWork(id);
        return CauseEngine::evaluate(state, {}, {}, {}, host_linux::linuxWords());
    }

    /// Plays noise to the device from its start.
    void startTrack(int rate) {
        session.process("judged").kill();
        waitUntil([this] { return std::holds_alternative<verdict::Idle>(report().verdict); });
        session.spawn("judged",
                      {"pw-play", "-P", "node.name=judged", "--target", target, noiseFile(rate, judgedSeed)});
    }

    /// Plays something else to another device. `properties` are of its stream.
    bool startOther(int rate, const std::string& properties) {
        other = CapturedSink::make(session, {.name = "other", .format = sampleFormat, .rate = rate});
        if (!other) return false;
        session.spawn("besides", {"pw-play", "-P", "node.name=besides " + properties, "--target", "other",
                                  noiseFile(rate, otherSeed)});
        return waitUntil([&] {
            const auto node = nodeNamed(session.dump(), "besides");
            return node.is_object() && node.value("/info/state"_json_pointer, "") == "running";
        });
    }

    /// The finding that a rate is converted, once it reads as expected; a failure says how it reads.
    Diagnostic findingOf(const std::string& reason) {
        Diagnostic found;
        const bool comes = waitUntil([&] {
            for (const Diagnostic& each : report().diagnostics) {
                if (each.title != "PipeWire is resampling") continue;
                found = each;
                return contains(each.cause, reason);
            }
            return false;
        });
        EXPECT_TRUE(comes) << "not \"" << reason << "\" but: " << found.cause;
        EXPECT_TRUE(std::holds_alternative<verdict::Resampling>(report().verdict));
        std::cout << found.cause << "\n  " << found.fix << "\n";
        return found;
    }

    /// True if the program says so, and the samples of the noise at this rate do.
    void expectBitPerfect(int rate) {
        EXPECT_TRUE(waitUntil([this] {
            return std::holds_alternative<verdict::BitPerfect>(report().verdict);
        })) << "verdict: "
            << report().verdict.index();
        EXPECT_EQ(outcomeNow(rate), Outcome::equal);
        EXPECT_TRUE(std::holds_alternative<verdict::BitPerfect>(report().verdict)) << "it stays";
        EXPECT_TRUE(report().diagnostics.empty());
    }

    /// The last frames of a sound.
    static Sound tail(const Sound& whole, std::size_t frames) {
        const std::size_t count = std::min(frames, whole.frames()) * static_cast<std::size_t>(whole.channels);
        return {whole.channels,
                {whole.samples.end() - static_cast<std::ptrdiff_t>(count), whole.samples.end()}};
    }

    Outcome outcomeNow(int rate) {
        ::poll(nullptr, 0, 500);  // a graph that starts may be late
        device->clear();
        ::poll(nullptr, 0, 400);
        return compare(sound(rate, judgedSeed), device->arrived(), {{0}, {1}}, 0);
    }

    std::string target = "device";
    std::unique_ptr<CapturedSink> device;
    std::unique_ptr<CapturedSink> other;
};

TEST_F(Reasons, PipeWireMayNotSwitch) {
    ASSERT_TRUE(makeDevice(44100));
    startTrack(44100);
    const Diagnostic finding = findingOf("PipeWire may not switch to 44.1 kHz.");
    EXPECT_NE(outcomeNow(44100), Outcome::equal) << "or there is nothing to be found";
    ASSERT_EQ(finding.command, "pw-metadata -n settings 0 clock.allowed-rates '[ 44100 48000 ]'");
    ASSERT_TRUE(contains(finding.fix, *finding.command));
    ASSERT_TRUE(runs(*finding.command));
    startTrack(44100);
    expectBitPerfect(44100);
}

TEST_F(Reasons, PipeWireMayNotSwitchUntilAFileSaysSo) {
    ASSERT_TRUE(makeDevice(44100));
    startTrack(44100);
    const std::string fix = findingOf("PipeWire may not switch to 44.1 kHz.").fix;
    const std::string file = "~/.config/";
    const std::string lead = ": context.properties";
    const std::size_t from = fix.find(file) + file.size();
    const std::size_t to = fix.find(lead);
    ASSERT_LT(from, to) << fix;
    const std::string name = fix.substr(from, to - from);
    const std::string line = fix.substr(to + 2);
    session.process("judged").kill();
    device.reset();
    hardware.reset();
    for (const char* const daemon : {"pipewire-pulse", "wireplumber", "pipewire"}) {
        session.process(daemon).kill();
    }
    writeFile(std::filesystem::path(session.folder()) / "config" / name, line + "\n");
    ASSERT_TRUE(session.startAudio()) << session.logs();
    hardware = std::make_unique<host_linux::PipeWireHardware>(applications);
    ASSERT_TRUE(makeDevice(44100));
    startTrack(44100);
    expectBitPerfect(44100);
}

TEST_F(Reasons, ASettingForcesARate) {
    ASSERT_TRUE(force(44100));
    ASSERT_TRUE(makeDevice(48000));
    startTrack(48000);
    const Diagnostic finding = findingOf("A setting forces PipeWire to 44.1 kHz (clock.force-rate).");
    EXPECT_NE(outcomeNow(48000), Outcome::equal) << "or there is nothing to be found";
    ASSERT_EQ(finding.command, "pw-metadata -n settings 0 clock.force-rate 0");
    ASSERT_TRUE(contains(finding.fix, *finding.command));
    ASSERT_TRUE(runs(*finding.command));
    startTrack(48000);
    expectBitPerfect(48000);
}

TEST_F(Reasons, AStreamForcesARate) {
    ASSERT_TRUE(allow("[ 44100 48000 ]"));
    ASSERT_TRUE(makeDevice(48000));
    ASSERT_TRUE(startOther(44100, "application.name=Forcer node.force-rate=44100"));
    startTrack(48000);
    const Diagnostic finding = findingOf("Forcer forces PipeWire to 44.1 kHz (node.force-rate).");
    EXPECT_NE(outcomeNow(48000), Outcome::equal) << "or there is nothing to be found";
    EXPECT_TRUE(finding.fix.starts_with("Quit Forcer,")) << finding.fix;
    EXPECT_EQ(finding.command, std::nullopt);
    session.process("besides").kill();
    startTrack(48000);
    expectBitPerfect(48000);
}

TEST_F(Reasons, AnotherStreamHoldsTheRate) {
    ASSERT_TRUE(allow("[ 44100 48000 ]"));
    ASSERT_TRUE(makeDevice(44100));
    ASSERT_TRUE(startOther(48000, "application.name=Holder"));
    startTrack(44100);
    const Diagnostic finding = findingOf("Holder keeps PipeWire at 48.0 kHz.");
    EXPECT_NE(outcomeNow(44100), Outcome::equal) << "or there is nothing to be found";
    EXPECT_EQ(finding.fix, "Stop Holder. Then start the track again.");
    session.process("besides").kill();
    startTrack(44100);
    expectBitPerfect(44100);
}

TEST_F(Reasons, TheDeviceIsSetToOneRate) {
    const std::string settings = session.folder() + "/home/.config/pipewire/pipewire.conf.d/sink.conf";
    writeFile(settings, "# audio.rate = 48000\n");
    ASSERT_TRUE(allow("[ 44100 48000 ]"));
    ASSERT_TRUE(makeDevice(48000));
    startTrack(44100);
    const Diagnostic finding = findingOf("The rate of this device is set to 48.0 kHz (audio.rate).");
    EXPECT_NE(outcomeNow(44100), Outcome::equal) << "or there is nothing to be found";
    ASSERT_TRUE(finding.command);
    EXPECT_TRUE(contains(session.run({"sh", "-c", *finding.command}).output, settings))
        << "the command finds the file";
    EXPECT_TRUE(contains(finding.fix, "change audio.rate to 44100 there")) << finding.fix;
    session.process("judged").kill();
    ASSERT_TRUE(makeDevice(44100));  // the device comes back with the changed setting
    startTrack(44100);
    expectBitPerfect(44100);
}

/// A recorder that calls itself a sink: it takes the one rate that it records, and no setting says so.
TEST_F(Reasons, TheDeviceCannot) {
    ASSERT_TRUE(allow("[ 44100 48000 ]"));
    target = "recorder";
    const std::string file = session.folder() + "/recorded.wav";
    session.spawn(target, {"pw-record", "-P", "media.class=Audio/Sink node.name=recorder", "--rate", "48000",
                           "--format", "s16", "--channels", "2", file});
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID(target) != 0; })) << session.logs();
    startTrack(44100);
    const Diagnostic finding = findingOf("This device can't run at 44.1 kHz.");
    EXPECT_TRUE(finding.fix.starts_with("There is nothing to set.")) << finding.fix;
    EXPECT_EQ(finding.command, std::nullopt);
    startTrack(48000);  // as a player does that converts by itself
    EXPECT_TRUE(waitUntil([this] { return std::holds_alternative<verdict::BitPerfect>(report().verdict); }));
    ::poll(nullptr, 0, 1200);
    const std::string recorded = contentsOf(file);
    constexpr std::size_t header = 44;
    ASSERT_GT(recorded.size(), header);
    const Sound arrived = soundFromBytes(recorded.substr(header), sampleFormat, 2);
    EXPECT_EQ(compare(sound(48000, judgedSeed), tail(arrived, 48000 / 3), {{0}, {1}}, 0), Outcome::equal);
}

}  // namespace
}  // namespace purlock::test
