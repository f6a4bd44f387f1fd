#include "platform/linux/pipewire/rules/node_clock.h"

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

TEST(NodeClock, IsThatOfThisRun) {
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
        NodeClock clock;
        for (const Step& step : row.steps) {
            if (step.state) clock.changeState(*step.state, step.time);
            if (!step.state) clock.cycle(step.rate, step.time);
        }
        EXPECT_EQ(clock.rate(), row.rate) << row.name;
    }
}

TEST(NodeClock, TellsWhetherARateIsNews) {
    NodeClock clock;
    EXPECT_FALSE(clock.cycle(44100, 1)) << "the node does not run";
    clock.changeState(running, 2);
    EXPECT_TRUE(clock.cycle(44100, 3));
    EXPECT_FALSE(clock.cycle(44100, 4));
    EXPECT_TRUE(clock.cycle(48000, 5));
}

}  // namespace
}  // namespace purlock::host_linux
