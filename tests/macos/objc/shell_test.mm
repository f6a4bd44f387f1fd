// The whole program, launched as the system launches it, on a Mac of stand-ins.

#include <algorithm>

#include "app/settings_store.h"
#include "app/state_logger.h"
#include "app/state_snapshot.h"
#include "platform/macos/program/launch_delegate.h"
#include "tests/macos/objc/mac_fixture.h"
#include "tests/macos/simulated/accessibility.h"
#include "tests/macos/simulated/bundles.h"
#include "tests/macos/simulated/hal.h"
#include "tests/macos/simulated/io_registry.h"
#include "tests/macos/standins/inspection.h"
#include "tests/macos/standins/values.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using namespace standins;

using Lines = std::vector<std::string>;

/// A Mac with one device, "Desk", and the program on it.
struct MacShell : test::MacFixture {
    test::FakeAudioHardware hardware;
    simulated::Hal hal{hardware};
    simulated::IORegistry registry{{}};
    simulated::Accessibility otherApplication{{}, false};
    simulated::Bundles bundles{"/nowhere", {}};
    test::TemporaryFolder folder;
    PurlockLaunchDelegate* delegate = nil;
    test::FakeDevice desk{50,
                          "Desk",
                          "desk-1",
                          51,
                          test::floatStream(48000),
                          test::integerStream(48000, 32),
                          true,
                          kAudioDeviceTransportTypeHDMI};

    MacShell() {
        world.home = folder.path();
        desk.addTo(hardware);
        constexpr auto global = kAudioObjectPropertyScopeGlobal;
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, global, {50});
        hardware.setValue(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice, 50);
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global, {});
    }

    ~MacShell() override {
        quit();
        EXPECT_TRUE(hardware.listeners().empty());
        EXPECT_EQ(hardware.strayRemovals(), 0);
        EXPECT_TRUE(itemsInBar().empty());
        EXPECT_FALSE(hasEventMonitor());
        EXPECT_EQ(dispatch.ownLiveQueues(), 0U);
    }

    void launch() {
        @autoreleasepool {
            delegate = [PurlockLaunchDelegate new];
            [delegate applicationDidFinishLaunching:[NSNotification new]];
        }
        settle();
    }

    /// Everything that the program made ends, as nothing of it does when the real one is terminated.
    void quit() {
        @autoreleasepool {
            NSApplication.sharedApplication.mainMenu = nil;
            delegate = nil;
            settle();
            StateLogger::shared.provide({});
            StateSnapshot::shared.provide({});
            SettingsStore::shared.provide({});
        }
        settle();
    }

    void pass(std::chrono::milliseconds duration) {
        for (const auto end = loop.now() + duration; loop.now() < end;) {
            settle();
            loop.advance(1ms);
        }
        settle();
    }

    NSStatusBarButton* item() const { return itemsInBar().front().button; }

    void clickItem() {
        click(item());
        settle();
    }

    /// The control of the panel with these words.
    NSControl* control(const std::string& words) const {
        for (NSView* const& view : viewsOfClass(panel().contentView, [NSControl class])) {
            if ([view isKindOfClass:[NSTextField class]]) continue;  // a caption may say the same
            NSString* const label = accessibilityLabelOf(view);
            if (label != nil && utf8(label) == words) return static_cast<NSControl*>(view);
        }
        ADD_FAILURE() << "no control says " << words;
        return nil;
    }

    Lines textsOfPanel() const {
        Lines texts;
        for (NSView* const& view : viewsOfClass(panel().contentView, [NSTextField class])) {
            texts.push_back(utf8(static_cast<NSTextField*>(view).stringValue));
        }
        return texts;
    }

    std::string written(const char* name) const {
        return test::contentsOf(folder.path() / "Library" / "Application Support" / "Purlock" / name);
    }
};

bool contains(const Lines& lines, const std::string& line) {
    return std::ranges::find(lines, line) != lines.end();
}

TEST_F(MacShell, TheLaunchGoesInOrder) {
    launch();
    Lines calls = world.takeCalls();
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("writeToURL"); });
    EXPECT_EQ(calls, (Lines{"setActivationPolicy: 1", "statusItemWithLength: -1", "panel 32896 2 0",
                            "appearanceNamed: NSAppearanceNameVibrantDark"}));
    ASSERT_EQ(world.timers.size(), 1U);
    EXPECT_EQ(world.timers.begin()->second.interval, 0.8);
    EXPECT_TRUE(world.timers.begin()->second.repeats);
    EXPECT_EQ(world.timers.begin()->second.mode, "kCFRunLoopCommonModes");
    EXPECT_EQ(hardware.listeners().size(), 7U);
}

