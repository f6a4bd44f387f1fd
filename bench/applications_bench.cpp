// From processes to applications on this machine as it is: what a recomputation costs, and what reading the
// desktop files costs their queue.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include "base/worker_pool.h"
#include "platform/linux/applications/desktop_applications.h"

namespace purlock::host_linux {
namespace {

void applicationOfOneProcess(benchmark::State& state) {
    WorkerPool pool(1);
    DesktopApplications applications(pool.makeSerialQueue("desktop"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(applications.runningApplicationWithProcessIdentifier(getpid()));
    }
}
BENCHMARK(applicationOfOneProcess)->Unit(benchmark::kMicrosecond);

void processesOfOneApplication(benchmark::State& state) {
    WorkerPool pool(1);
    DesktopApplications applications(pool.makeSerialQueue("desktop"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(applications.runningApplicationsWithBundleIdentifier("com.spotify.client"));
    }
    state.counters["processes"] = static_cast<double>(ProcessFiles().processes().size());
}
BENCHMARK(processesOfOneApplication)->Unit(benchmark::kMicrosecond);

void readDesktopFiles(benchmark::State& state) {
    std::size_t files = 0;
    for (auto _ : state) {
        files = DesktopIndex::read(desktopDataFolders(), localeSuffixes("de_DE.UTF-8")).size();
    }
    state.counters["files"] = static_cast<double>(files);
}
BENCHMARK(readDesktopFiles)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace purlock::host_linux
