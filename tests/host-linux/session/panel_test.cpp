#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "tests/host-linux/session/session_test.h"
#include "tests/support/sanitizers.h"

namespace purlock::test {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

/// "48.0 kHz · 32-bit · 2ch", from a format of state.json.
std::string summary(const Json& format) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f kHz · %d-bit · %dch", format["sampleRate"].get<double>() / 1000,
                  format["bitsPerChannel"].get<int>(), format["channels"].get<int>());
    return text;
}

std::string bitrate(const Json& format) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f Mbps", format["bitsPerSecond"].get<double>() / 1e6);
    return text;
}

/// What the panel has to say while the player plays bit-perfectly, by a second look at the state.
Texts textsFor(const Json& state) {
    const std::string grade = "Quality not known";  // of every stage, for nobody claims anything
    const Json& mixer = state["virtual"];
    const Json& device = state["physical"];
    const std::string name = state["device"]["name"];
    return {"Purlock", "v1.1",
            // the card
            "Spring", "The Larks · Seasons", "mpv Media Player", "Playing",
            // the verdict
            state["verdict"]["headline"],
            "Source matches device at " + summary(mixer) + ". No conversion in path.",
            // the path
            "Source", "2.30 Mbps", "mpv Media Player", "FLAC · 24-bit · 48.0 kHz", "Lossless",         //
            "delivers to",                                                                             //
            "App", "mpv Media Player", "mpv", grade, "writes to OS",                                   //
            "HAL virtual", bitrate(mixer), summary(mixer), mixer["label"], grade, "OS sends to wire",  //
            "HAL physical", bitrate(device), summary(device), device["label"], grade, "to device",     //
            "Virtual device", bitrate(device), name, "Virtual device", grade,
            // the picker
            "Output device"};
}

using Panel = SessionTest;

TEST_F(Panel, StandsUnderItsIconAndSaysWhatTheStateFileSays) {
    ASSERT_TRUE(desktop.startPlayer(48000));
    startInTray();
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    const ScreenArea icon = trayIconOnScreen().value_or(ScreenArea{});
    const ScreenArea panel = panelOnScreen().value_or(ScreenArea{});
    EXPECT_NEAR(panel.centerX(), icon.centerX(), 1);
    EXPECT_GE(panel.y, icon.y + icon.height);
    EXPECT_TRUE(wholeScreen().contains(panel));

    const Texts expected = textsFor(program.snapshot());
    waitUntil([&] { return texts() == expected; });  // the track's name takes a moment
    EXPECT_EQ(texts(), expected);
    const Accessible screen = desktop.onScreen();
    const Accessible* logSwitch = elementNamed(screen, "Log to file", "check box");
    ASSERT_NE(logSwitch, nullptr);
    EXPECT_TRUE(logSwitch->isChecked);
    EXPECT_NE(elementNamed(screen, "Pin (keep panel open)", "push button"), nullptr);
    ASSERT_EQ(screen.children.size(), 1U);
    EXPECT_EQ(screen.children.front().role, "dialog");
    for (const Accessible& child : screen.children.front().children) {
        EXPECT_NE(child.name, "") << "a " << child.role;
        EXPECT_TRUE(child.children.empty()) << child.name;
    }
    const Accessible* picker = elementNamed(screen, program.snapshot()["device"]["name"], "button menu");
    ASSERT_NE(picker, nullptr) << "the chosen device is said";
    EXPECT_EQ(picker->description, "Output device");
}

