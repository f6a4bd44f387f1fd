#include "platform/linux/pipewire/rules/missed_default.h"

#include <gtest/gtest.h>

#include "tests/host-linux/pipewire/rules/graph_words.h"

namespace purlock::host_linux {
namespace {

using namespace purlock::test;

TEST(MissedDefault, Rows) {
    struct Case {
        const char* name;
        const char* named;                 // empty for none
        std::vector<std::uint32_t> links;  // of the streams 1 and 2, each to a sink; 0 for none
        std::vector<std::uint64_t> expected;
    };
    const Case cases[] = {
        {"nothing plays", "first", {}, {}},
        {"it plays to the default", "first", {11}, {}},
        {"one of two plays to the default", "first", {11, 12}, {}},
        {"all play to another", "first", {12, 12}, {12}},
        {"they play to others", "third", {11, 12}, {11, 12}},
        {"there is no default", "", {12}, {12}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        GraphWords words;
        words.sink(11, "first", stereo(s16Layout, 48000));
        words.sink(12, "second", stereo(s16Layout, 48000));
        words.sink(13, "third", stereo(s16Layout, 48000));
        if (*row.named != '\0') words.graph.defaultSinkName = row.named;
        std::uint32_t stream = 0;
        for (const std::uint32_t sink : row.links) {
            words.stream(++stream, "player", stereo(s16Layout, 48000));
            words.link(stream, sink);
        }
        const auto missed = missedDefault(words.graph);
        EXPECT_EQ(missed.has_value(), !row.expected.empty());
        EXPECT_EQ(missed.value_or(MissedDefault{}).sinks, row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
