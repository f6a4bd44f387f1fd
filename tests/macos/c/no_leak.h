#pragma once

#include <gtest/gtest.h>

#include "tests/macos/simulated/core_foundation.h"
#include "tests/macos/simulated/dispatch.h"
#include "tests/macos/simulated/io_registry.h"

namespace purlock::test {

/// Fails the test if it leaves a reference behind that it did not find.
class NoLeak : public testing::Test {
  protected:
    ~NoLeak() override {
        EXPECT_EQ(simulated::liveObjects(), objects_) << "objects of CoreFoundation";
        EXPECT_EQ(simulated::Dispatch::liveQueues(), queues_) << "queues";
        EXPECT_EQ(simulated::IORegistry::liveObjects(), registryObjects_) << "services or iterators";
    }

  private:
    const std::size_t objects_ = simulated::liveObjects();
    const std::size_t queues_ = simulated::Dispatch::liveQueues();
    const std::size_t registryObjects_ = simulated::IORegistry::liveObjects();
};

}  // namespace purlock::test
