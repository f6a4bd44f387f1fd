// The small services over stand-ins of Foundation, AppKit and IOBluetooth.

#include "platform/macos/applications/workspace_applications.h"
#include "platform/macos/bluetooth/paired_devices.h"
#include "platform/macos/foundation/texts.h"
#include "platform/macos/nowplaying/default_notification_center.h"
#include "platform/macos/runloop/main_run_loop.h"
#include "platform/macos/storage/standard_user_defaults.h"
#include "platform/macos/system/process_info.h"
#include "tests/macos/objc/mac_fixture.h"
#include "tests/macos/standins/values.h"

namespace purlock::host_macos {
namespace {

using standins::OtherValue;
using std::chrono::milliseconds;

struct MacServices : test::MacFixture {};

TEST_F(MacServices, TextsGoThereAndBack) {
    for (const std::string text : {"", "plain", "Löud — 🎧"}) EXPECT_EQ(textOf(makeNSString(text)), text);
    EXPECT_EQ(textOf(@"Purlock — literal"), "Purlock — literal");
    EXPECT_EQ(textOf(static_cast<NSString*>(nil)), std::nullopt);
    const std::string withZero("a\0b", 3);
    EXPECT_EQ(textOf(makeNSString(withZero)), withZero);
    EXPECT_EQ(textOf(makeNSString("\xFF")), "");
}

TEST_F(MacServices, TheVersion) {
    world.version = {14, 2, 1};
    EXPECT_EQ(ProcessInfo().version(), (OperatingSystemVersion{14, 2, 1}));
}

TEST_F(MacServices, RunningApplications) {
    const RunningApplication first{7, "org.player", "Player"};
    const RunningApplication second{9, "org.player", std::nullopt};
    const RunningApplication nameless{11, std::nullopt, "Tool"};
    world.applications = {first, nameless, second};
    WorkspaceApplications applications;
    EXPECT_EQ(applications.runningApplicationWithProcessIdentifier(11), nameless);
    EXPECT_EQ(applications.runningApplicationWithProcessIdentifier(8), std::nullopt);
    EXPECT_EQ(applications.runningApplicationsWithBundleIdentifier("org.player"),
              (std::vector<RunningApplication>{first, second}));
    EXPECT_TRUE(applications.runningApplicationsWithBundleIdentifier("org.none").empty());
}

TEST_F(MacServices, PairedDevices) {
    EXPECT_EQ(PairedDevices().pairedDevices(), std::nullopt) << "nil: nothing is paired";
    world.paired = std::vector<standins::BluetoothEntry>{};
    EXPECT_EQ(PairedDevices().pairedDevices()->size(), 0U);
    world.paired = {{true, "Cans", "Cans", "00-11-22-33-44-55", false},
                    {true, {}, {}, {}, true},
                    {false, {}, "AA-BB", {}, false}};
    const std::vector<PairedBluetoothDevice> expected = {{true, "Cans", "Cans", "00-11-22-33-44-55"},
                                                         {false, {}, "AA-BB", {}}};
    EXPECT_EQ(PairedDevices().pairedDevices(), expected) << "what is no device is dropped";
}

TEST_F(MacServices, NotificationsReachTheirBlocksOnTheMainThread) {
    DefaultNotificationCenter center;
    int calls = 0;
    Cancellable observer = center.addObserverForName("changed", [&calls] { ++calls; });
    world.postNotification("changed");
    world.postNotification("other");
    EXPECT_EQ(calls, 0);
    settle();
    EXPECT_EQ(calls, 1);
    world.postNotification("changed");  // under way when the observer ends
    observer.cancel();
    EXPECT_TRUE(world.observers.empty());
    settle();
    EXPECT_EQ(calls, 1);
}

TEST_F(MacServices, ADroppedObserverLetsGoOfWhatItsBlockHolds) {
    DefaultNotificationCenter center;
    auto held = std::make_shared<int>(0);
    Cancellable observer = center.addObserverForName("changed", [held] {});
    observer.cancel();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(MacServices, TheRunLoopPostsDelaysAndRepeats) {
    MainRunLoop mainLoop;
    std::vector<std::string> order;
    const auto note = [&order](const char* text) { return [&order, text] { order.emplace_back(text); }; };
    const Cancellable timer = mainLoop.repeat(milliseconds(800), note("tick"));
    const Cancellable delayed = mainLoop.postDelayed(milliseconds(80), note("late"));
    Cancellable dropped = mainLoop.postDelayed(milliseconds(80), note("never"));
    dropped.cancel();
    mainLoop.post(note("posted"));
    ASSERT_EQ(world.timers.size(), 1U);
    EXPECT_EQ(world.timers.begin()->second.interval, 0.8);
    EXPECT_TRUE(world.timers.begin()->second.repeats);
    EXPECT_EQ(world.timers.begin()->second.mode, "kCFRunLoopCommonModes");
    loop.advance(milliseconds(1700));
    EXPECT_EQ(order, (std::vector<std::string>{"posted", "late", "tick", "tick"}));
}

TEST_F(MacServices, ATimerMayEndItselfAndLetsGoOfItsTask) {
    MainRunLoop mainLoop;
    auto held = std::make_shared<int>(0);
    Cancellable timer;
    timer = mainLoop.repeat(milliseconds(10), [&timer, held] {
        ++*held;
        timer.cancel();
    });
    loop.advance(milliseconds(100));
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_TRUE(world.timers.empty());
}

struct DefaultsRow {
    const char* name;
    std::optional<standins::StoredValue> stored;
    std::optional<std::string> text;
    std::optional<DefaultsValue> object;
};

TEST_F(MacServices, UserDefaultsRead) {
    const DefaultsRow rows[] = {
        {"missing", {}, {}, {}},
        {"a text", "uid-1", "uid-1", DefaultsValue("uid-1")},
        {"an empty text", "", "", DefaultsValue("")},
        {"true", true, {}, DefaultsValue(true)},
        {"false", false, {}, DefaultsValue(false)},
        {"a number is no Boolean and no text", std::int64_t{1}, {}, DefaultsValue(OtherDefaultsValue{})},
        {"a real number", 1.0, {}, DefaultsValue(OtherDefaultsValue{})},
        {"data", OtherValue{}, {}, DefaultsValue(OtherDefaultsValue{})},
    };
    const StandardUserDefaults defaults;
    for (const DefaultsRow& row : rows) {
        SCOPED_TRACE(row.name);
        world.defaults.clear();
        if (row.stored) world.defaults["key"] = *row.stored;
        EXPECT_EQ(defaults.stringForKey("key"), row.text);
        EXPECT_EQ(defaults.objectForKey("key"), row.object);
    }
}

TEST_F(MacServices, UserDefaultsWrite) {
    StandardUserDefaults defaults;
    defaults.setObject("uid — 1", "pinnedDeviceUID");
    defaults.setBool(false, "logEnabled");
    EXPECT_EQ(world.defaults["pinnedDeviceUID"], standins::StoredValue("uid — 1"));
    EXPECT_EQ(world.defaults["logEnabled"], standins::StoredValue(false));
    defaults.removeObjectForKey("pinnedDeviceUID");
    EXPECT_EQ(world.defaults.count("pinnedDeviceUID"), 0U);
}

}  // namespace
}  // namespace purlock::host_macos
