#include "platform/linux/panel/focus_gone.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/manual_run_loop.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;

/// What happens, a letter each: f the focus comes, g it goes, i the pointer enters the panel, o it leaves it,
/// . half a second passes.
struct Case {
    const char* name;
    std::string events;
    int told;
};

class FocusGoneTest : public testing::TestWithParam<Case> {};

TEST_P(FocusGoneTest, TellsOnceThePointerHasStayedAway) {
    test::ManualRunLoop loop;
    int told = 0;
    FocusGone rule(loop, [&] { ++told; });
    for (const char event : GetParam().events) {
        if (event == 'f' || event == 'g') rule.setFocused(event == 'f');
        if (event == 'i' || event == 'o') rule.setPointerInside(event == 'i');
        if (event == '.') loop.advance(500ms);
    }
    EXPECT_EQ(told, GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FocusGoneTest,
    testing::Values(Case{"TheWayFromTheIconToThePanel", "g....if....", 0},
                    Case{"APanelThatIsNeverVisited", "g..........", 0}, Case{"InAndAway", "ifog..", 1},  //
                    Case{"NotBeforeASecond", "ifog.", 0},                                                //
                    Case{"TheFocusGoesLater", "ifo....g..", 1}, Case{"BackInTime", "ifog.if....", 0},    //
                    Case{"BackAndAwayAgain", "ifog.io..", 1}, Case{"TheFocusComesBackAlone", "ifog.f....", 0},
                    Case{"AwayWithTheFocus", "ifo........", 0},
                    Case{"TheFocusGoesWhileThePointerIsInside", "ifg....", 0}),
    [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace purlock::host_linux
