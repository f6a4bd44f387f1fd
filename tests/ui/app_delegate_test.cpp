#include "ui/app_delegate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/ui/shell_fixture.h"
#include "ui/status_icon.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;

using Fixture = test::ShellFixture;
using Lines = std::vector<std::string>;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(AppDelegate, NothingIsAskedBeforeTheLaunch) {
    Fixture f;
    f.pass(2s);
    EXPECT_TRUE(f.hardware.takeReads().empty());
    EXPECT_TRUE(f.framework->calls().empty());
    EXPECT_FALSE(f.files.files.contains("/support/Purlock/state.json"));
}

TEST(AppDelegate, TheLaunchStartsBothMonitorsAndWritesTheFirstState) {
    Fixture f;
    f.launch();
    EXPECT_EQ(f.shell->monitor()->state().value()->name, "Desk");
    EXPECT_EQ(f.framework->calls().front().substr(0, 8), "register");
    EXPECT_TRUE(has(f.snapshot(), "\"name\" : \"Desk\""));
    EXPECT_TRUE(has(f.log(), "\"device\":\"Desk\""));
    EXPECT_EQ(f.shell->coordinator()->report().stages.size(), 0U);
    f.pass(80ms);
    EXPECT_EQ(f.shell->coordinator()->report().stages.size(), 5U);
}

TEST(AppDelegate, TheAudioMonitorStartsFirst) {
    Fixture f;
    f.noteWork();
    f.shell->applicationDidFinishLaunching();
    auto history = f.desktop.takeHistory();
    history.erase(history.begin(), std::ranges::find(history, "panel") + 1);
    EXPECT_EQ(history, (Lines{"to audiomonitor", "to audiomonitor", "to nowplaying"}))
        << "the pin and the first state, then what plays";
}

TEST(AppDelegate, AStateReachesTheIconThenTheSnapshotThenTheLog) {
    Fixture f;
    f.launch();
    f.desktop.takeHistory();
    f.setDefault(60);
    f.noteWork();
    f.shell->monitor()->refreshState();
    f.settle();
    EXPECT_EQ(f.desktop.takeHistory(), (Lines{"to audiomonitor", "image circle", "tooltip Purlock — Idle",
                                              "to snapshot", "to logger"}));
}

TEST(AppDelegate, TheCoordinatorIsMadeOnce) {
    Fixture f;
    f.launch();
    EXPECT_EQ(f.shell->coordinator(), f.shell->coordinator());
}

TEST(AppDelegate, AnAbsentStateIsWrittenAndNeverLogged) {
    Fixture f;
    f.setDefault(0);
    f.launch();
    EXPECT_TRUE(has(f.snapshot(), "\"kind\" : \"noDevice\""));
    EXPECT_EQ(f.log(), "");
}

TEST(AppDelegate, TheSafetyNetRefreshesEveryEightTenthsOfASecond) {
    Fixture f;
    f.launch();
    const auto before = f.snapshotsWritten();
    f.pass(799ms);
    EXPECT_EQ(f.snapshotsWritten(), before);
    f.pass(1ms);
    EXPECT_EQ(f.snapshotsWritten(), before + 1);
    f.pass(8s);
    EXPECT_EQ(f.snapshotsWritten(), before + 11) << "equal states are written again";
    EXPECT_EQ(std::ranges::count(f.log(), '\n'), 1) << "and logged once";
    EXPECT_EQ(f.questionsToFramework(), 12U);
}

TEST(AppDelegate, AChangeThatNobodyNotifiedIsFoundByTheSafetyNet) {
    Fixture f;
    f.launch();
    f.setDefault(60);
    f.pass(800ms);
    EXPECT_TRUE(has(f.snapshot(), "\"name\" : \"Cans\""));
    EXPECT_EQ(std::ranges::count(f.log(), '\n'), 2);
}

