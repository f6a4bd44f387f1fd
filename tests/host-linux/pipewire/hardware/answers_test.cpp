#include "tests/host-linux/pipewire/hardware/audio_test.h"

namespace purlock {
namespace {

using test::AudioTest;
using test::waitUntil;

struct SinkCase {
    const char* name;
    const char* format;
    int rate;
    int channels;
};

class TunnelSinks : public AudioTest, public testing::WithParamInterface<SinkCase> {};

TEST_P(TunnelSinks, AreReadAsTheServerHasThem) {
    const SinkCase& sink = GetParam();
    ASSERT_TRUE(session.startTunnelSink(sink.name, sink.format, sink.rate, sink.channels)) << session.logs();
    expectAsDumped(sink.name);
    session.spawn("player", {"pw-play", "--target", sink.name, session.toneFile(sink.rate)});
    ASSERT_TRUE(waitUntil([&] { return observer().isRunning(observer().deviceByUID(sink.name)); }))
        << session.logs();
    expectAsDumped(sink.name);
    EXPECT_EQ(observer().physicalRate(observer().deviceByUID(sink.name)), sink.rate);
    EXPECT_EQ(observer().number(observer().deviceByUID(sink.name), kAudioDevicePropertyTransportType),
              kAudioDeviceTransportTypeVirtual);
}

INSTANTIATE_TEST_SUITE_P(Formats, TunnelSinks,
                         testing::Values(SinkCase{"s16at44100", "S16LE", 44100, 2},
                                         SinkCase{"s24at96000", "S24LE", 96000, 2},
                                         SinkCase{"s32at192000", "S32LE", 192000, 2},
                                         SinkCase{"f32at48000", "F32LE", 48000, 2},
                                         SinkCase{"s16mono8000", "S16LE", 8000, 1}),
                         [](const auto& each) { return std::string(each.param.name); });

class Answers : public AudioTest {};

TEST_F(Answers, NameAndRateOfANullSink) {
    ASSERT_TRUE(session.loadNullSink("null96", 96000, "device.description=Ninety-six")) << session.logs();
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("null96") != 0; }));
    expectAsDumped("null96");
    const AudioObjectID device = observer().deviceByUID("null96");
    EXPECT_EQ(observer().text(device, kAudioObjectPropertyName), "Ninety-six");
    EXPECT_EQ(observer().physicalRate(device), 96000);
    EXPECT_EQ(observer().number(device, kAudioDevicePropertyTransportType), kAudioDeviceTransportTypeVirtual);
}

TEST_F(Answers, UnknownObjectsAndPropertiesAreRefused) {
    const PropertyAddress name{kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal, 0};
    const PropertyAddress nonsense{fourCharCode("nons"), kAudioObjectPropertyScopeGlobal, 0};
    std::optional<std::string> text;
    std::uint32_t size = 0;
    EXPECT_EQ(hardware->getPropertyText(999999, name, text), kAudioHardwareBadObjectError);
    EXPECT_EQ(hardware->getPropertyDataSize(kAudioObjectSystemObject, nonsense, size),
              kAudioHardwareUnknownPropertyError);
    std::uint16_t small = 0;
    size = sizeof small;
    const PropertyAddress output{kAudioHardwarePropertyDefaultOutputDevice, kAudioObjectPropertyScopeGlobal,
                                 0};
    EXPECT_EQ(hardware->getPropertyData(kAudioObjectSystemObject, output, size, &small),
              kAudioHardwareBadPropertySizeError);
}

TEST_F(Answers, ASourceHasNoOutputStream) {
    ASSERT_TRUE(
        session.loadModule({"module-null-sink", "media.class=Audio/Source/Virtual", "sink_name=microphone"}));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("microphone") != 0; })) << session.logs();
    const AudioObjectID device = observer().deviceByUID("microphone");
    EXPECT_TRUE(observer().ids(device, kAudioDevicePropertyStreams).empty());
    EXPECT_NE(observer().defaultOutput(), device);
}

TEST_F(Answers, APulseAudioClientIsNamedByItsOwnProcess) {
    ASSERT_TRUE(session.loadNullSink("null48", 48000));
    auto& player = session.spawn("player", {"paplay", "-d", "null48", session.toneFile(48000)});
    ASSERT_TRUE(waitUntil([&] { return observer().plays(observer().processByPID(player.pid())); }))
        << session.logs();
    const AudioObjectID process = observer().processByPID(player.pid());
    EXPECT_EQ(observer().text(process, kAudioProcessPropertyBundleID),
              "process." + std::to_string(player.pid()));
    EXPECT_TRUE(waitUntil([&] {
        return observer().ids(process, kAudioProcessPropertyDevices) ==
               std::vector{observer().deviceByUID("null48")};
    }));
    expectAsDumped("null48");
}

TEST_F(Answers, TwoPlayersOnTwoSinksAndARealPlayer) {
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(session.startTunnelSink("second", "S16LE", 44100));
    auto& native = session.spawn("native", {"pw-play", "--target", "first", session.toneFile(48000)});
    auto& player = session.spawn("mpv", {"mpv", "--no-config", "--ao=pipewire",
                                         "--audio-device=pipewire/second", session.toneFile(44100)});
    ASSERT_TRUE(waitUntil([&] {
        return observer().plays(observer().processByPID(native.pid())) &&
               observer().plays(observer().processByPID(player.pid()));
    })) << session.logs();
    const auto devicesOf = [&](const test::ChildProcess& each) {
        return observer().ids(observer().processByPID(each.pid()), kAudioProcessPropertyDevices);
    };
    EXPECT_TRUE(waitUntil([&] { return devicesOf(native) == std::vector{observer().deviceByUID("first")}; }));
    EXPECT_TRUE(
        waitUntil([&] { return devicesOf(player) == std::vector{observer().deviceByUID("second")}; }));
    expectAsDumped("first");
    expectAsDumped("second");
}

TEST_F(Answers, ACombinedSinkIsAnAggregateAndPassesSoundOn) {
    ASSERT_TRUE(session.loadNullSink("left", 48000));
    ASSERT_TRUE(session.loadNullSink("right", 48000));
    ASSERT_TRUE(session.loadModule({"module-combine-sink", "sink_name=both", "slaves=left,right"}));
    const auto transport = [&] {
        return observer().number(observer().deviceByUID("both"), kAudioDevicePropertyTransportType);
    };
    EXPECT_TRUE(waitUntil([&] { return transport() == kAudioDeviceTransportTypeAggregate; }))
        << session.logs();
    auto& player = session.spawn("player", {"pw-play", "--target", "both", session.toneFile(48000)});
    EXPECT_TRUE(waitUntil([&] {
        const auto devices =
            observer().ids(observer().processByPID(player.pid()), kAudioProcessPropertyDevices);
        return devices.size() == 3 && devices.front() == observer().deviceByUID("both");
    })) << session.logs();
    EXPECT_EQ(observer().processes().size(), 1U) << "what passes sound on is no application";
    expectAsDumped("both");
    EXPECT_EQ(observer().physicalRate(observer().deviceByUID("both")), 48000);
}

}  // namespace
}  // namespace purlock
