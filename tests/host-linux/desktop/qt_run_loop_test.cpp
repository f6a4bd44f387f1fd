#include "platform/linux/desktop/qt_run_loop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
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
