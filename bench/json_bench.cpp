// The JSON writer on a snapshot of the state, the text that is written most often.

#include <benchmark/benchmark.h>

#include "base/json.h"
#include "bench/allocation_counter.h"

namespace purlock {
namespace {

JsonValue::Object format(const char* label, double rate, std::uint32_t bits) {
    return JsonValue::Object({{"bitsPerChannel", bits},
                              {"bitsPerSecond", rate * bits * 2},
                              {"channels", std::uint32_t{2}},
                              {"label", label},
                              {"sampleRate", rate}});
}

JsonValue snapshot() {
    return JsonValue::Object(
        {{"device", JsonValue::Object({{"isRunning", true},
                                       {"name", "Studio Converter — Analogue Stereo"},
                                       {"transport", "USB"},
                                       {"uid", "alsa_output.usb-Studio_Converter-00.analog-stereo"}})},
         {"physical", format("Int24", 48000, 24)},
         {"timestamp", "2026-11-15T23:06:17Z"},
         {"verdict", JsonValue::Object({{"bitDepth", std::uint32_t{24}},
                                        {"headline", "Resampling"},
                                        {"kind", "resampling"},
                                        {"rate", 48000.0}})},
         {"virtual", format("Float32", 44100, 32)}});
}

void write(benchmark::State& bench, JsonLayout layout) {
    const JsonValue value = snapshot();
    const std::size_t before = bench::allocationCount();
    for (auto step : bench) benchmark::DoNotOptimize(jsonText(value, layout));
    bench.counters["allocations"] = benchmark::Counter(static_cast<double>(bench::allocationCount() - before),
                                                       benchmark::Counter::kAvgIterations);
    bench.counters["bytes"] = static_cast<double>(jsonText(value, layout).value_or("").size());
}

void writeSnapshotPretty(benchmark::State& bench) {
    write(bench, JsonLayout::pretty);
}
BENCHMARK(writeSnapshotPretty);

void writeSnapshotCompact(benchmark::State& bench) {
    write(bench, JsonLayout::compact);
}
BENCHMARK(writeSnapshotCompact);

void buildAndWriteSnapshot(benchmark::State& bench) {
    for (auto step : bench) benchmark::DoNotOptimize(jsonText(snapshot(), JsonLayout::pretty));
}
BENCHMARK(buildAndWriteSnapshot);

}  // namespace
}  // namespace purlock
