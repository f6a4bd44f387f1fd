// Aim: 3 us and 40 allocations or fewer for one full evaluation in the worst case.

#include <benchmark/benchmark.h>

#include "base/uuid.h"
#include "bench/allocation_counter.h"
#include "core/cause_engine.h"

namespace purlock {
namespace {

DeviceState usbDevice(const AudioFormat& virtualFormat, const AudioFormat& physicalFormat) {
    DeviceState state;
    state.deviceID = 42;
    state.name = "Studio Converter Analogue Stereo";
    state.uid = "alsa_output.usb-Studio_Converter-00.analog-stereo:Studio:Converter";
    state.virtualFormat = virtualFormat;
    state.physicalFormat = physicalFormat;
    state.isRunning = true;
    state.transportType = DeviceTransport::usb;
    state.usbInfo = USBDeviceInfo{"Studio Electronics", "Studio Converter Mark III", "USB Audio", {}};
    return state;
}

void evaluate(benchmark::State& bench, const AudioFormat& virtualFormat, const AudioFormat& physicalFormat,
              std::size_t findings) {
    const std::optional<DeviceState> state = usbDevice(virtualFormat, physicalFormat);
    const std::optional<NowPlayingInfo> nowPlaying =
        NowPlayingInfo{"A Song with a Long Title", "An Artist", "An Album", "com.tidal.desktop",
                       "Tidal Desktop Player",     true,        1,          200};
    const std::optional<AudioProcessInfo> process =
        AudioProcessInfo{4711, "com.tidal.desktop", "Tidal Desktop Player", true};
    const std::optional<SourceClaim> claim =
        SourceClaim{SourceApp::tidal, "HI-RES LOSSLESS", "HI-RES LOSSLESS", 96000, 24, true, true, "FLAC"};
    if (CauseEngine::evaluate(state, nowPlaying, process, claim).diagnostics.size() != findings) {
        bench.SkipWithError("not the case that was meant");
        return;
    }
    const std::size_t before = bench::allocationCount();
    for (auto step : bench) {
        benchmark::DoNotOptimize(CauseEngine::evaluate(state, nowPlaying, process, claim));
    }
    bench.counters["allocations"] = benchmark::Counter(static_cast<double>(bench::allocationCount() - before),
                                                       benchmark::Counter::kAvgIterations);
}

void evaluateTwoFindings(benchmark::State& bench) {
    evaluate(bench, {96000, 32, 2, 9, formatLinearPCM}, {44100, 24, 2, 12, formatLinearPCM}, 2);
}
BENCHMARK(evaluateTwoFindings);

/// More than two findings never come on USB but with a claim above both rates and depths.
void evaluateFourFindings(benchmark::State& bench) {
    evaluate(bench, {48000, 16, 2, 12, formatLinearPCM}, {44100, 24, 2, 12, formatLinearPCM}, 4);
}
BENCHMARK(evaluateFourFindings);

void evaluateBitPerfect(benchmark::State& bench) {
    evaluate(bench, {96000, 24, 2, 12, formatLinearPCM}, {96000, 24, 2, 12, formatLinearPCM}, 0);
}
BENCHMARK(evaluateBitPerfect);

void makeUuid(benchmark::State& bench) {
    for (auto step : bench) benchmark::DoNotOptimize(Uuid::random());
}
BENCHMARK(makeUuid);

}  // namespace
}  // namespace purlock
