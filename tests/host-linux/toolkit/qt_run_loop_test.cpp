#include "platform/linux/toolkit/qt_run_loop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Events = std::vector<std::string>;

/// Runs the event loop until `done`, with a deadline.
template <typename Condition>
bool runUntil(Condition done) {
    const auto deadline = Clock::now() + 10s;
    while (!done()) {
        if (Clock::now() > deadline) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

TEST(QtRunLoop, PostsRunInOrderAndNeverAtOnce) {
    QtRunLoop loop;
    Events events;
    loop.post([&] {
        events.emplace_back("first");
        loop.post([&] { events.emplace_back("posted by the first"); });
    });
    loop.post([&] { events.emplace_back("second"); });
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(runUntil([&] { return events.size() == 3; }));
    EXPECT_EQ(events, (Events{"first", "second", "posted by the first"}));
}

TEST(QtRunLoop, WorkPostedOnAnotherThreadRunsHere) {
    QtRunLoop loop;
    std::thread::id ran;
    std::thread([&] { loop.post([&] { ran = std::this_thread::get_id(); }); }).join();
    EXPECT_TRUE(runUntil([&] { return ran != std::thread::id(); }));
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST(QtRunLoop, ADelayedTaskRunsOnceAndNotBeforeItsTime) {
    QtRunLoop loop;
    int fired = 0;
    const auto begin = Clock::now();
    const Cancellable handle = loop.postDelayed(30ms, [&] { ++fired; });
    EXPECT_TRUE(runUntil([&] { return fired > 0; }));
    EXPECT_GE(Clock::now() - begin, 29ms);
    EXPECT_TRUE(runUntil([&] { return Clock::now() - begin > 100ms; }));
    EXPECT_EQ(fired, 1);
}

TEST(QtRunLoop, ARepeatingTaskRunsUntilItsHandleIsDropped) {
    QtRunLoop loop;
    int fired = 0;
    Cancellable handle;
    handle = loop.repeat(5ms, [&] {
        if (++fired == 4) handle.cancel();
    });
    EXPECT_TRUE(runUntil([&] { return fired == 4; }));
    bool later = false;
    const Cancellable after = loop.postDelayed(50ms, [&] { later = true; });
    EXPECT_TRUE(runUntil([&] { return later; }));
    EXPECT_EQ(fired, 4);
}

TEST(QtRunLoop, AHandleMayBeDroppedOnAnotherThread) {
    QtRunLoop loop;
    int fired = 0;
    Cancellable handle = loop.postDelayed(20ms, [&] { ++fired; });
    std::thread([&] { handle.cancel(); }).join();
    bool later = false;
    const Cancellable after = loop.postDelayed(60ms, [&] { later = true; });
    EXPECT_TRUE(runUntil([&] { return later; }));
    EXPECT_EQ(fired, 0);
}

TEST(QtRunLoop, ATaskMayDropItsOwnHandleAndUseWhatItOwns) {
    QtRunLoop loop;
    auto handle = std::make_shared<Cancellable>();
    auto owned = std::make_shared<int>(7);
    int seen = 0;
    *handle = loop.postDelayed(1ms, [&seen, handle, owned] {
        handle->cancel();
        seen = *owned;
    });
    EXPECT_TRUE(runUntil([&] { return seen == 7; }));
    EXPECT_TRUE(runUntil([&] { return owned.use_count() == 1; })) << "the task ends with its handle";
}

TEST(QtRunLoop, ATaskDroppedByAnEarlierOneOfTheSameMomentDoesNotRun) {
    QtRunLoop loop;
    Events events;
    Cancellable second;
    const Cancellable first = loop.postDelayed(5ms, [&] {
        events.emplace_back("first");
        second.cancel();
    });
    second = loop.postDelayed(5ms, [&] { events.emplace_back("second"); });
    const Cancellable third = loop.postDelayed(5ms, [&] { events.emplace_back("third"); });
    std::this_thread::sleep_for(10ms);  // all are due at one turn
    EXPECT_TRUE(runUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (Events{"first", "third"}));
}

TEST(QtRunLoop, ATaskThatWasLateForSeveralIntervalsRunsOnce) {
    QtRunLoop loop;
    int fired = 0;
    const Cancellable handle = loop.repeat(40ms, [&] { ++fired; });
    std::this_thread::sleep_for(150ms);
    QCoreApplication::processEvents();
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(runUntil([&] { return fired == 2; })) << "and goes on";
}

TEST(QtRunLoop, AnEarlierTaskThanTheNextOneIsNotLate) {
    QtRunLoop loop;
    Events events;
    const Cancellable later = loop.postDelayed(60ms, [&] { events.emplace_back("later"); });
    const Cancellable sooner = loop.postDelayed(10ms, [&] { events.emplace_back("sooner"); });
    EXPECT_TRUE(runUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (Events{"sooner", "later"}));
}

TEST(QtRunLoop, ATaskThatMayWaitComesWithTheNextWorkAndBeforeIt) {
    QtRunLoop loop;
    Events events;
    const Cancellable patient =
        loop.postDelayedWithTolerance(10ms, 1h, [&] { events.emplace_back("patient"); });
    std::this_thread::sleep_for(20ms);  // longer than its delay
    QCoreApplication::processEvents();
    EXPECT_TRUE(events.empty()) << "it does not wake the loop";
    const Cancellable other = loop.postDelayed(5ms, [&] { events.emplace_back("other"); });
    EXPECT_TRUE(runUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (Events{"patient", "other"}));
}

TEST(QtRunLoop, ATaskThatMayWaitComesWithPostedWorkAfterItsDelayOnly) {
    QtRunLoop loop;
    Events events;
    const Cancellable early = loop.postDelayedWithTolerance(1ms, 1h, [&] { events.emplace_back("due"); });
    const Cancellable late =
        loop.postDelayedWithTolerance(10min, 1h, [&] { events.emplace_back("not due"); });
    std::this_thread::sleep_for(2ms);
    loop.post([&] { events.emplace_back("posted"); });
    EXPECT_TRUE(runUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (Events{"due", "posted"}));
}

TEST(QtRunLoop, ATaskThatMayWaitWakesTheLoopWhenItsToleranceEnds) {
    QtRunLoop loop;
    bool fired = false;
    const auto begin = Clock::now();
    const Cancellable patient = loop.postDelayedWithTolerance(10ms, 30ms, [&] { fired = true; });
    EXPECT_TRUE(runUntil([&] { return fired; }));
    EXPECT_GE(Clock::now() - begin, 39ms);
}

TEST(QtRunLoop, WhatADroppedTaskHeldEndsAtOnce) {
    QtRunLoop loop;
    auto owned = std::make_shared<int>(7);
    Cancellable handle = loop.postDelayed(1h, [owned] {});
    handle.cancel();
    EXPECT_EQ(owned.use_count(), 1);
}

/// It ends on the loop's thread, though its handle was dropped elsewhere.
TEST(QtRunLoop, WhatATaskHoldsNeverEndsOnAnotherThread) {
    QtRunLoop loop;
    std::thread::id ended;
    std::shared_ptr<void> owned(nullptr, [&](void*) { ended = std::this_thread::get_id(); });
    Cancellable handle = loop.postDelayed(20ms, [owned] {});
    owned.reset();
    std::thread([&] { handle.cancel(); }).join();
    EXPECT_EQ(ended, std::thread::id());
    EXPECT_TRUE(runUntil([&] { return ended == std::this_thread::get_id(); }));
}

/// Windows are drawn between turns.
TEST(QtRunLoop, TasksThatPostThemselvesForEverLeaveOthersTheirTurn) {
    QtRunLoop loop;
    int rounds = 0;
    std::function<void()> again = [&] {
        ++rounds;
        loop.post(again);
    };
    loop.post(again);
    QCoreApplication::processEvents();
    EXPECT_LT(rounds, 1000);
    bool fired = false;
    const Cancellable handle = loop.postDelayed(5ms, [&] { fired = true; });
    EXPECT_TRUE(runUntil([&] { return fired; }));
    EXPECT_GT(rounds, 20);
    again = [] {};
}

TEST(QtRunLoop, ATimersTaskMayPostAndIsHeard) {
    QtRunLoop loop;
    Events events;
    const Cancellable handle = loop.postDelayed(1ms, [&] {
        loop.post([&] { events.emplace_back("posted"); });
        events.emplace_back("fired");
    });
    EXPECT_TRUE(runUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (Events{"fired", "posted"}));
    loop.post([&] { events.emplace_back("later"); });
    EXPECT_TRUE(runUntil([&] { return events.size() == 3; })) << "the loop is woken again";
}

TEST(QtRunLoop, WorkPostedToALoopThatIsGoneIsDropped) {
    auto loop = std::make_unique<QtRunLoop>();
    auto witness = std::make_shared<int>(0);
    loop->post([witness] { FAIL() << "its loop is gone"; });
    loop.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(witness.use_count(), 1);
}

}  // namespace
}  // namespace purlock::host_linux

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