TEST_F(Panel, AScreenReadersActionsAreAnsweredAtOnce) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(shows("Log to file"));
    ASSERT_TRUE(settingBecomes("logEnabled", nullptr));
    EXPECT_TRUE(
        desktop.reader().perform(*elementNamed(desktop.onScreen(), "Log to file", "check box"), "Toggle"));
    EXPECT_TRUE(settingBecomes("logEnabled", false));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(
        desktop.reader().perform(*elementNamed(desktop.onScreen(), "Desk", "button menu"), "ShowMenu"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_TRUE(waitUntil([] { return menuOnScreen().has_value(); }));
    EXPECT_TRUE(shows("Tunnel hall")) << "an entry of the menu that is open";
}

TEST_F(Panel, TheKeyboardScrollsAndShowsWhereTheFocusIs) {
    ASSERT_TRUE(desktop.startPlayer(96000));  // with findings, so that there is something to scroll
    startInTray();
    ASSERT_TRUE(program.awaitVerdict("resampling"));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(shows("Findings"));
    const auto isInSight = [&](const std::string& name) {
        const Accessible screen = desktop.onScreen();
        const Accessible* element = elementNamed(screen, name);
        const auto panel = panelOnScreen();
        return element != nullptr && panel && panel->contains(element->area);
    };
    EXPECT_TRUE(isInSight("Purlock"));
    EXPECT_FALSE(isInSight("Quit"));
    ASSERT_TRUE(desktop.press("End"));
    EXPECT_TRUE(waitUntil([&] { return isInSight("Quit"); }));
    EXPECT_FALSE(isInSight("v1.1"));
    ASSERT_TRUE(desktop.press("Tab"));
    EXPECT_TRUE(waitUntil([&] { return isInSight("Pin (keep panel open)"); }));
    ASSERT_TRUE(desktop.press("Next"));
    EXPECT_TRUE(waitUntil([&] { return !isInSight("v1.1"); }));
    ASSERT_TRUE(desktop.press("Escape"));
    ASSERT_TRUE(panelGoes());
    ASSERT_NO_FATAL_FAILURE(openPanel());
    EXPECT_TRUE(waitUntil([&] { return isInSight("Purlock"); })) << "it opens at its top";
}

/// Without a screen reader at first.
class LateReader : public SessionTest {
  protected:
    void SetUp() override { ASSERT_TRUE(desktop.start(DesktopSession::Accessibility::later)); }
};

TEST_F(LateReader, MeetsThePanel) {
    startInTray();
    ASSERT_TRUE(deviceBecomes("desk"));
    ASSERT_TRUE(desktop.switchAccessibilityOn());
    ASSERT_NO_FATAL_FAILURE(openPanel());
    EXPECT_TRUE(shows("Desk"));
}

TEST_F(Panel, ADeviceChosenInTheMenuIsPinned) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(choose(Entry::last, "Desk"));
    EXPECT_TRUE(shows("📌 Tunnel hall"));
    EXPECT_TRUE(settingBecomes("pinnedDeviceUID", "hall"));
    EXPECT_TRUE(deviceBecomes("hall"));
    ASSERT_TRUE(choose(Entry::first, "📌 Tunnel hall"));
    EXPECT_TRUE(shows("Desk"));
    EXPECT_TRUE(settingBecomes("pinnedDeviceUID", nullptr));
    EXPECT_TRUE(deviceBecomes("desk"));
}

TEST_F(Panel, TheLogGrowsWhileItsSwitchIsOn) {
    startInTray();
    ASSERT_TRUE(deviceBecomes("desk"));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Log to file", "check box"));
    ASSERT_TRUE(settingBecomes("logEnabled", false));
    const std::size_t lines = program.log().size();
    for (const char* device : {"hall", "desk", "hall"}) {
        ASSERT_TRUE(desktop.parts().setDefaultSink(device));
        ASSERT_TRUE(deviceBecomes(device)) << desktop.parts().run({"pw-metadata", "0"}).output;
    }
    EXPECT_EQ(program.log().size(), lines);
    ASSERT_TRUE(clickOn("Log to file", "check box"));
    EXPECT_TRUE(settingBecomes("logEnabled", true));
    EXPECT_TRUE(waitUntil([&] { return program.log().size() == lines + 1; }));
    EXPECT_EQ(signatureOf(program.log().back()), signatureOf(program.snapshot()));
}

TEST_F(Panel, AClickOutsideClosesItUnlessItIsPinned) {
    startInTray();
    desktop.parts().spawn("neighbour", {"zenity", "--info", "--text=Somebody else's window"});
    // Later, it would take the focus from the panel.
    ASSERT_TRUE(waitUntil([] { return isOnScreen("zenity"); }));
    const ScreenArea outside{640, 740, 0, 0};  // below the panel, on what the window manager has put there
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
    EXPECT_TRUE(shows("Unpin (close on outside click)"));
    EXPECT_TRUE(settingBecomes("panelPinned", true));
    ASSERT_TRUE(desktop.click(outside));
    EXPECT_FALSE(waitUntil([] { return !panelOnScreen(); }, std::chrono::milliseconds(400)));
    ASSERT_TRUE(clickOn("Unpin (close on outside click)", "push button"));
    EXPECT_TRUE(settingBecomes("panelPinned", false));
    ASSERT_TRUE(desktop.click(outside));
    EXPECT_TRUE(panelGoes());
    ASSERT_NO_FATAL_FAILURE(openPanel());
}

/// True if the panel stays for a while.
bool panelStays() {
    return !waitUntil([] { return !panelOnScreen(); }, std::chrono::milliseconds(600));
}

TEST_F(Panel, APointerOverAnotherWindowIsNoClickWhereTheFocusFollowsIt) {
    ASSERT_TRUE(desktop.letFocusFollowPointer());
    startInTray();
    desktop.parts().spawn("neighbour", {"zenity", "--info", "--text=Somebody else's window"});
    ASSERT_TRUE(waitUntil([] { return isOnScreen("zenity"); }));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    const ScreenArea panel = panelOnScreen().value_or(ScreenArea{});
    desktop.parts().run(
        {"xdotool", "search", "--onlyvisible", "--class", "zenity", "windowmove", "900", "700"});
    std::optional<ScreenArea> neighbour;
    ASSERT_TRUE(waitUntil([&] { return (neighbour = areaOnScreen("zenity")) && neighbour->y >= 700; }));
    ASSERT_TRUE(desktop.pointAt(*neighbour));
    ASSERT_TRUE(waitUntil([] { return isFocused("zenity"); }));
    EXPECT_TRUE(panelStays());
    ASSERT_TRUE(desktop.pointAt(panel));
    ASSERT_TRUE(desktop.pointAt({5, 1000, 0, 0}));
    EXPECT_TRUE(panelStays()) << "the way over the bare desktop and back";
    ASSERT_TRUE(desktop.click({5, 1000, 0, 0}));
    EXPECT_TRUE(panelGoes());
}

