// The run loop that all other tests trust.

#include "tests/support/manual_run_loop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/manual_queues.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using test::ManualRunLoop;
using Events = std::vector<std::string>;

TEST(ManualRunLoop, PostsRunInOrderAndNeverAtOnce) {
    ManualRunLoop loop;
    Events events;
    loop.post([&] {
        events.emplace_back("first");
        loop.post([&] { events.emplace_back("posted by the first"); });
    });
    loop.post([&] { events.emplace_back("second"); });
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(loop.runPosted(), 2U);
    EXPECT_EQ(events, (Events{"first", "second"}));
    loop.runUntilIdle();
    EXPECT_EQ(events.back(), "posted by the first");
}

TEST(ManualRunLoop, ADelayedTaskRunsAtItsInstant) {
    ManualRunLoop loop;
    std::vector<std::chrono::milliseconds> instants;
    const Cancellable late = loop.postDelayed(80ms, [&] { instants.push_back(loop.now()); });
    const Cancellable early = loop.postDelayed(30ms, [&] { instants.push_back(loop.now()); });
    loop.advance(79ms);
    EXPECT_EQ(instants, std::vector{30ms});
    loop.advance(1ms);
    EXPECT_EQ(instants, (std::vector{30ms, 80ms}));
    EXPECT_EQ(loop.timerCount(), 0U);
}

TEST(ManualRunLoop, ADroppedHandleStopsATimer) {
    ManualRunLoop loop;
    int fired = 0;
    Cancellable once = loop.postDelayed(10ms, [&] { ++fired; });
    Cancellable repeating = loop.repeat(10ms, [&] { ++fired; });
    once.cancel();
    EXPECT_EQ(loop.timerCount(), 1U);
    loop.advance(25ms);
    EXPECT_EQ(fired, 2);
    repeating.cancel();
    loop.advance(1s);
    EXPECT_EQ(fired, 2);
}

TEST(ManualRunLoop, ARepeatingTimerMayEndItself) {
    ManualRunLoop loop;
    int fired = 0;
    Cancellable repeating;
    repeating = loop.repeat(800ms, [&] {
        if (++fired == 3) repeating.cancel();
    });
    loop.advance(10s);
    EXPECT_EQ(fired, 3);
}

TEST(ManualRunLoop, WhatATimerPostsRunsBeforeTheNextTimer) {
    ManualRunLoop loop;
    Events events;
    const Cancellable a = loop.postDelayed(10ms, [&] { loop.post([&] { events.emplace_back("posted"); }); });
    const Cancellable b = loop.postDelayed(10ms, [&] { events.emplace_back("timer"); });
    loop.advance(10ms);
    EXPECT_EQ(events, (Events{"posted", "timer"}));
}

TEST(ManualRunLoop, OtherThreadsMayPost) {
    ManualRunLoop loop;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 1000; ++j) loop.post([&] { ++count; });
        });
    }
    for (std::thread& thread : threads) thread.join();
    loop.runUntilIdle();
    EXPECT_EQ(count, 4000);
}

TEST(ManualClock, FollowsTheLoop) {
    ManualRunLoop loop;
    const WallTime start{std::chrono::seconds(1000)};
    const test::ManualClock clock(loop, start);
    loop.advance(2500ms);
    EXPECT_EQ(clock.now(), start + 2500ms);
}

TEST(SystemClock, GoesForward) {
    const SystemClock clock;
    EXPECT_GE(clock.now().time_since_epoch(), std::chrono::hours(24 * 365 * 50));
}

TEST(ManualQueues, RunWhatIsQueuedInOrder) {
    test::ManualQueues queues;
    const auto a = queues.makeSerialQueue("a");
    const auto b = queues.makeSerialQueue("b");
    Events events;
    a->async([&] {
        events.emplace_back("a1");
        b->async([&] {
            events.emplace_back("b1");
            a->async([&] { events.emplace_back("a3"); });
        });
    });
    a->async([&] { events.emplace_back("a2"); });
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(queues.run(), 4U);
    EXPECT_EQ(events, (Events{"a1", "a2", "b1", "a3"}));
    EXPECT_EQ(queues.made()[1]->label(), "b");
}

}  // namespace
}  // namespace purlock