TEST(AppDelegate, ANotificationReachesTheFilesAtOnceAndTheReportAfterQuiet) {
    Fixture f;
    f.launch();
    f.pass(100ms);
    f.hardware.setValue(50, kAudioDevicePropertyDeviceIsRunningSomewhere, 1);
    f.hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(44100, 24));
    f.notify(51, kAudioStreamPropertyPhysicalFormat);
    EXPECT_TRUE(has(f.snapshot(), "\"kind\" : \"resampling\""));
    EXPECT_TRUE(has(f.log(), "\"verdict\":\"resampling\""));
    EXPECT_TRUE(f.shell->coordinator()->report().diagnostics.size() == 1) << "the report waits for quiet";
    f.pass(80ms);
    EXPECT_EQ(f.shell->coordinator()->report().diagnostics.front().title, "macOS is resampling");
}

TEST(AppDelegate, ChoosingADeviceTakesEffectAtOnce) {
    Fixture f;
    f.launch();
    f.shell->settings()->setPinnedDeviceUID("cans-1");
    f.settle();
    EXPECT_TRUE(has(f.snapshot(), "\"uid\" : \"cans-1\""));
}

TEST(AppDelegate, NothingIsAskedOfTheDesktopBeforeTheLaunch) {
    Fixture f;
    EXPECT_EQ(f.desktop.history, Lines{});
}

TEST(AppDelegate, TheLaunchMakesStatusItemAndPanelInOrder) {
    Fixture f;
    f.shell->applicationDidFinishLaunching();
    EXPECT_EQ(f.desktop.takeHistory(),
              (Lines{"policy 1", "status item -1", "image questionmark.circle", "action", "panel"}));
    EXPECT_EQ(f.desktop.image,
              (SymbolImage{"questionmark.circle", "No device", 14, FontWeight::semibold, {}}));
    EXPECT_EQ(f.desktop.toolTip, std::nullopt) << "not before the first state";
    EXPECT_FALSE(f.desktop.panelVisible);
    f.settle();
    EXPECT_EQ(f.desktop.image->name, "circle");
    EXPECT_EQ(f.desktop.toolTip, "Purlock — Idle");
}

TEST(AppDelegate, ThePanelsStyle) {
    Fixture f;
    f.launch();
    const PanelStyle& style = *f.desktop.style;
    EXPECT_EQ(style.contentRect, (Rect{0, 0, 360, 600}));
    EXPECT_EQ(style.styleMask, 32896U);
    EXPECT_EQ(style.backing, 2U);
    EXPECT_FALSE(style.defersCreation);
    EXPECT_TRUE(style.titlebarAppearsTransparent);
    EXPECT_TRUE(style.titleHidden);
    EXPECT_FALSE(style.movableByWindowBackground);
    EXPECT_EQ(style.level, 101);
    EXPECT_EQ(style.collectionBehavior, 257U);
    EXPECT_FALSE(style.opaque);
    EXPECT_TRUE(style.clearBackground);
    EXPECT_TRUE(style.hasShadow);
    EXPECT_TRUE(style.hidesOnDeactivate);
    EXPECT_EQ(style.material, 6);
    EXPECT_EQ(style.state, 1);
    EXPECT_EQ(style.blendingMode, 0);
    EXPECT_EQ(style.appearance, "NSAppearanceNameVibrantDark");
}

struct IconCase {
    const char* name;
    std::optional<test::FakeDevice> device;
    const char* symbol;
    std::optional<IconColors> colors;
    const char* words;
    MixerWork work = {};
};

void PrintTo(const IconCase& row, std::ostream* out) {
    *out << row.name;
}

class StatusIcon : public testing::TestWithParam<IconCase> {};

TEST_P(StatusIcon, Table) {
    const IconCase& row = GetParam();
    Fixture f;
    f.setDefault(0);
    if (row.device) {
        row.device->addTo(f.hardware);
        f.hardware.setMixerWork(70, row.work);
        f.setDevices({70});
        f.setDefault(70);
    }
    f.launch();
    EXPECT_EQ(f.desktop.image, (SymbolImage{row.symbol, row.words, 14, FontWeight::semibold, row.colors}));
    EXPECT_EQ(f.desktop.toolTip, std::string("Purlock — ") + row.words);
}

test::FakeDevice device(const StreamDescription& mixer, const StreamDescription& wire, bool running) {
    return {70, "Dac", "dac-1", 71, mixer, wire, running, kAudioDeviceTransportTypeUSB};
}

