#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/ui/shell_fixture.h"

// How the shell opens and closes the panel.

namespace purlock {
namespace {

using namespace std::chrono_literals;

using Fixture = test::ShellFixture;
using Lines = std::vector<std::string>;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(AppDelegate, AClickOpensThePanelUnderTheItemOnFreshData) {
    Fixture f;
    f.launch();
    f.desktop.takeHistory();
    f.setDefault(60);
    const auto questions = f.questionsToFramework();
    f.desktop.clickStatusItem();
    EXPECT_EQ(f.desktop.takeHistory(), (Lines{"origin 332,276", "activate", "front", "monitor 10"}));
    f.settle();
    EXPECT_EQ(f.questionsToFramework(), questions + 1) << "and so was what plays";
    EXPECT_TRUE(has(f.snapshot(), "\"name\" : \"Cans\"")) << "the device was read again at once";
}

TEST(AppDelegate, ReportsMayWaitForOtherWorkWhileThePanelIsClosed) {
    Fixture f;
    f.launch();
    f.pass(2s);
    const auto mayWait = [&] {
        f.loop.takeTolerances();
        f.pass(1600ms);
        return !f.loop.takeTolerances().empty();
    };
    EXPECT_TRUE(mayWait());
    f.desktop.clickStatusItem();
    EXPECT_FALSE(mayWait());
    f.desktop.clickStatusItem();
    EXPECT_TRUE(mayWait());
}

TEST(AppDelegate, AButtonWithoutAWindowPutsThePanelAtTheOrigin) {
    Fixture f;
    f.desktop.buttonFrame = {};
    f.launch();
    f.desktop.takeHistory();
    f.desktop.clickStatusItem();
    EXPECT_EQ(f.desktop.takeHistory()[0], "origin -180,-600");
}

TEST(AppDelegate, ASecondClickClosesThePanelAndRemovesTheMonitor) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    EXPECT_TRUE(f.desktop.monitorInstalled());
    f.desktop.takeHistory();
    f.desktop.clickStatusItem();
    EXPECT_EQ(f.desktop.takeHistory(), (Lines{"out", "no monitor"}));
    EXPECT_FALSE(f.desktop.panelVisible);
}

TEST(AppDelegate, AClickOutsideClosesThePanel) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.clickOutside();
    EXPECT_FALSE(f.desktop.panelVisible);
    EXPECT_FALSE(f.desktop.monitorInstalled());
}

TEST(AppDelegate, EscapeClosesThePanel) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.pressEscape();
    EXPECT_FALSE(f.desktop.panelVisible);
    EXPECT_FALSE(f.desktop.monitorInstalled());
}

TEST(AppDelegate, PinnedThePanelOpensWithoutAMonitor) {
    Fixture f;
    f.shell->settings()->setPanelPinned(true);
    f.launch();
    f.desktop.clickStatusItem();
    EXPECT_TRUE(f.desktop.panelVisible);
    EXPECT_FALSE(f.desktop.monitorInstalled());
}

TEST(AppDelegate, PinningAndUnpinningAnOpenPanelTakesEffectAtOnce) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.use(TogglePanelPinned{});
    EXPECT_FALSE(f.desktop.monitorInstalled());
    f.desktop.use(TogglePanelPinned{});
    EXPECT_TRUE(f.desktop.monitorInstalled());
    f.shell->settings()->setPanelPinned(false);
    EXPECT_TRUE(f.desktop.monitorInstalled()) << "an equal value installs it anew";
}

TEST(AppDelegate, PinningAHiddenPanelDoesNothing) {
    Fixture f;
    f.launch();
    f.desktop.takeHistory();
    f.shell->settings()->setPanelPinned(true);
    f.shell->settings()->setPanelPinned(false);
    EXPECT_EQ(f.desktop.takeHistory(), Lines{});
}

TEST(AppDelegate, APanelThatTheDesktopHasHiddenKeepsItsMonitorUntilTheNextClick) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.panelVisible = false;
    f.pass(1s);
    EXPECT_TRUE(f.desktop.monitorInstalled());
    f.desktop.clickOutside();
    EXPECT_FALSE(f.desktop.monitorInstalled());
}

TEST(AppDelegate, OpeningAPinnedPanelRemovesTheMonitorOfOneThatTheDesktopHadHidden) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.panelVisible = false;
    f.shell->settings()->setPanelPinned(true);
    EXPECT_TRUE(f.desktop.monitorInstalled());
    f.desktop.clickStatusItem();
    EXPECT_TRUE(f.desktop.panelVisible);
    EXPECT_FALSE(f.desktop.monitorInstalled());
}

TEST(AppDelegate, APanelThatTheDesktopShowsAgainIsUpToDateAgain) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.pass(2s);
    f.desktop.panelVisible = false;
    f.pass(1s);
    const int hidden = f.desktop.contentsSet;
    f.pass(2s);
    EXPECT_EQ(f.desktop.contentsSet, hidden) << "nothing is drawn that nobody sees";
    f.desktop.panelVisible = true;
    f.pass(800ms);
    EXPECT_GT(f.desktop.contentsSet, hidden);
    const int shown = f.desktop.contentsSet;
    f.pass(5s);
    EXPECT_GE(f.desktop.contentsSet - shown, 6) << "as one that was never hidden";
}

TEST(AppDelegate, APanelThatTheDesktopHasHiddenFlashesNoDot) {
    Fixture f;
    f.launch();
    f.pass(1600ms);
    const auto timersOfTwoTicks = [&f] {
        std::size_t sum = 0;
        for (int i = 0; i < 160; ++i) {
            f.pass(10ms);
            sum += f.loop.timerCount();
        }
        return sum;
    };
    const auto before = timersOfTwoTicks();
    f.desktop.clickStatusItem();
    EXPECT_GT(timersOfTwoTicks(), before + 80) << "a timer dims the dot again, 450 ms after each report";
    f.desktop.panelVisible = false;
    f.pass(1600ms);
    EXPECT_EQ(timersOfTwoTicks(), before);
}

TEST(AppDelegate, APanelThatIsNotVisibleAtOnceComesToLife) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.panelVisible = false;  // in front, but the program is not active yet
    f.settle();
    f.desktop.panelVisible = true;
    const int before = f.desktop.contentsSet;
    f.pass(5s);
    EXPECT_GE(f.desktop.contentsSet - before, 6);
}

TEST(AppDelegate, WithoutATokenThePanelStaysOpen) {
    Fixture f;
    f.desktop.givesMonitorToken = false;
    f.launch();
    f.desktop.clickStatusItem();
    f.desktop.clickOutside();
    EXPECT_TRUE(f.desktop.panelVisible);
}

}  // namespace
}  // namespace purlock
