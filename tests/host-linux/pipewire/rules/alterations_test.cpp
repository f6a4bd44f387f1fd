#include "platform/linux/pipewire/rules/alterations.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/host-linux/pipewire/rules/graph_words.h"

namespace purlock::host_linux {
namespace {

using namespace purlock::test;

constexpr std::uint32_t player = 1;
constexpr std::uint32_t between = 2;
constexpr std::uint32_t relay = 3;
constexpr std::uint32_t device = 4;
constexpr std::uint32_t other = 5;
constexpr std::uint32_t leader = 6;

/// A player and a device, a sink with its relay between them, and another player; a row links what it needs.
struct Scene : GraphWords {
    Scene() {
        const SoundFormat format = stereo(s16Layout, 48000);
        stream(player, "mpv", format);
        sink(between, "Loopback", format).properties.linkGroup = "loopback-1";
        stream(relay, "", format).properties.description = "Loopback";
        graph.nodes[relay].properties.linkGroup = "loopback-1";
        sink(device, "Desk DAC", format);
        stream(other, "Firefox", format);
        sink(leader, "Hall", format);
    }
    NodeRecord& at(std::uint32_t id) { return graph.nodes[id]; }
    PlayingPath path(const std::vector<std::uint32_t>& ids) {
        PlayingPath found;
        for (const std::uint32_t id : ids) found.nodes.push_back(&at(id));
        found.application = at(ids.front()).properties.applicationName;
        return found;
    }
    std::vector<Alteration> direct(std::vector<PlayingPath> others = {}) {
        return alterationsOnPath(path({player, device}), others, graph, hardware);
    }
    std::vector<Alteration> throughLoopback(std::vector<PlayingPath> others = {}) {
        return alterationsOnPath(path({player, between, relay, device}), others, graph, hardware);
    }
    /// The device is a card whose volume ALSA's library halves.
    void turnDownInLibrary() {
        at(device).properties.pcm = PcmAddress{1, 0, 0};
        at(device).properties.hasLibraryVolume = true;
        at(device).properties.isRouted = true;
        hardware.libraryVolumes[1] = 0.125;
    }

