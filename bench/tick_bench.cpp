// The cost of one tick of the safety net on the fake machine: the refresh alone, and all that a tick leads to
// (the state, the snapshot, the report), with the files in memory. Aim for the refresh: 5 us.

#include <benchmark/benchmark.h>

#include "tests/audio/monitor_fixture.h"
#include "tests/ui/shell_fixture.h"

namespace purlock {
namespace {

void refresh(benchmark::State& bench) {
    test::MonitorFixture f;
    f.kept.clear();
    f.start();
    for (auto step : bench) {
        f.monitor->refreshState();
        f.settle();
        f.hardware.takeReads();
    }
}
BENCHMARK(refresh);

void tick(benchmark::State& bench) {
    test::ShellFixture program;
    program.launch();
    for (auto step : bench) {
        program.loop.advance(
            std::chrono::milliseconds(800));  // the timer, and the report 80 ms after the last tick
        program.settle();
        program.hardware.takeReads();
        program.files.operations.clear();
        program.desktop.history.clear();
    }
}
BENCHMARK(tick);

/// The same with the panel open: what the panel shows is worked out as well, several times.
void tickWithOpenPanel(benchmark::State& bench) {
    test::ShellFixture program;
    program.launch();
    program.desktop.clickStatusItem();
    for (auto step : bench) {
        program.loop.advance(std::chrono::milliseconds(800));
        program.settle();
        program.hardware.takeReads();
        program.files.operations.clear();
        program.desktop.history.clear();
    }
}
BENCHMARK(tickWithOpenPanel);

}  // namespace
}  // namespace purlock
