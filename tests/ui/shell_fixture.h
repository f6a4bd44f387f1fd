#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "tests/source/introspection_fixture.h"
#include "tests/source/now_playing_fixture.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/fake_machine.h"
#include "tests/support/memory_files.h"
#include "tests/support/memory_user_defaults.h"
#include "ui/app_delegate.h"

namespace purlock::test {

/// The whole program on a fake machine.
struct ShellFixture : FakeMachine {
    std::shared_ptr<MemoryUserDefaults> defaults = std::make_shared<MemoryUserDefaults>();
    IntrospectionFixture introspection;
    FakeFrameworkLoader loader;
    FakeNotificationCenter center{loop};
    std::shared_ptr<FakeNowPlayingFramework> framework = std::make_shared<FakeNowPlayingFramework>();
    ManualClock clock{loop, WallTime(std::chrono::hours(1000))};
    MemoryFiles files;
    FakeDesktop desktop;
    std::shared_ptr<AppDelegate> shell;

    /// What a host of its own may add.
    struct Host {
        SystemWords words = {};
        bool hasClipboard = false;
    };
    const Host host;

    ShellFixture() : ShellFixture(Host{}) {}

    explicit ShellFixture(Host ability) : host(std::move(ability)) {
        desktop.hasClipboard = host.hasClipboard;
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
                .audio = {hardware, usb, bluetooth, operatingSystem, loop, queues},
                .nowPlaying = {loop, queues, operatingSystem, applications, loader, center},
                .coordinator =
                    {loop, clock, {hardware, applications, operatingSystem}, introspection.seams, host.words},
                .windows = desktop.seams()};
    }

    void launch() {
        shell->applicationDidFinishLaunching();
        settle();
    }

    /// From now on the desktop's history tells of work for the queues, too: "to logger".
    void noteWork() {
        queues.onAsync = [this](const std::string& label) {
            desktop.history.push_back("to " + label.substr(label.rfind('.') + 1));
        };
    }

    /// How often the now-playing framework was asked what plays.
    std::size_t questionsToFramework() const {
        return static_cast<std::size_t>(std::ranges::count_if(
            framework->calls(), [](const std::string& call) { return call.starts_with("getInfo "); }));
    }

    /// Lets time pass with the queues running.
    void pass(std::chrono::milliseconds duration) {
        for (const auto end = loop.now() + duration; loop.now() < end;) {
            settle();
            loop.advance(std::chrono::milliseconds(1));
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

}  // namespace purlock::test
