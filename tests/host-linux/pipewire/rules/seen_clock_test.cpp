#include "platform/linux/pipewire/rules/seen_clock.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace purlock::host_linux {
namespace {

constexpr auto running = NodeState::running;
constexpr auto idle = NodeState::idle;
constexpr auto suspended = NodeState::suspended;

/// Either a state or a cycle, at its time.
struct Step {
    std::int64_t time;
    std::optional<NodeState> state;
    double rate = 0;
};

struct Case {
    const char* name;
    std::vector<Step> steps;
    std::optional<double> rate;
};

TEST(SeenClock, IsThatOfThisRun) {
    const Case cases[] = {
        {"nothing was seen", {{1, running}}, {}},
        {"seen", {{1, running}, {2, {}, 44100}}, 44100},
        {"changed", {{1, running}, {2, {}, 44100}, {3, {}, 96000}}, 96000},
        {"before anything is known of the node", {{1, {}, 44100}}, {}},
        {"an idle node keeps it", {{1, running}, {2, {}, 44100}, {3, idle}}, 44100},
        {"told when it is idle already", {{1, running}, {4, idle}, {2, {}, 44100}}, 44100},
        {"a suspended node has none", {{1, running}, {2, {}, 44100}, {3, suspended}}, {}},
        {"nor is it told of one", {{1, running}, {3, suspended}, {2, {}, 44100}}, {}},
        {"it runs again", {{1, running}, {2, {}, 44100}, {3, idle}, {4, running}}, {}},
        {"told late of the earlier run", {{1, running}, {3, idle}, {4, running}, {2, {}, 44100}}, {}},
        {"and then of this one",
         {{1, running}, {3, idle}, {4, running}, {2, {}, 44100}, {5, {}, 96000}},
         96000},
        {"a state that is told again", {{1, running}, {2, {}, 44100}, {3, running}}, 44100},
    };
    for (const Case& row : cases) {
        SeenClock clock;
        for (const Step& step : row.steps) {
            if (step.state) clock.changeState(*step.state, step.time);
            if (!step.state) clock.see(step.rate, step.time);
        }
        EXPECT_EQ(clock.rate(), row.rate) << row.name;
    }
}

TEST(SeenClock, TellsWhetherARateIsNews) {
    SeenClock clock;
    EXPECT_FALSE(clock.see(44100, 1)) << "the node does not run";
    clock.changeState(running, 2);
    EXPECT_TRUE(clock.see(44100, 3));
    EXPECT_FALSE(clock.see(44100, 4));
    EXPECT_TRUE(clock.see(48000, 5));
}

TEST(GlanceSchedule, GrowsToItsLongestDistance) {
    GlanceSchedule schedule;
    std::vector<int> due;
    const auto checkUps = [&](int count) {
        due.clear();
        for (int i = 1; i <= count; ++i) {
            if (schedule.isDue()) due.push_back(i);
        }
        return due;
    };
    EXPECT_EQ(checkUps(32), (std::vector{1, 2, 4, 8, 16, 24, 32}));
    schedule.begin();
    EXPECT_EQ(checkUps(4), (std::vector{1, 2, 4}));
}

}  // namespace
}  // namespace purlock::host_linux