TEST_F(Panel, AClickOnTheBareDesktopClosesItAlsoWithoutAWindowManager) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    desktop.killWindowManager();
    ASSERT_TRUE(waitUntil([] { return !windowManagerIsThere(); }));
    ASSERT_TRUE(desktop.click({1200, 900, 0, 0}, "3"));
    EXPECT_TRUE(panelGoes()) << "by the right button";
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(desktop.click({1200, 900, 0, 0}, "4"));
    EXPECT_TRUE(panelStays()) << "turning the wheel is no click";
    ASSERT_TRUE(desktop.click({1200, 900, 0, 0}));
    EXPECT_TRUE(panelGoes());
}

TEST_F(Panel, AClickThatClosesItsMenuLeavesItOpen) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Desk", "button menu"));
    ASSERT_TRUE(waitUntil([] { return menuOnScreen().has_value(); }));
    ASSERT_TRUE(desktop.click({1200, 900, 0, 0}));
    EXPECT_TRUE(waitUntil([] { return !menuOnScreen(); }));
    EXPECT_TRUE(panelStays());
}

TEST_F(Panel, IsOnEveryWorkspace) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
    ASSERT_TRUE(settingBecomes("panelPinned", true));
    ASSERT_TRUE(desktop.switchToWorkspace(1));
    EXPECT_TRUE(panelStays());
    ASSERT_TRUE(desktop.clickIcon());
    EXPECT_TRUE(panelGoes()) << "the first click closes it";
}

TEST_F(Panel, GivesTheFocusBackToTheWindowThatHadIt) {
    startInTray();
    desktop.parts().spawn("neighbour", {"zenity", "--entry"});
    ASSERT_TRUE(waitUntil([] { return isFocused("zenity"); }));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    EXPECT_TRUE(waitUntil([] { return isFocused("purlock"); }));
    ASSERT_TRUE(desktop.press("Escape"));
    EXPECT_TRUE(waitUntil([] { return isFocused("zenity"); }));
}

TEST_F(Panel, TheMenuOfItsIconOpensItAndNeverClosesIt) {
    startInTray();
    for (const char* when : {"closed", "open"}) {
        SCOPED_TRACE(when);
        ASSERT_TRUE(desktop.clickIcon("3"));
        std::optional<ScreenArea> menu;
        ASSERT_TRUE(waitUntil([&] { return (menu = menuOnScreen()).has_value(); }));
        ASSERT_TRUE(desktop.click({menu->centerX(), menu->y + 12, 0, 0}));
        EXPECT_TRUE(panelComes());
        EXPECT_TRUE(panelStays());
    }
    EXPECT_TRUE(waitUntil([] { return isFocused("purlock"); }));
}

TEST_F(Panel, ClosesByItsIconByEscapeAndByAnotherStart) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(desktop.clickIcon());
    EXPECT_TRUE(panelGoes());
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(desktop.press("Escape"));
    EXPECT_TRUE(panelGoes());
    EXPECT_EQ(desktop.parts().run({PURLOCK_PROGRAM}).exitStatus, 0);
    EXPECT_TRUE(panelComes());
    EXPECT_EQ(desktop.parts().run({PURLOCK_PROGRAM}).exitStatus, 0);
    EXPECT_TRUE(panelGoes());
}

/// MiB of files and of its own.
double residentMemory(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    double whole = 0;
    double resident = 0;
    file >> whole >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

/// Well below what it holds while the panel is open, and within what a small program may hold.
TEST_F(Panel, GivesBackMemoryOnceItIsClosed) {
    constexpr double most = 32;
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(shows("Show log"));
    const double open = residentMemory(desktop.program().pid());
    ASSERT_TRUE(desktop.press("Escape"));
    ASSERT_TRUE(panelGoes());
    EXPECT_TRUE(waitUntil([&] {
        const double hidden = residentMemory(desktop.program().pid());
        return hidden < open * 0.75 && (isSanitized || hidden < most);
    }));
    ASSERT_NO_FATAL_FAILURE(openPanel());
    EXPECT_TRUE(shows("Show log"));
}

TEST_F(Panel, QuitEndsTheProgram) {
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Quit", "push button"));
    EXPECT_EQ(desktop.program().waitForExit(std::chrono::seconds(5)), 0);
    EXPECT_TRUE(waitUntil([] { return !trayIconOnScreen(); }));
}

}  // namespace
}  // namespace purlock::test
