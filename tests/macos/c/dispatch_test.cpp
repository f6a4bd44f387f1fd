#include "platform/macos/dispatch/dispatch_queue.h"

#include <vector>

#include "platform/macos/dispatch/native_queue.h"
#include "tests/macos/c/no_leak.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"

namespace purlock::host_macos {
namespace {

using std::chrono::milliseconds;

struct Dispatch : test::NoLeak {
    test::ManualQueues queues;
    test::ManualRunLoop loop;
    simulated::Dispatch dispatch{queues, &loop};
    std::vector<int> order;

    std::function<void()> note(int number) {
        return [this, number] { order.push_back(number); };
    }
};

TEST_F(Dispatch, AQueueRunsItsWorkInOrder) {
    DispatchQueues factory;
    const auto queue = factory.makeSerialQueue("org.purlock.Purlock.purlock.logger");
    queue->async(note(1));
    queue->async(note(2));
    EXPECT_TRUE(order.empty());
    queues.run();
    EXPECT_EQ(order, (std::vector{1, 2}));
    EXPECT_EQ(queue->label(), "org.purlock.Purlock.purlock.logger");
    EXPECT_EQ(queues.made()[0]->label(), queue->label()) << "the system's queue carries it too";
}

TEST_F(Dispatch, WorkThatWasHandedInRunsWithoutTheQueue) {
    DispatchQueues().makeSerialQueue("q")->async(note(1));
    EXPECT_EQ(simulated::Dispatch::liveQueues(), 0U);
    queues.run();
    EXPECT_EQ(order, (std::vector{1}));
}

TEST_F(Dispatch, TheMainQueueNowAndLater) {
    dispatchToMainAfter(milliseconds(80), note(2));
    dispatchToMain(note(1));
    EXPECT_TRUE(order.empty());
    loop.advance(milliseconds(79));
    EXPECT_EQ(order, (std::vector{1}));
    loop.advance(milliseconds(1));
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_F(Dispatch, EachPieceOfWorkHasAPoolOfItsOwn) {
    std::vector<int> pools;
    const auto note = [&pools] { pools.push_back(simulated::openPools()); };
    const auto queue = DispatchQueues().makeSerialQueue("q");
    queue->async(note);
    queues.run();
    dispatchToMain(note);
    dispatchToMainAfter(milliseconds(1), note);
    loop.advance(milliseconds(1));
    EXPECT_EQ(pools, (std::vector{1, 1, 1}));
    EXPECT_EQ(simulated::openPools(), 0);
}

TEST_F(Dispatch, AQueueOfAnotherMakeStopsTheProcess) {
    const test::ManualSerialQueue foreign("q");
    EXPECT_DEATH(nativeQueue(foreign), "a queue that the system does not know");
}

}  // namespace
}  // namespace purlock::host_macos