TEST_F(MacShell, TheProgramKeepsItselfAwake) {
    EXPECT_EQ(world.activities, 0);
    launch();
    EXPECT_EQ(world.activities, 1);
    quit();
    EXPECT_EQ(world.activities, 0);
}

TEST_F(MacShell, TheKeysOfTheMenu) {
    launch();
    NSMenu* const menu = NSApplication.sharedApplication.mainMenu;
    EXPECT_EQ(keysOf(menu), (Lines{"Close w closePanel:", "Quit Purlock q terminate:"}));
    clickItem();
    pressKey(menu, "w", {panel(), NSApplication.sharedApplication});
    EXPECT_FALSE(panel().isVisible);
    world.takeCalls();
    pressKey(menu, "q", {panel(), NSApplication.sharedApplication});
    EXPECT_EQ(world.takeCalls(), Lines{"terminate:"});
}

TEST_F(MacShell, NothingOfTheStatusItemIsSetAnewWhileItStays) {
    launch();
    NSImage* const image = item().image;
    NSString* const toolTip = item().toolTip;
    pass(2400ms);
    EXPECT_EQ(item().image, image);
    EXPECT_EQ(item().toolTip, toolTip);
    EXPECT_EQ(accessibilityOf(item()).label, "Purlock — Bit-perfect");
}

TEST_F(MacShell, WhatATickAutoreleasesIsGoneAfterIt) {
    launch();
    clickItem();
    const std::size_t before = runtime::autoreleased();
    pass(2400ms);
    EXPECT_EQ(runtime::autoreleased(), before);
}

TEST_F(MacShell, ThePanelIsAsItIsToBe) {
    launch();
    NSPanel* const window = panel();
    EXPECT_FALSE(window.isVisible);
    EXPECT_EQ(utf8(window.title), "Purlock");
    EXPECT_TRUE(window.titlebarAppearsTransparent);
    EXPECT_EQ(window.titleVisibility, NSWindowTitleHidden);
    EXPECT_FALSE(window.isMovableByWindowBackground);
    EXPECT_EQ(window.level, NSPopUpMenuWindowLevel);
    EXPECT_EQ(window.collectionBehavior,
              NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary);
    EXPECT_FALSE(window.isOpaque);
    EXPECT_EQ(componentsOf(window.backgroundColor).opacity, 0);
    EXPECT_TRUE(window.hasShadow);
    EXPECT_TRUE(window.hidesOnDeactivate);
    EXPECT_FALSE(window.isReleasedWhenClosed);
    EXPECT_TRUE(window.canBecomeKeyWindow);
    NSVisualEffectView* const background = window.contentView;
    ASSERT_TRUE([background isKindOfClass:[NSVisualEffectView class]]);
    EXPECT_EQ(background.material, NSVisualEffectMaterialPopover);
    EXPECT_EQ(background.state, NSVisualEffectStateActive);
    EXPECT_EQ(background.blendingMode, NSVisualEffectBlendingModeBehindWindow);
    EXPECT_NE(background.appearance, nil);
    EXPECT_EQ(background.frame.size.width, 360);
    EXPECT_EQ(background.frame.size.height, 600);
}

struct IconRow {
    const char* name;
    bool running;
    double physicalRate;
    bool hasDevice;
    SymbolFacts symbol;
    const char* toolTip;
};

TEST_F(MacShell, TheIconAndItsToolTipFollowTheDevice) {
    const IconRow rows[] = {
        {"idle", false, 44100, true, {"circle", "Idle", 14, NSFontWeightSemibold, true}, "Purlock — Idle"},
        {"bit-perfect",
         true,
         48000,
         true,
         {"checkmark.seal.fill", "Bit-perfect", 14, NSFontWeightSemibold, false},
         "Purlock — Bit-perfect"},
        {"resampling",
         true,
         44100,
         true,
         {"exclamationmark.triangle.fill", "Resampling", 14, NSFontWeightSemibold, false},
         "Purlock — Resampling"},
        {"no device",
         true,
         48000,
         false,
         {"questionmark.circle", "No device", 14, NSFontWeightSemibold, true},
         "Purlock — No device"},
    };
    launch();
    for (const IconRow& row : rows) {
        SCOPED_TRACE(row.name);
        desk.isRunning = row.running;
        desk.physicalFormat = test::integerStream(row.physicalRate, 32);
        desk.addTo(hardware);
        hardware.setValue(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice,
                          row.hasDevice ? 50 : 0);
        pass(800ms);
        EXPECT_EQ(factsOf(item().image), row.symbol);
        EXPECT_EQ(utf8(item().toolTip), row.toolTip);
    }
}

