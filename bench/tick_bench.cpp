// The cost of one tick of the safety net on the fake machine: the refresh alone, and all that a tick leads to
// (the state, the snapshot, the report), with the files in memory. Aim for the refresh: 5 us.

#include <benchmark/benchmark.h>

#include "tests/audio/monitor_fixture.h"
#include "tests/source/introspection_fixture.h"
#include "tests/source/now_playing_fixture.h"
#include "tests/support/memory_files.h"
#include "ui/app_delegate.h"

namespace purlock {
namespace {

void refresh(benchmark::State& bench) {
    test::MonitorFixture f;
    f.kept.clear();
    f.start();
    for (auto step : bench) {
        f.monitor->refreshState();
        f.loop.runPosted();
        f.hardware.takeReads();
    }
}
BENCHMARK(refresh);

/// A machine with the whole program on it.
struct Program : test::MonitorFixture {
    test::IntrospectionFixture introspection;
    test::FakeFrameworkLoader loader;
    test::FakeNotificationCenter center{loop};
    test::ManualClock clock{loop, WallTime(std::chrono::hours(1000))};
    test::MemoryFiles files;
    std::shared_ptr<AppDelegate> shell;

    Program() {
        kept.clear();
        monitor.reset();
        loader.provide(std::make_shared<test::FakeNowPlayingFramework>());
        SettingsStore::shared.provide([this] { return std::make_shared<SettingsStore>(defaults); });
        StateLogger::shared.provide(
            [this] { return std::make_shared<StateLogger>(files, queues, clock, SettingsStore::shared()); });
        StateSnapshot::shared.provide(
            [this] { return std::make_shared<StateSnapshot>(files, queues, clock); });
        shell = std::make_shared<AppDelegate>(AppDelegateSeams{
            .mainLoop = loop,
            .audio = {hardware, usb, bluetooth, applications, operatingSystem, loop, queues},
            .nowPlaying = {loop, queues, operatingSystem, applications, loader, center},
            .coordinator = {loop, clock, {hardware, applications, operatingSystem}, introspection.seams}});
        shell->applicationDidFinishLaunching();
        settle();
    }
};

void tick(benchmark::State& bench) {
    Program program;
    for (auto step : bench) {
        program.loop.advance(
            std::chrono::milliseconds(800));  // the timer, and the report 80 ms after the last tick
        program.settle();
        program.hardware.takeReads();
        program.files.operations.clear();
    }
}
BENCHMARK(tick);

}  // namespace
}  // namespace purlock