StreamDescription mono(StreamDescription stream) {
    stream.channelsPerFrame = 1;
    return stream;
}

INSTANTIATE_TEST_SUITE_P(
    Table, StatusIcon,
    testing::Values(
        IconCase{"NoDevice", {}, "questionmark.circle", std::nullopt, "No device"},
        IconCase{"NotRunning", device(test::floatStream(48000), test::floatStream(48000), false), "circle",
                 std::nullopt, "Idle"},
        IconCase{"NotRunningThoughItsFormatsDiffer",
                 device(test::floatStream(44100), test::integerStream(48000, 16), false), "circle",
                 std::nullopt, "Idle"},
        IconCase{"SameRateAndDepth", device(test::floatStream(48000), test::integerStream(48000, 32), true),
                 "checkmark.seal.fill", iconGreen, "Bit-perfect"},
        IconCase{"ChannelsDoNotCount",
                 device(test::floatStream(48000), mono(test::integerStream(48000, 32)), true),
                 "checkmark.seal.fill", iconGreen, "Bit-perfect"},
        IconCase{"OtherRate", device(test::floatStream(44100), test::integerStream(48000, 32), true),
                 "exclamationmark.triangle.fill", iconAmber, "Resampling"},
        IconCase{"OtherDepth", device(test::floatStream(48000), test::integerStream(48000, 16), true),
                 "exclamationmark.triangle.fill", iconAmber, "Resampling"},
        IconCase{"Altered",
                 device(test::floatStream(48000), test::integerStream(48000, 32), true),
                 "slider.horizontal.3",
                 iconAmber,
                 "Altered",
                 {{alteration::DeviceMute{"Dac"}}}}),
    [](const auto& row) { return row.param.name; });

TEST(AppDelegate, TheIconIsDrawnAgainAtEveryTick) {
    Fixture f;
    f.launch();
    f.desktop.takeHistory();
    f.pass(800ms);
    EXPECT_EQ(f.desktop.takeHistory(), (Lines{"image circle", "tooltip Purlock — Idle"}));
}

struct PoorDesktop {
    const char* name;
    bool givesStatusItem;
    bool givesButton;
    bool givesPanel;
};

TEST(AppDelegate, APoorDesktopHasNoPanelButTheRestRuns) {
    for (const auto& [name, item, button, panel] :
         {PoorDesktop{"no item", false, true, true}, PoorDesktop{"no button", true, false, true},
          PoorDesktop{"no panel", true, true, false}}) {
        Fixture f;
        f.desktop.givesStatusItem = item;
        f.desktop.givesButton = button;
        f.desktop.givesPanel = panel;
        f.launch();
        f.shell->togglePanel();
        f.shell->closePanel();
        f.shell->settings()->setPanelPinned(true);
        f.pass(1s);
        EXPECT_FALSE(f.desktop.panelVisible) << name;
        EXPECT_TRUE(has(f.snapshot(), "\"name\" : \"Desk\"")) << name;
    }
}

TEST(AppDelegate, WhatTheDesktopKeepsOfAShellThatIsGoneDoesNothing) {
    Fixture f;
    f.launch();
    f.desktop.clickStatusItem();
    f.shell.reset();
    EXPECT_FALSE(f.desktop.monitorInstalled());
    f.desktop.takeHistory();
    f.desktop.clickStatusItem();
    f.desktop.use(TogglePanelPinned{});
    f.desktop.use(OpenLog{});
    f.desktop.pressEscape();
    f.settle();
    EXPECT_EQ(f.desktop.takeHistory(), Lines{});
    EXPECT_TRUE(f.desktop.opened.empty());
}

TEST(AppDelegate, TheEndStopsEverything) {
    Fixture f;
    f.launch();
    const std::weak_ptr<AppDelegate> gone = f.shell;
    f.shell.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(f.hardware.listeners().empty());
    EXPECT_EQ(f.loop.timerCount(), 0U);
    const auto written = f.snapshotsWritten();
    f.pass(3s);
    EXPECT_EQ(f.snapshotsWritten(), written);
}

}  // namespace
}  // namespace purlock