TEST_F(MacShell, TheIconBeforeAnyDeviceIsKnown) {
    hardware.setValue(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice, 0);
    @autoreleasepool {
        delegate = [PurlockLaunchDelegate new];
        [delegate applicationDidFinishLaunching:[NSNotification new]];
    }
    EXPECT_EQ(factsOf(item().image).name, "questionmark.circle");
    EXPECT_TRUE(factsOf(item().image).isTemplate);
    EXPECT_EQ(item().toolTip, nil);
    settle();
    EXPECT_EQ(utf8(item().toolTip), "Purlock — No device");
}

TEST_F(MacShell, ASymbolThatTheSystemLacksGivesNoImage) {
    world.hasNoSymbols = true;
    launch();
    EXPECT_EQ(item().image, nil);
}

TEST_F(MacShell, AnItemWithoutAButtonOpensNothing) {
    world.itemsHaveButtons = false;
    launch();
    pass(800ms);
    EXPECT_EQ(itemsInBar().front().button, nil);
    EXPECT_FALSE(panel().isVisible);
}

TEST_F(MacShell, AClickOnTheItemShowsThePanelUnderItAndAnotherHidesIt) {
    launch();
    world.takeCalls();
    clickItem();
    EXPECT_TRUE(panel().isVisible);
    EXPECT_EQ(panel().frame.origin.x, 1000 + 30 * 0.5 - 360 * 0.5);
    EXPECT_EQ(panel().frame.origin.y, 876 - 600);
    Lines calls = world.takeCalls();
    std::erase_if(calls, [](const std::string& call) {
        return call != "key and front" && !call.starts_with("activate") &&
               !call.starts_with("addGlobalMonitor");
    });
    EXPECT_EQ(calls, (Lines{"activateIgnoringOtherApps: 1", "key and front", "addGlobalMonitor 10"}));
    world.takeCalls();
    clickItem();
    EXPECT_FALSE(panel().isVisible);
    calls = world.takeCalls();
    EXPECT_TRUE(contains(calls, "orderOut:"));
    EXPECT_TRUE(contains(calls, "removeMonitor:"));
    EXPECT_FALSE(hasEventMonitor());
}

TEST_F(MacShell, AnItemWithoutAWindowPlacesThePanelAtTheOrigin) {
    world.itemFrame.reset();
    launch();
    clickItem();
    EXPECT_EQ(panel().frame.origin.x, -180);
    EXPECT_EQ(panel().frame.origin.y, -600);
}

TEST_F(MacShell, AClickOutsideAndTheEscapeKeyCloseThePanel) {
    launch();
    clickItem();
    clickOutside();
    EXPECT_FALSE(panel().isVisible);
    EXPECT_FALSE(hasEventMonitor());
    clickItem();
    [panel() cancelOperation:nil];
    EXPECT_FALSE(panel().isVisible);
    EXPECT_FALSE(hasEventMonitor());
}

TEST_F(MacShell, ARefusedMonitorLeavesThePanelOpen) {
    world.refusesMonitors = true;
    launch();
    clickItem();
    EXPECT_TRUE(panel().isVisible);
    EXPECT_FALSE(hasEventMonitor());
}

TEST_F(MacShell, ThePinIsStoredAndKeepsThePanelOpen) {
    launch();
    clickItem();
    click(control("Pin (keep panel open)"));
    settle();
    EXPECT_EQ(world.defaults["panelPinned"], StoredValue(true));
    EXPECT_FALSE(hasEventMonitor());
    clickOutside();
    EXPECT_TRUE(panel().isVisible);
    click(control("Unpin (close on outside click)"));
    settle();
    EXPECT_EQ(world.defaults["panelPinned"], StoredValue(false));
    EXPECT_TRUE(hasEventMonitor());
}

TEST_F(MacShell, AStoredPinInstallsNoMonitor) {
    world.defaults["panelPinned"] = true;
    launch();
    clickItem();
    EXPECT_FALSE(hasEventMonitor());
}

TEST_F(MacShell, TheDeviceMenuPinsADevice) {
    launch();
    clickItem();
    chooseInNextMenu("Desk");
    click(control("Output device"));
    settle();
    EXPECT_TRUE(contains(lastMenu(), "Desk"));
    EXPECT_TRUE(contains(lastMenu(), "-"));
    EXPECT_EQ(world.defaults["pinnedDeviceUID"], StoredValue("desk-1"));
    EXPECT_TRUE(contains(textsOfPanel(), "📌 Desk"));
    chooseInNextMenu(lastMenu().front());
    click(control("Output device"));
    settle();
    EXPECT_EQ(world.defaults.count("pinnedDeviceUID"), 0U);
}

