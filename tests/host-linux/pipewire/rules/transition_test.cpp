#include "platform/linux/pipewire/rules/transition.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/host-linux/pipewire/rules/graph_words.h"

namespace purlock::host_linux {
namespace {

using namespace purlock::test;

constexpr std::uint32_t player = 1;
constexpr std::uint32_t device = 4;
constexpr std::int64_t newRateFrom = 1000;

/// A player that plays to a device, with stock settings.
struct Scene : GraphWords {
    Scene() {
        stream(player, "mpv", stereo(s16Layout, 44100));
        sink(device, "Desk DAC", stereo(s16Layout, 48000));
        link(player, device);
    }
    NodeRecord& at(std::uint32_t id) { return graph.nodes[id]; }
    void allow() { graph.settings.allowedRates = {44100, 48000}; }
    void see(double rate, std::int64_t time) {
        at(device).clockRate = rate;
        at(device).clockTime = time;
    }
};

struct Case {
    const char* name;
    std::function<void(Scene&)> change;
    bool expected;
    bool knowsClocks = true;
};

const Case cases[] = {
    {"it plays", [](Scene&) {}, false},
    {"nothing plays", [](Scene& scene) { scene.graph.nodes.erase(player); }, false},
    {"the stream leads nowhere", [](Scene& scene) { scene.graph.links.clear(); }, true},
    {"a client of JACK leads nowhere",
     [](Scene& scene) {
         scene.graph.links.clear();
         scene.at(player).properties.isJack = true;
     },
     false},
    {"the stream has no format", [](Scene& scene) { scene.at(player).format.reset(); }, true},
    {"the stream is paused",
     [](Scene& scene) {
         scene.at(player).state = NodeState::idle;
         scene.at(device).state = NodeState::idle;
     },
     false},
    {"the device stands still", [](Scene& scene) { scene.at(device).state = NodeState::suspended; }, true},
    {"the device has no format", [](Scene& scene) { scene.at(device).format.reset(); }, true},
    {"the clock may follow the stream and was not seen", [](Scene& scene) { scene.allow(); }, false},
    {"an old cycle has another rate",
     [](Scene& scene) {
         scene.allow();
         scene.see(48000, newRateFrom - 1);
     },
     true},
    {"a new cycle has another rate",
     [](Scene& scene) {
         scene.allow();
         scene.see(48000, newRateFrom);
     },
     false},
    {"an old cycle has the expected rate",
     [](Scene& scene) {
         scene.allow();
         scene.see(44100, newRateFrom - 1);
     },
     false},
    {"two rates, the clock was not seen",
     [](Scene& scene) {
         scene.allow();
         scene.stream(7, "Firefox", stereo(s16Layout, 48000));
         scene.link(7, device);
     },
     true},
    {"a second stream of the same rate, the clock was not seen",
     [](Scene& scene) {
         scene.allow();
         scene.stream(7, "Firefox", stereo(s16Layout, 44100));
         scene.sink(8, "Hall", stereo(s16Layout, 44100));
         scene.link(7, 8);
     },
     true},
    {"a recorder runs, the clock was not seen",
     [](Scene& scene) {
         scene.allow();
         scene.node(7, NodeRole::other, "recorder");
     },
     true},
    {"the same, but only one rate is allowed",
     [](Scene& scene) { scene.node(7, NodeRole::other, "recorder"); }, false},
    {"the same without a profiler",
     [](Scene& scene) {
         scene.allow();
         scene.stream(7, "Firefox", stereo(s16Layout, 48000));
         scene.link(7, device);
     },
     false, false},
    {"a stream forces a rate", [](Scene& scene) { scene.at(player).properties.forcedRate = 44100; }, true},
    {"the settings force a rate, an old cycle has another",
     [](Scene& scene) {
         scene.graph.settings.forcedRate = 96000;
         scene.see(48000, newRateFrom - 1);
     },
     true},
};

TEST(Transition, Rows) {
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        Scene scene;
        row.change(scene);
        EXPECT_EQ(isInTransition(scene.graph, row.knowsClocks, newRateFrom), row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
