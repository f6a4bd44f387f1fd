// A walk over the snapshot of a large application, on the main thread at every look; and what makes the
// snapshot, on the bus thread.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/accessibility/cache_items.h"
#include "platform/linux/accessibility/snapshot_element.h"
#include "source/accessibility_scraper.h"

namespace purlock::host_linux {
namespace {

std::vector<CacheItem> tree(std::int64_t elements) {
    std::vector<CacheItem> items;
    for (std::int64_t i = 0; i < elements; ++i) {
        items.push_back(
            {i == 0 ? std::string(applicationElementPath) : "/org/a11y/atspi/accessible/" + std::to_string(i),
             i <= 10 ? std::string(applicationElementPath)
                     : "/org/a11y/atspi/accessible/" + std::to_string((i - 1) / 10),
             i % 10,
             {},
             "an element with a name of usual length",
             "",
             false,
             true});
    }
    return items;
}

void buildSnapshot(benchmark::State& state) {
    const auto items = tree(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(buildTree(items, {}));
}
BENCHMARK(buildSnapshot)->Arg(20'000)->Unit(benchmark::kMillisecond);

void walkSnapshot(benchmark::State& state) {
    const auto snapshot = std::make_shared<const Snapshot>(buildTree(tree(state.range(0)), {})->snapshot);
    const std::vector<std::string> patterns{"hi-res lossless", "hi-res", "max", "lossless", "high", "normal"};
    for (auto _ : state) {
        SnapshotElement application(snapshot, 0);
        benchmark::DoNotOptimize(AccessibilityScraper::walk(application, patterns, 0));
    }
}
BENCHMARK(walkSnapshot)->Arg(1'000)->Arg(20'000)->Arg(25'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace purlock::host_linux
