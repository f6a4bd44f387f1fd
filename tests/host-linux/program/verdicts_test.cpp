#include <utility>

#include "tests/host-linux/program/program_test.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using test::signatureOf;
using test::timeUntil;
using test::waitUntil;

class Verdicts : public test::ProgramWithSoundTest {
  protected:
    std::string uid() const {
        const auto snapshot = program.snapshot();
        return snapshot.is_object() ? snapshot.value("/device/uid"_json_pointer, "") : "";
    }

    void report(const char* what, std::chrono::milliseconds time) {
        RecordProperty(what, static_cast<int>(time.count()));
        std::cout << what << ": " << time.count() << " ms\n";
    }
};

/// How often a `pw-dump --monitor` has seen a node run so far.
int timesSeenRunning(const std::string& log) {
    constexpr std::string_view word = "\"state\": \"running\"";
    const std::string text = test::contentsOf(log);
    int count = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

TEST_F(Verdicts, AStreamAtTheDevicesRateIsBitPerfectAtOnce) {
    program.start();
    ASSERT_TRUE(program.awaitVerdict("idle"));
    session.spawn("monitor", {"stdbuf", "-oL", "pw-dump", "--monitor"});
    const std::string monitorLog = session.folder() + "/log-monitor";
    ASSERT_TRUE(waitUntil([&] { return test::contentsOf(monitorLog).find("null48") != std::string::npos; }));
    const int before = timesSeenRunning(monitorLog);
    session.spawn("player", {"pw-play", session.toneFile(48000)});
    using Moment = std::chrono::steady_clock::time_point;
    std::optional<Moment> runs;
    std::optional<Moment> isTold;
    EXPECT_TRUE(waitUntil([&] {
        if (!runs && timesSeenRunning(monitorLog) > before) runs = std::chrono::steady_clock::now();
        if (!isTold && program.verdict() == "bitPerfect") isTold = std::chrono::steady_clock::now();
        return runs && isTold;
    }));
    ASSERT_TRUE(runs && isTold);
    // Negative when the program saw it before the tool.
    const auto delay = std::chrono::duration_cast<std::chrono::milliseconds>(*isTold - *runs);
    report("from running to bitPerfect", delay);
    EXPECT_LT(delay, 2s);
    EXPECT_EQ(signatureOf(program.snapshot()), "null48|true|48000/32|48000/32");
}

TEST_F(Verdicts, ADepthThatLosesBitsIsResampling) {
    ASSERT_TRUE(session.startTunnelSink("narrow", "S16LE", 48000));
    ASSERT_TRUE(session.setDefaultSink("narrow"));
    session.spawn("player", {"pw-play", session.toneFile(48000, 24)});
    program.start();
    EXPECT_TRUE(
        waitUntil([&] { return signatureOf(program.snapshot()) == "narrow|true|48000/32|48000/16"; }));
    EXPECT_EQ(program.verdict(), "resampling");
}

TEST_F(Verdicts, ADeviceAtAnotherRateIsResamplingAndStoppingIsIdle) {
    ASSERT_TRUE(session.loadNullSink("null44", 44100));
    ASSERT_TRUE(session.setDefaultSink("null48"));
    program.start();
    play(48000);
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    bool isSwitched = false;  // a tool of its own makes the switch, and that takes most of the time
    const auto resampling = timeUntil([&] {
        if (std::exchange(isSwitched, true)) return program.verdict() == "resampling";
        return session.setDefaultSink("null44") && program.verdict() == "resampling";
    });
    ASSERT_TRUE(resampling);
    report("from the switch to resampling", *resampling);
    EXPECT_TRUE(
        waitUntil([&] { return signatureOf(program.snapshot()) == "null44|true|48000/32|44100/32"; }));
    stopPlaying();
    const auto idle = timeUntil([&] { return program.verdict() == "idle"; });
    ASSERT_TRUE(idle);
    report("from the stop to idle", *idle);
}

TEST_F(Verdicts, AServerThatDiesIsNoDeviceUntilItReturns) {
    program.start();
    play(48000);
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    session.process("pipewire").kill();
    const auto gone = timeUntil([&] { return program.verdict() == "noDevice"; });
    ASSERT_TRUE(gone);
    report("from the kill to noDevice", *gone);
    EXPECT_TRUE(program.snapshot()["device"].is_null());
    for (const char* const name : {"wireplumber", "pipewire-pulse", "player"}) session.process(name).kill();
    ASSERT_TRUE(session.startAudioServer() && session.startSessionManager() && session.startPulseServer());
    ASSERT_TRUE(session.loadNullSink("null48", 48000));
    const auto back = timeUntil([&] { return uid() == "null48"; });
    ASSERT_TRUE(back);
    report("from the device's return to its state", *back);
    play(48000);
    EXPECT_TRUE(program.awaitVerdict("bitPerfect"));
    EXPECT_EQ(program.faults(), "");
}

/// While anything plays, the watched device counts as running, even when the sound goes elsewhere.
TEST_F(Verdicts, APinnedDeviceIsWatchedWhateverTheDefaultIs) {
    ASSERT_TRUE(session.loadNullSink("null44", 44100) && session.loadNullSink("null96", 96000));
    test::writeFile(session.folder() + "/config/Purlock/defaults.json", R"({"pinnedDeviceUID": "null44"})");
    ASSERT_TRUE(session.setDefaultSink("null48"));
    play(48000);
    program.start();
    const std::string running = "null44|true|44100/32|44100/32";
    const auto lastLine = [&] {
        const auto lines = program.log();
        return lines.empty() ? std::string() : signatureOf(lines.back());
    };
    ASSERT_TRUE(waitUntil([&] { return lastLine() == running; }));
    EXPECT_EQ(signatureOf(program.snapshot()), running);
    EXPECT_EQ(program.verdict(), "altered") << "the sound goes to another device";
    const std::size_t lines = program.log().size();
    // Not to the pinned one: the sound would follow, which is a change.
    ASSERT_TRUE(session.setDefaultSink("null96"));
    ASSERT_TRUE(session.setDefaultSink("null48"));
    stopPlaying();
    EXPECT_TRUE(program.awaitVerdict("idle"));
    EXPECT_TRUE(waitUntil([&] { return program.log().size() > lines; }));
    EXPECT_EQ(program.log().size(), lines + 1) << "the switches are no change, the stop is one";
    EXPECT_EQ(lastLine(), "null44|false|44100/32|44100/32");
}

}  // namespace
}  // namespace purlock
