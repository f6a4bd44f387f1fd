#include "base/shared_instance.h"

#include <gtest/gtest.h>

#include <memory>

namespace purlock {
namespace {

TEST(SharedInstance, IsMadeOnceAndOnFirstUse) {
    SharedInstance<int> shared;
    int made = 0;
    shared.provide([&] { return std::make_shared<int>(++made); });
    EXPECT_EQ(made, 0);
    EXPECT_EQ(*shared(), 1);
    EXPECT_EQ(shared(), shared());
    EXPECT_EQ(made, 1);
}

TEST(SharedInstance, AnewMakerBringsANewInstance) {
    SharedInstance<int> shared;
    shared.provide([] { return std::make_shared<int>(1); });
    EXPECT_EQ(*shared(), 1);
    shared.provide([] { return std::make_shared<int>(2); });
    EXPECT_EQ(*shared(), 2);
}

TEST(SharedInstanceDeathTest, WithoutAMakerTheProcessStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    SharedInstance<int> shared;
    EXPECT_DEATH(shared(), "before start-up");
}

}  // namespace
}  // namespace purlock
