#include "ui/app_delegate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/audio/monitor_fixture.h"
#include "tests/source/introspection_fixture.h"
#include "tests/source/now_playing_fixture.h"
#include "tests/support/memory_files.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;

/// The whole program on a fake machine.
struct Fixture : test::MonitorFixture {
    test::IntrospectionFixture introspection;
    test::FakeFrameworkLoader loader;
    test::FakeNotificationCenter center{loop};
    std::shared_ptr<test::FakeNowPlayingFramework> framework =
        std::make_shared<test::FakeNowPlayingFramework>();
    test::ManualClock clock{loop, WallTime(1000h)};
    test::MemoryFiles files;
    std::shared_ptr<AppDelegate> shell;

    Fixture() {
        kept.clear();
        monitor.reset();  // the shell makes its own
        loader.provide(framework);
        SettingsStore::shared.provide([this] { return std::make_shared<SettingsStore>(defaults); });
        StateLogger::shared.provide(
            [this] { return std::make_shared<StateLogger>(files, queues, clock, SettingsStore::shared()); });
        StateSnapshot::shared.provide(
            [this] { return std::make_shared<StateSnapshot>(files, queues, clock); });
        shell = std::make_shared<AppDelegate>(seams());
    }

    AppDelegateSeams seams() {
        return {.mainLoop = loop,
                .audio = {hardware, usb, bluetooth, applications, operatingSystem, loop, queues},
                .nowPlaying = {loop, queues, operatingSystem, applications, loader, center},
                .coordinator = {loop, clock, {hardware, applications, operatingSystem}, introspection.seams}};
    }

    void launch() {
        shell->applicationDidFinishLaunching();
        settle();
    }

    /// Lets time pass with the queues running.
    void pass(std::chrono::milliseconds duration) {
        for (const auto end = loop.now() + duration; loop.now() < end;) {
            settle();
            loop.advance(1ms);
        }
        settle();
    }

    const std::string& snapshot() { return files.files["/support/Purlock/state.json"]; }
    const std::string& log() { return files.files["/support/Purlock/log.jsonl"]; }

    std::size_t snapshotsWritten() const {
        return static_cast<std::size_t>(
            std::ranges::count(files.operations, std::string("replace /support/Purlock/state.json")));
    }
};

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
    EXPECT_EQ(std::ranges::count(f.framework->calls(),
                                 "getInfo on " + std::string(applicationIdentifier) + ".purlock.nowplaying"),
              12);
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
