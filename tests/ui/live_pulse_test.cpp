#include "ui/live_pulse.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/manual_run_loop.h"
#include "tests/support/view_reading.h"
#include "ui/view_parts.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;

constexpr WallTime start{1000h};

struct Fixture {
    test::ManualRunLoop loop;
    int changes = 0;
    LivePulse pulse{loop, start, [this] { ++changes; }};
};

TEST(LivePulse, TheAgeIsInWholeSecondsHoweverLong) {
    struct Case {
        std::chrono::milliseconds age;
        const char* text;
    };
    for (const auto& [age, text] :
         {Case{0ms, "now"}, Case{900ms, "now"}, Case{999ms, "now"}, Case{1s, "1s ago"},
          Case{1999ms, "1s ago"}, Case{61s, "61s ago"}, Case{1h, "3600s ago"}, Case{-5s, "now"}}) {
        EXPECT_EQ(timeAgo(start, start + age), text) << age.count() << " ms";
    }
}

TEST(LivePulse, IsAGreenDotThatFades) {
    Fixture f;
    const View dot = f.pulse.body(start + 61s);
    EXPECT_EQ(test::contentOf<Circle>(dot), (Circle{6, accentGreen, {}, 0.35, EaseOut{0.5}}));
    EXPECT_EQ(dot.help, "Live — last refresh 61s ago");
}

TEST(LivePulse, FlashesForFourHundredAndFiftyMilliseconds) {
    Fixture f;
    f.pulse.setLastTick(start + 1s);
    EXPECT_TRUE(f.pulse.bright());
    EXPECT_EQ(test::contentOf<Circle>(f.pulse.body(start)).opacity, 0.95);
    EXPECT_EQ(f.changes, 1);
    f.loop.advance(449ms);
    EXPECT_TRUE(f.pulse.bright());
    f.loop.advance(1ms);
    EXPECT_FALSE(f.pulse.bright());
    EXPECT_EQ(f.changes, 2);
}

TEST(LivePulse, AnEqualTickDoesNotFlash) {
    Fixture f;
    f.pulse.setLastTick(start);
    EXPECT_FALSE(f.pulse.bright());
    EXPECT_EQ(f.changes, 0);
}

TEST(LivePulse, EachTickDimsTheDotAfterItsOwnTime) {
    Fixture f;
    f.pulse.setLastTick(start + 1s);
    f.loop.advance(300ms);
    f.pulse.setLastTick(start + 2s);
    f.loop.advance(149ms);
    EXPECT_TRUE(f.pulse.bright());
    f.loop.advance(1ms);
    EXPECT_FALSE(f.pulse.bright()) << "after the first";
    f.pulse.setLastTick(start + 3s);
    f.loop.advance(299ms);
    EXPECT_TRUE(f.pulse.bright());
    f.loop.advance(1ms);
    EXPECT_FALSE(f.pulse.bright()) << "after the second";
    f.loop.advance(150ms);
    EXPECT_FALSE(f.pulse.bright());
    EXPECT_EQ(f.loop.timerCount(), 0U);
}

TEST(LivePulse, ATickThatNobodySawDoesNotFlash) {
    Fixture f;
    f.pulse.noteTick(start + 1s);
    f.pulse.setLastTick(start + 1s);
    EXPECT_FALSE(f.pulse.bright());
    EXPECT_EQ(f.pulse.body(start + 3s).help, "Live — last refresh 2s ago");
}

TEST(LivePulse, AtRestItIsDarkAndWaitsForNothing) {
    Fixture f;
    f.pulse.setLastTick(start + 1s);
    f.pulse.rest();
    EXPECT_FALSE(f.pulse.bright());
    EXPECT_EQ(f.loop.timerCount(), 0U);
}

}  // namespace
}  // namespace purlock
