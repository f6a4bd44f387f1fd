// What the panel costs the main thread, without a screen: its first opening with everything painted, a
// refresh that changes nothing that is seen, and one that changes a lot.

#include <benchmark/benchmark.h>

#include <QApplication>

#include "platform/linux/panel/panel_surface.h"
#include "tests/host-linux/panel/panel_picture.h"
#include "tests/support/panel_states.h"

namespace purlock {
namespace {

using host_linux::PanelSurface;

const View& state(std::size_t place) {
    static const auto states = test::panelStates();
    return states.at(place).view;
}

constexpr std::size_t bitPerfect = 1;
constexpr std::size_t resampling = 2;

std::unique_ptr<PanelSurface> shown(const View& view) {
    auto surface = std::make_unique<PanelSurface>(PanelWindowEvents{[](const Action&) {}, [] {}});
    surface->setFixedSize(360, 600);
    surface->setContent(view);
    surface->show();
    QApplication::processEvents();
    return surface;
}

void firstOpening(benchmark::State& bench) {
    for (auto step : bench) benchmark::DoNotOptimize(shown(state(resampling)));
}
BENCHMARK(firstOpening)->Unit(benchmark::kMillisecond);

void refreshThatChangesNothing(benchmark::State& bench) {
    const auto surface = shown(state(bitPerfect));
    for (auto step : bench) {
        surface->setContent(state(bitPerfect));
        QApplication::processEvents();
    }
}
BENCHMARK(refreshThatChangesNothing)->Unit(benchmark::kMicrosecond);

void refreshThatChangesALot(benchmark::State& bench) {
    const auto surface = shown(state(bitPerfect));
    std::size_t place = bitPerfect;
    for (auto step : bench) {
        place = place == bitPerfect ? resampling : bitPerfect;
        surface->setContent(state(place));
        QApplication::processEvents();
    }
}
BENCHMARK(refreshThatChangesALot)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    purlock::test::usePictureFont();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
