#include <chrono>

#include "tests/host-linux/session/session_test.h"

namespace purlock::test {
namespace {

using namespace std::chrono_literals;

/// The road of one event: from the sound server to the files, the icon and the panel.
class Road : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        ASSERT_TRUE(desktop.startPlayer(48000));
        startInTray();
        ASSERT_NO_FATAL_FAILURE(openPanel());
        ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
        expectEverywhere("bitPerfect", "Bit-perfect");
    }

    /// All that tells the verdict comes to tell this one.
    void expectEverywhere(const std::string& kind, const std::string& headline) {
        EXPECT_TRUE(program.awaitVerdict(kind));
        EXPECT_TRUE(shows(headline));
        EXPECT_TRUE(waitUntil([&] {
            const auto records = program.log();
            return !records.empty() && signatureOf(records.back()) == signatureOf(program.snapshot());
        }));
        EXPECT_TRUE(tipBecomes("Purlock — " + headline));
    }

    /// What the icon says when the pointer rests on it; the pointer has to come anew for a new text.
    bool tipBecomes(const std::string& text) {
        return waitUntil([&] {
            const auto icon = trayIconOnScreen();
            if (!icon || !desktop.pointAt({900, 900, 0, 0}) || !desktop.pointAt(*icon)) return false;
            return waitUntil([&] { return elementNamed(desktop.onScreen(), text) != nullptr; }, 1500ms);
        });
    }
};

TEST_F(Road, FromTheSwitchOfARateToIdleToAPinnedDeviceThatGoes) {
    ASSERT_TRUE(desktop.parts().forceClockRate(44100));
    expectEverywhere("resampling", "Resampling");
    EXPECT_EQ(signatureOf(program.snapshot()), "desk|true|44100/32|48000/32");
    EXPECT_TRUE(
        shows("PipeWire is converting 44.1 kHz · 32-bit · 2ch to 48.0 kHz · 32-bit · 2ch. "
              "See findings below."));
    EXPECT_TRUE(shows("Findings"));
    EXPECT_TRUE(shows("PipeWire is resampling"));

    ASSERT_TRUE(desktop.parts().forceClockRate(48000));
    expectEverywhere("bitPerfect", "Bit-perfect");

    ASSERT_TRUE(desktop.playerctl("pause"));
    expectEverywhere("idle", "Idle");
    EXPECT_TRUE(shows("Paused"));

    ASSERT_TRUE(choose(Entry::last, "Desk"));
    ASSERT_TRUE(deviceBecomes("hall"));
    desktop.parts().process("hall").kill();
    EXPECT_TRUE(shows("📌 (pinned device unplugged)"));
    EXPECT_TRUE(deviceBecomes("desk"));
}

TEST_F(Road, FromTheSwitchOfTheDefaultDevice) {
    ASSERT_TRUE(desktop.parts().setDefaultSink("hall"));
    expectEverywhere("resampling", "Resampling");
    EXPECT_EQ(signatureOf(program.snapshot()), "hall|true|48000/32|44100/16");
    EXPECT_TRUE(shows("Tunnel hall"));
    ASSERT_TRUE(desktop.parts().setDefaultSink("desk"));
    expectEverywhere("bitPerfect", "Bit-perfect");
    desktop.parts().process("player").kill();
    expectEverywhere("idle", "Idle");
    EXPECT_FALSE(elementNamed(desktop.onScreen(), "Spring")) << "the player has gone, and its card with it";
}

}  // namespace
}  // namespace purlock::test
