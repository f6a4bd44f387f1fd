#include "platform/linux/pipewire/rules/sound_path.h"

#include <gtest/gtest.h>

#include "tests/host-linux/pipewire/rules/graph_words.h"

namespace purlock::host_linux {
namespace {

using namespace purlock::test;

SoundFormat companded() {
    SoundFormat format = stereo(u8Layout, 48000);
    format.kind = SoundKind::companded;
    return format;
}

/// From a stream through a sink and its relay, where there is one, to the device.
TEST(SoundPath, Losses) {
    struct Case {
        const char* name;
        SoundFormat stream;
        std::optional<SoundFormat> between;
        double clock;
        SoundFormat device;
        std::optional<double> rate;
        std::optional<std::uint32_t> bits;
    };
    const Case cases[] = {
        {"nothing differs", stereo(s16Layout, 48000), {}, 48000, stereo(s16Layout, 48000), {}, {}},
        {"widened", stereo(s16Layout, 48000), {}, 48000, stereo(s24Layout, 48000), {}, {}},
        {"eight bits widened", stereo(u8Layout, 48000), {}, 48000, stereo(s16Layout, 48000), {}, {}},
        {"float to 24 bits", stereo(f32Layout, 48000), {}, 48000, stereo(s24Layout, 48000), {}, {}},
        {"32 bits to 24", stereo(s32Layout, 48000), {}, 48000, stereo(s24Layout, 48000), {}, {}},
        {"24 bits to 16", stereo(s24Layout, 48000), {}, 48000, stereo(s16Layout, 48000), {}, 24},
        {"32 bits to 16", stereo(s32Layout, 48000), {}, 48000, stereo(s16Layout, 48000), {}, 32},
        {"16 bits to 8", stereo(s16Layout, 48000), {}, 48000, stereo(u8Layout, 48000), {}, 16},
        {"the stream's rate differs",
         stereo(s16Layout, 44100),
         {},
         48000,
         stereo(s16Layout, 48000),
         44100,
         {}},
        {"the clock differs", stereo(s16Layout, 48000), {}, 44100, stereo(s16Layout, 48000), 44100, {}},
        {"the device differs", stereo(s16Layout, 48000), {}, 48000, stereo(s16Layout, 44100), 48000, {}},
        {"all differ", stereo(s16Layout, 44100), {}, 96000, stereo(s16Layout, 48000), 96000, {}},
        {"rate and bits", stereo(s24Layout, 96000), {}, 48000, stereo(s16Layout, 48000), 96000, 24},
        {"handed on",
         stereo(s16Layout, 48000),
         stereo(f32Layout, 48000),
         48000,
         stereo(s16Layout, 48000),
         {},
         {}},
        {"handed on at another rate",
         stereo(s16Layout, 48000),
         stereo(f32Layout, 44100),
         48000,
         stereo(s16Layout, 48000),
         44100,
         {}},
        {"handed on in fewer bits",
         stereo(s24Layout, 48000),
         stereo(s16Layout, 48000),
         48000,
         stereo(s32Layout, 48000),
         {},
         24},
        {"handed on in fewer bits than equal ends",
         stereo(s32Layout, 48000),
         stereo(s16Layout, 48000),
         48000,
         stereo(s32Layout, 48000),
         {},
         16},
        {"steps that are not even", stereo(s16Layout, 48000), {}, 48000, companded(), {}, 16},
        {"the same of eight bits", stereo(u8Layout, 48000), {}, 48000, companded(), {}, 32},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        GraphWords words;
        SoundPath path = {&words.stream(1, "player", row.stream)};
        if (row.between) {
            path.push_back(&words.sink(2, "between", *row.between));
            path.push_back(&words.stream(3, "relay", *row.between));
            for (const std::uint32_t id : {2U, 3U}) words.graph.nodes[id].properties.linkGroup = "loopback-1";
        }
        path.push_back(&words.sink(4, "device", row.device));
        const PathLoss loss = lossOnPath(path, row.device, row.clock);
        EXPECT_EQ(loss.rate, row.rate);
        EXPECT_EQ(loss.layout ? std::optional(loss.layout->bits) : std::nullopt, row.bits);
        EXPECT_EQ(loss.isAny(), row.rate || row.bits);
    }
}

TEST(SoundPath, AMonitorGivesWhatItsSinkTakesIn) {
    GraphWords words;
    NodeRecord& between = words.sink(2, "null", stereo(s16Layout, 44100));
    SoundPath path = {&words.stream(1, "player", stereo(s24Layout, 48000)), &between,
                      &words.stream(3, "relay", stereo(f32Layout, 48000)),
                      &words.sink(4, "device", stereo(s24Layout, 48000))};
    EXPECT_FALSE(lossOnPath(path, *path.back()->format, 48000).isAny());
    between.properties.linkGroup = words.graph.nodes[3].properties.linkGroup = "loopback-1";
    EXPECT_TRUE(lossOnPath(path, *path.back()->format, 48000).isAny());
}

TEST(SoundPath, AStreamWithoutAFormatHandsOverWhatTheMixerComputesIn) {
    GraphWords words;
    NodeRecord& client = words.stream(1, "jack", {});
    client.format.reset();
    const SoundPath path = {&client, &words.sink(4, "device", stereo(s16Layout, 48000))};
    const PathLoss loss = lossOnPath(path, *path.back()->format, 48000);
    EXPECT_FALSE(loss.rate);
    EXPECT_EQ(loss.layout, mixerLayout());
}

}  // namespace
}  // namespace purlock::host_linux
