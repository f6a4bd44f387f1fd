#include "platform/linux/pipewire/rules/rate_reason.h"

#include <gtest/gtest.h>
#include <spa/param/audio/format-utils.h>
#include <spa/pod/builder.h>

#include <array>
#include <cstddef>

#include "platform/linux/pipewire/rules/link_codec.h"
#include "platform/linux/pipewire/rules/offered_rates.h"

namespace purlock::host_linux {
namespace {

using namespace rate_reason;

/// A stream that plays to a device, and what may go on beside it. Rates in Hz; 0 for none.
struct Case {
    const char* name;
    double stream;
    double clock;
    double device;
    std::vector<RateRange> offered;
    std::optional<std::uint32_t> setRate;
    std::uint32_t forced;
    std::vector<std::uint32_t> allowed;
    double other;  // rate of another stream that plays
    std::optional<std::uint32_t> otherForces;
    std::optional<std::uint32_t> otherDriver;  // the stream's own is 1
    std::optional<RateReason> expected;
};

const std::vector<RateRange> all = {{44100, 192000}};
const std::vector<RateRange> only48 = {{48000, 48000}};
const std::vector<RateRange> two = {{44100, 44100}, {48000, 48000}};
const std::vector<std::uint32_t> both = {44100, 48000};

const Case cases[] = {
    {"the device can't", 44100, 48000, 48000, only48, {}, 0, both, 0, {}, {}, DeviceCannot{}},
    {"the device can't, its clock would",
     44100,
     44100,
     48000,
     only48,
     {},
     0,
     both,
     0,
     {},
     {},
     DeviceCannot{}},
    {"the device can't, whatever is forced",
     44100,
     48000,
     48000,
     only48,
     {},
     48000,
     both,
     0,
     {},
     {},
     DeviceCannot{}},
    {"the device is set", 44100, 48000, 48000, only48, 48000, 0, both, 0, {}, {}, DeviceIsSet{}},
    {"set to the stream's own rate", 48000, 44100, 48000, only48, 48000, 44100, both, 0, {}, {}, Forced{}},
    {"set, but it offers more", 44100, 48000, 48000, two, 48000, 0, {48000}, 0, {}, {}, NotAllowed{{48000}}},
    {"not allowed", 44100, 48000, 48000, all, {}, 0, {48000, 96000}, 0, {}, {}, NotAllowed{{48000, 96000}}},
    {"nothing is allowed but the default",
     44100,
     48000,
     48000,
     all,
     {},
     0,
     {},
     0,
     {},
     {},
     NotAllowed{{48000}}},
    {"what the device offers is not told",
     44100,
     48000,
     48000,
     {},
     {},
     0,
     {48000},
     0,
     {},
     {},
     NotAllowed{{48000}}},
    {"not allowed, on a device of that rate",
     44100,
     48000,
     44100,
     two,
     {},
     0,
     {48000},
     0,
     {},
     {},
     NotAllowed{{48000}}},
    {"forced", 44100, 96000, 96000, all, {}, 96000, both, 0, {}, {}, Forced{}},
    {"forced to the stream's rate, not yet there",
     44100,
     48000,
     48000,
     all,
     {},
     44100,
     both,
     0,
     {},
     {},
     std::nullopt},
    {"forced by a stream", 44100, 96000, 96000, all, {}, 0, both, 96000, 96000, {}, ForcedByStream{"other"}},
    {"forced by a stream to its own rate",
     44100,
     96000,
     96000,
     all,
     {},
     0,
     both,
     96000,
     0,
     {},
     ForcedByStream{"other"}},
    {"forced by a stream, on the same clock",
     44100,
     96000,
     96000,
     all,
     {},
     0,
     both,
     96000,
     96000,
     1,
     ForcedByStream{"other"}},
    {"forced by a stream, on another clock",
     44100,
     96000,
     96000,
     all,
     {},
     0,
     both,
     96000,
     96000,
     2,
     std::nullopt},
    {"held by a stream", 44100, 48000, 48000, all, {}, 0, both, 48000, {}, {}, HeldByStream{"other"}},
    {"held by a stream, on the same clock",
     44100,
     48000,
     48000,
     all,
     {},
     0,
     both,
     48000,
     {},
     1,
     HeldByStream{"other"}},
    {"another clock holds nothing", 44100, 48000, 48000, all, {}, 0, both, 48000, {}, 2, std::nullopt},
    {"a stream of another rate holds nothing",
     44100,
     48000,
     48000,
     all,
     {},
     0,
     both,
     32000,
     {},
     {},
     std::nullopt},
    {"nobody can be named", 44100, 48000, 48000, all, {}, 0, both, 0, {}, {}, std::nullopt},
    {"the device has not followed", 44100, 44100, 48000, all, {}, 0, both, 0, {}, {}, std::nullopt},
    {"a stream without a rate", 0, 44100, 48000, only48, {}, 0, both, 0, {}, {}, DeviceCannot{}},
};

RateConversion conversionOf(const Case& row) {
    AudioGraph graph;
    graph.settings.forcedRate = row.forced;
    graph.settings.allowedRates = row.allowed;
    NodeRecord& stream = graph.nodes[1];
    stream.properties.role = NodeRole::outputStream;
    stream.state = NodeState::running;
    if (row.stream > 0) stream.format = SoundFormat{.sampleRate = row.stream};
    NodeRecord& sink = graph.nodes[2];
    sink.properties.role = NodeRole::sink;
    sink.state = NodeState::running;
    sink.driver = 1;
    sink.offeredRates = row.offered;
    sink.properties.setRate = row.setRate;
    if (row.other > 0) {
        NodeRecord& other = graph.nodes[3];
        other.properties.role = NodeRole::outputStream;
        other.properties.applicationName = "other";
        other.properties.requestedRate = static_cast<std::uint32_t>(row.other);
        other.properties.forcedRate = row.otherForces;
        other.driver = row.otherDriver;
        other.state = NodeState::running;
    }
    return rateConversionOnPath({{&graph.nodes[1], &graph.nodes[2]}, "judged"},
                                {row.device, row.clock, row.clock}, graph);
}

TEST(RateReason, IsFound) {
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const RateConversion found = conversionOf(row);
        EXPECT_TRUE(found.reason == row.expected)
            << (found.reason ? static_cast<int>(found.reason->index()) : -1);
        EXPECT_EQ(found.streamRate, row.stream > 0 ? row.stream : row.clock);
        EXPECT_EQ(found.mixerRate, row.clock);
    }
}

TEST(RateReason, OfAConversionInBetweenIsNotKnown) {
    AudioGraph graph;
    NodeRecord& stream = graph.nodes[1];
    stream.format = SoundFormat{.sampleRate = 48000};
    const PlayingPath path{{&stream, &graph.nodes[2]}, "judged"};
    const RateConversion expected{48000, 44100, std::nullopt};
    EXPECT_EQ(rateConversionOnPath(path, {48000, 48000, 44100}, graph), expected);
}

TEST(RateReason, OfALinkIsNotASetting) {
    for (const bool isBluetooth : {true, false}) {
        AudioGraph graph;
        graph.nodes[1].format = SoundFormat{.sampleRate = 44100};
        NodeRecord& sink = graph.nodes[2];
        sink.offeredRates = only48;
        sink.properties.setRate = 48000;
        sink.properties.hasBluezKeys = isBluetooth;
        sink.properties.hasRaopKeys = !isBluetooth;
        const PlayingPath path{{&graph.nodes[1], &sink}, "judged"};
        EXPECT_TRUE(rateConversionOnPath(path, {48000, 48000, 44100}, graph).reason ==
                    RateReason(DeviceCannot{}));
    }
}

/// The ranges of one format of this kind whose rate is built by `addRate`.
template <typename AddRate>
std::vector<RateRange> rangesOf(std::uint32_t subtype, AddRate addRate) {
    std::array<std::byte, 1024> buffer;
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer.data(), buffer.size());
    spa_pod_frame frame;
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_audio),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype), 0);
    addRate(builder);
    const auto pod = PodView::fromLibrary(spa_pod_builder_pop(&builder, &frame));
    return offeredRatesFromPods({*pod});
}

