#include "base/run_loop_queues.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/support/manual_run_loop.h"

namespace purlock {
namespace {

TEST(RunLoopQueues, WorkRunsInOrderAsTurnsOfTheLoop) {
    test::ManualRunLoop loop;
    RunLoopQueues queues(loop);
    auto queue = queues.makeSerialQueue("label");
    EXPECT_EQ(queue->label(), "label");
    std::vector<int> seen;
    queue->async([&] {
        seen.push_back(1);
        queue->async([&] { seen.push_back(3); });
        EXPECT_EQ(seen, std::vector({1})) << "never before the call has returned";
    });
    queue->async([&] { seen.push_back(2); });
    EXPECT_TRUE(seen.empty());
    loop.runPosted();
    EXPECT_EQ(seen, (std::vector{1, 2}));
    loop.runPosted();
    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
}

TEST(RunLoopQueues, WorkRunsAlsoWhenTheQueueIsDropped) {
    test::ManualRunLoop loop;
    bool hasRun = false;
    RunLoopQueues(loop).makeSerialQueue("label")->async([&] { hasRun = true; });
    loop.runPosted();
    EXPECT_TRUE(hasRun);
}

}  // namespace
}  // namespace purlock
