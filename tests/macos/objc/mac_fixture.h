#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/macos/runtime/objects.h"
#include "tests/macos/simulated/core_foundation.h"
#include "tests/macos/simulated/dispatch.h"
#include "tests/macos/standins/world.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"

extern "C" {
void* objc_autoreleasePoolPush();
void objc_autoreleasePoolPop(void* pool);
}

namespace purlock::test {

/// A Mac for one test, under virtual time. At the end, every object that the test or the program made must be
/// gone, but for the shared ones that the system makes once.
struct MacFixture : testing::Test {
    ManualQueues queues;
    ManualRunLoop loop;
    simulated::Dispatch dispatch{queues, &loop};
    standins::World world{loop};

    ~MacFixture() override {
        loop.advance(std::chrono::seconds(2));  // what was delayed comes, as it would
        settle();
        objc_autoreleasePoolPop(pool_);
        for (const auto& [name, count] : runtime::liveObjects()) {
            if (!sharedClasses().contains(name)) {
                EXPECT_EQ(count, before_[name]) << "objects of class " << name;
            }
        }
        EXPECT_EQ(simulated::liveObjects(), foundationBefore_) << "objects of CoreFoundation";
        EXPECT_TRUE(world.timers.empty());
        EXPECT_TRUE(world.observers.empty());
    }

    /// Runs what is queued and posted.
    void settle() {
        do {
            queues.run();
        } while (loop.runPosted() > 0);
    }

  private:
    static const std::set<std::string>& sharedClasses() {
        static const std::set<std::string> classes = {
            "NSApplication", "NSFileManager", "NSNotificationCenter", "NSOperationQueue", "NSProcessInfo",
            "NSRunLoop",     "NSStatusBar",   "NSUserDefaults",       "NSWorkspace"};
        return classes;
    }

    std::map<std::string, long> before_ = runtime::liveObjects();
    const std::size_t foundationBefore_ = simulated::liveObjects();
    void* const pool_ = objc_autoreleasePoolPush();
};

}  // namespace purlock::test