bool offers(const std::vector<RateRange>& ranges, double rate) {
    NodeRecord node;
    node.offeredRates = ranges;
    return canRunAt(node, rate);
}

TEST(OfferedRates, AreThoseOfUncompressedFormats) {
    const auto range = [](spa_pod_builder& builder) {
        spa_pod_builder_add(&builder, SPA_FORMAT_AUDIO_rate, SPA_POD_CHOICE_RANGE_Int(48000, 44100, 96000),
                            0);
    };
    const auto several = [](spa_pod_builder& builder) {
        spa_pod_builder_add(&builder, SPA_FORMAT_AUDIO_rate, SPA_POD_CHOICE_ENUM_Int(3, 48000, 44100, 48000),
                            0);
    };
    const auto one = [](spa_pod_builder& builder) {
        spa_pod_builder_add(&builder, SPA_FORMAT_AUDIO_rate, SPA_POD_Int(48000), 0);
    };
    const auto none = [](spa_pod_builder&) {};
    EXPECT_EQ(rangesOf(SPA_MEDIA_SUBTYPE_raw, range), (std::vector<RateRange>{{44100, 96000}}));
    EXPECT_EQ(rangesOf(SPA_MEDIA_SUBTYPE_raw, one), (std::vector<RateRange>{{48000, 48000}}));
    EXPECT_TRUE(offers(rangesOf(SPA_MEDIA_SUBTYPE_raw, several), 44100));
    EXPECT_TRUE(offers(rangesOf(SPA_MEDIA_SUBTYPE_raw, several), 48000));
    EXPECT_FALSE(offers(rangesOf(SPA_MEDIA_SUBTYPE_raw, several), 96000));
    EXPECT_TRUE(offers(rangesOf(SPA_MEDIA_SUBTYPE_raw, none), 12345)) << "it follows every clock";
    EXPECT_TRUE(rangesOf(SPA_MEDIA_SUBTYPE_iec958, one).empty());
    EXPECT_TRUE(offers({}, 12345)) << "nothing is told";
    EXPECT_TRUE(offeredRatesFromPods({}).empty());
}

TEST(LinkCodec, HasItsUsualName) {
    EXPECT_EQ(linkCodecName("aptx_hd"), "aptX HD");
    EXPECT_EQ(linkCodecName("ldac"), "LDAC");
    EXPECT_EQ(linkCodecName("of_tomorrow"), "of_tomorrow");
    EXPECT_EQ(linkCodecName(std::string(100, 'x'))->size(), 32U);
    EXPECT_EQ(linkCodecName(""), std::nullopt);
}

}  // namespace
}  // namespace purlock::host_linux