    CardFacts hardware;
};

using namespace alteration;

struct Case {
    const char* name;
    std::function<std::vector<Alteration>(Scene&)> found;
    std::vector<Alteration> expected;
};

const Case cases[] = {
    {"nothing",
     [](Scene& scene) {
         scene.link(player, device);
         return scene.direct();
     },
     {}},
    {"the stream's volume",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(player).mixing.channelVolumes = {0.125F, 0.125F};
         return scene.direct();
     },
     {StreamVolume{"mpv", 0.5}}},
    {"both volumes and both mutes, in order",
     [](Scene& scene) {
         scene.link(player, device);
         for (const auto id : {player, device}) {
             scene.at(id).mixing.channelVolumes = {0.125F, 0.125F};
             scene.at(id).mixing.isMuted = true;
         }
         return scene.direct();
     },
     {StreamMute{"mpv"}, StreamVolume{"mpv", 0.5}, DeviceMute{"Desk DAC"}, DeviceVolume{"Desk DAC", 0.5}}},
    {"the hardware's own volume",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).mixing.channelVolumes = {0.125F, 0.125F};
         scene.at(device).properties.isRouted = true;
         return scene.direct();
     },
     {}},
    {"channels are mixed down",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(player).portPositions = {SPA_AUDIO_CHANNEL_MONO};
         return scene.direct();
     },
     {Channels{"mpv", 2, 1}}},
    {"links are crossed",
     [](Scene& scene) {
         scene.link(player, device, true);
         return scene.direct();
     },
     {Channels{"mpv", 2, 2}}},
    {"a channel is not linked",
     [](Scene& scene) {
         scene.link(player, device);
         scene.graph.links.erase(std::prev(scene.graph.links.end()));
         return scene.direct();
     },
     {Channels{"mpv", 2, 2}}},
    {"a second stream",
     [](Scene& scene) {
         scene.link(player, device);
         scene.link(other, device);
         return scene.direct({scene.path({other, device})});
     },
     {Mixed{{"Firefox"}}}},
    {"a second stream to another channel",
     [](Scene& scene) {
         scene.link(player, device);
         scene.link(other, device);
         std::erase_if(scene.graph.links, [](const auto& each) {
             const bool isLeft = each.second.inputPort % 2 == 0;
             return (each.second.outputNode == player) != isLeft;
         });
         scene.at(player).format->positions = {SPA_AUDIO_CHANNEL_MONO};
         return scene.direct({scene.path({other, device})});
     },
     {}},
    {"two streams of one application are named once",
     [](Scene& scene) {
         scene.link(player, device);
         scene.link(other, device);
         return scene.direct({scene.path({other, device}), scene.path({other, device})});
     },
     {Mixed{{"Firefox"}}}},
    {"a second stream joins before the loopback",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(other, between);
         scene.link(relay, device);
         return scene.throughLoopback({scene.path({other, between, relay, device})});
     },
     {Mixed{{"Firefox"}}}},
    {"a second stream joins behind the loopback",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.link(other, device);
         return scene.throughLoopback({scene.path({other, device})});
     },
     {Mixed{{"Firefox"}}}},
    {"a loopback",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         return scene.throughLoopback();
     },
     {}},
    {"a loopback that is turned down on both sides",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.at(between).mixing.channelVolumes = {0.125F, 0.125F};
         scene.at(relay).mixing.channelVolumes = {0.729F, 0.729F};
         return scene.throughLoopback();
     },
     {DeviceVolume{"Loopback", 0.5}, StreamVolume{"Loopback", 0.9}}},
    {"a sink that is listened to by its monitor",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.at(between).properties.linkGroup = "";
         scene.at(between).mixing.channelVolumes = {0.125F, 0.125F};
         scene.at(between).mixing.dithers = true;
         return scene.throughLoopback();
     },
     {}},
    {"a sink whose monitor follows its volume",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.at(between).properties.linkGroup = "";
         scene.at(between).mixing.channelVolumes = {0.125F, 0.125F};
         scene.at(between).mixing.reachesMonitor = true;
         return scene.throughLoopback();
     },
     {DeviceVolume{"Loopback", 0.5}}},
    {"a loopback that swaps channels",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.at(relay).format->positions = {SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FL};
         return scene.throughLoopback();
     },
     {Channels{"mpv", 2, 2}}},
    {"a filter, told by its module",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         for (const auto id : {between, relay}) scene.at(id).properties.linkGroup = "filter-chain-1-2";
         return scene.throughLoopback();
     },
     {Filter{"Loopback"}}},
    {"a filter, told by its controls",
     [](Scene& scene) {
         scene.link(player, between);
         scene.link(relay, device);
         scene.at(between).mixing.hasControls = true;
         return scene.throughLoopback();
     },
     {Filter{"Loopback"}}},
    {"a card, whose driver has settings of its own",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).properties.device = 5;
         scene.at(device).mixing.hasControls = true;
         return scene.direct();
     },
     {}},
    {"a volume that the library applies for the card",
     [](Scene& scene) {
         scene.link(player, device);
         scene.turnDownInLibrary();
         return scene.direct();
     },
     {DeviceVolume{"Desk DAC", 0.5}}},
    {"a volume of the library, and what the card leaves to the mixer",
     [](Scene& scene) {
         scene.link(player, device);
         scene.turnDownInLibrary();
         scene.at(device).mixing.softVolumes = {0.125, 0.125};
         return scene.direct();
     },
     {DeviceVolume{"Desk DAC", 0.25}}},
    {"a volume of the library, and a PCM that goes past it",
     [](Scene& scene) {
         scene.link(player, device);
         scene.turnDownInLibrary();
         scene.at(device).properties.hasLibraryVolume = false;
         return scene.direct();
     },
     {}},
    {"a volume of the library for another card",
     [](Scene& scene) {
         scene.link(player, device);
         scene.turnDownInLibrary();
         scene.at(device).properties.pcm = PcmAddress{2, 0, 0};
         return scene.direct();
     },
     {}},
    {"a program in between",
     [](Scene& scene) {
         scene.link(player, between);
         scene.at(between).properties.role = NodeRole::other;
         scene.at(between).properties.linkGroup = "";
         return alterationsOnPath(scene.path({player, between, device}), {}, scene.graph, {});
     },
     {Filter{"Loopback"}}},
    {"another card's clock",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).properties.pcm = PcmAddress{1, 0, 0};
         scene.at(leader).properties.pcm = PcmAddress{2, 0, 0};
         scene.at(device).driver = leader;
         return scene.direct();
     },
     {alteration::Clock{"Desk DAC", "Hall"}}},
    {"the clock of the same card",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).properties.pcm = PcmAddress{1, 0, 0};
         scene.at(leader).properties.pcm = PcmAddress{1, 3, 0};
         scene.at(device).driver = leader;
         return scene.direct();
     },
     {}},
    {"its own clock",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).properties.pcm = PcmAddress{1, 0, 0};
         scene.at(device).driver = device;
         return scene.direct();
     },
     {}},
    {"a sink of software follows any clock",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).driver = leader;
         return scene.direct();
     },
     {}},
    {"dither",
     [](Scene& scene) {
         scene.link(player, device);
         scene.at(device).mixing.dithers = true;
         return scene.direct();
     },
     {Dither{"Desk DAC"}}},
};

TEST(Alterations, Rows) {
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        Scene scene;
        EXPECT_TRUE(row.found(scene) == row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