TEST_F(MacShell, TheSwitchTurnsTheLogOff) {
    launch();
    clickItem();
    auto* const logSwitch = static_cast<NSSwitch*>(control("Log to file"));
    EXPECT_EQ(logSwitch.controlSize, NSControlSizeMini);
    EXPECT_EQ(logSwitch.state, NSControlStateValueOn);
    logSwitch.state = NSControlStateValueOff;  // as a click does before the action is sent
    click(logSwitch);
    settle();
    EXPECT_EQ(world.defaults["logEnabled"], StoredValue(false));
    EXPECT_EQ(static_cast<NSSwitch*>(control("Log to file")), logSwitch) << "the very same switch";
    EXPECT_EQ(logSwitch.state, NSControlStateValueOff);
}

TEST_F(MacShell, TheButtonsOfThePanel) {
    launch();
    clickItem();
    world.takeCalls();
    click(control("Show log"));
    EXPECT_EQ(
        world.takeCalls(),
        Lines{"openURL: " + (folder.path() / "Library/Application Support/Purlock/log.jsonl").native()});
    world.opensNothing = true;
    click(control("Show log"));
    EXPECT_EQ(
        world.takeCalls().back(),
        "select in Finder: " + (folder.path() / "Library/Application Support/Purlock/log.jsonl").native());
    click(control("Quit"));
    EXPECT_EQ(world.takeCalls(), Lines{"terminate:"});
    const auto buttons = viewsOfClass(panel().contentView, [NSButton class]);
    for (NSView* const& button : buttons) {
        const std::string words = utf8(accessibilityLabelOf(button));
        if (words.find("Accessibility") != std::string::npos) click(static_cast<NSControl*>(button));
    }
    EXPECT_EQ(otherApplication.prompts, 1U);
}

TEST_F(MacShell, TheTimerRewritesTheSnapshotAndTheLogStaysQuiet) {
    launch();
    EXPECT_NE(written("state.json").find("\"name\" : \"Desk\""), std::string::npos);
    const std::string log = written("log.jsonl");
    EXPECT_NE(log.find("\"verdict\":\"bitPerfect\""), std::string::npos);
    world.takeCalls();
    pass(799ms);
    EXPECT_TRUE(world.takeCalls().empty());
    pass(1ms);
    EXPECT_EQ(world.takeCalls(), Lines{"writeToURL:atomically: 1"});
    pass(1600ms);
    EXPECT_EQ(world.takeCalls().size(), 2U);
    EXPECT_EQ(written("log.jsonl"), log);
}

TEST_F(MacShell, ANotificationOfTheHalIsSeenInThePanel) {
    launch();
    clickItem();
    hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(96000, 24));
    hardware.notify(51, kAudioStreamPropertyPhysicalFormat, kAudioObjectPropertyScopeGlobal);
    settle();
    EXPECT_EQ(utf8(item().toolTip), "Purlock — Resampling");
    EXPECT_NE(written("log.jsonl").find("\"verdict\":\"resampling\""), std::string::npos);
    pass(80ms);
    EXPECT_TRUE(contains(textsOfPanel(), "macOS is resampling"));
}

/// What stands in the panel two ticks after the device has become a resampling one.
struct MacShellInTheBackground : MacShell {
    bool showsResampling() {
        hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(96000, 24));
        pass(1700ms);
        return contains(textsOfPanel(), "macOS is resampling");
    }
};

TEST_F(MacShellInTheBackground, APanelThatIsNotVisibleAtOnceComesToLife) {
    launch();
    world.isActive = false;  // the activation takes its time
    clickItem();
    world.isActive = true;
    EXPECT_TRUE(showsResampling());
}

TEST_F(MacShellInTheBackground, APanelThatTheSystemShowsAgainIsUpToDate) {
    launch();
    clickItem();
    pass(1s);
    world.isActive = false;
    pass(2s);
    world.isActive = true;
    EXPECT_TRUE(showsResampling());
}

TEST_F(MacShell, WhatIsStillUnderWayAtTheEndFindsNobody) {
    launch();
    clickItem();
    hardware.notify(51, kAudioStreamPropertyPhysicalFormat, kAudioObjectPropertyScopeGlobal);
    const auto listeners = hardware.listeners();
    quit();
    hardware.takeReads();
    for (const auto& listener : listeners) (*listener.block)();
    clickOutside();
    pass(2s);
    EXPECT_TRUE(hardware.takeReads().empty());
}

}  // namespace
}  // namespace purlock
