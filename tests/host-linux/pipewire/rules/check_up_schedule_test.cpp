#include "platform/linux/pipewire/rules/check_up_schedule.h"

#include <gtest/gtest.h>

#include <vector>

namespace purlock::host_linux {
namespace {

TEST(CheckUpSchedule, GrowsToItsLongestDistance) {
    CheckUpSchedule schedule;
    std::vector<int> due;
    const auto checkUps = [&](int count) {
        due.clear();
        for (int i = 1; i <= count; ++i) {
            if (schedule.isDue()) due.push_back(i);
        }
        return due;
    };
    EXPECT_EQ(checkUps(16), (std::vector{1, 2, 4, 8, 12, 16}));
    schedule.restart();
    EXPECT_EQ(checkUps(4), (std::vector{1, 2, 4}));
}

}  // namespace
}  // namespace purlock::host_linux
