#include <gtest/gtest.h>

#include <chrono>

#include "tests/host-linux/pipewire/hardware/audio_test.h"

namespace purlock {
namespace {

using test::AudioTest;
using test::waitUntil;

/// Rates in Hz; the last two are what must be read.
struct RateCase {
    const char* name;
    int stream;
    int clock;
    int device;
    int virtualRate;
};

class Rates : public AudioTest, public testing::WithParamInterface<RateCase> {};

TEST_P(Rates, TellOfTheConversionNearestToTheDevice) {
    const RateCase& row = GetParam();
    ASSERT_TRUE(session.forceClockRate(row.clock)) << session.logs();
    ASSERT_TRUE(session.startTunnelSink("tunnel", "S16LE", row.device)) << session.logs();
    const auto device = [&] { return observer().deviceByUID("tunnel"); };
    ASSERT_TRUE(waitUntil([&] { return device() != 0; }));
    EXPECT_TRUE(waitUntil([&] { return observer().virtualRate(device()) == row.device; }))
        << "with nothing playing: " << observer().virtualRate(device());
    session.spawn("player", {"pw-play", "--target", "tunnel", session.toneFile(row.stream)});
    EXPECT_TRUE(waitUntil([&] { return observer().isRunning(device()); })) << session.logs();
    EXPECT_TRUE(waitUntil([&] { return observer().virtualRate(device()) == row.virtualRate; }))
        << observer().virtualRate(device());
    EXPECT_EQ(observer().physicalRate(device()), row.device);
    const auto format = observer().format(device(), kAudioStreamPropertyVirtualFormat);
    ASSERT_TRUE(format);
    EXPECT_EQ(format->bitsPerChannel, 16U) << "as many as the stream has, and the device";
    EXPECT_EQ(format->channelsPerFrame, 2U);
    const bool left = waitUntil([&] { return observer().virtualRate(device()) != row.virtualRate; },
                                std::chrono::milliseconds(50));
    EXPECT_FALSE(left) << "it stays";
}

INSTANTIATE_TEST_SUITE_P(Cases, Rates,
                         testing::Values(RateCase{"EqualRates", 48000, 48000, 48000, 48000},
                                         RateCase{"EqualRatesAt44100", 44100, 44100, 44100, 44100},
                                         RateCase{"LowerStream", 44100, 48000, 48000, 44100},
                                         RateCase{"HigherStream", 48000, 44100, 44100, 48000},
                                         RateCase{"OwnRatesBesideTheClock", 44100, 48000, 44100, 48000},
                                         RateCase{"ClockUnlikeBoth", 44100, 96000, 48000, 96000}),
                         [](const auto& each) { return std::string(each.param.name); });

class ClockOfTheGraph : public AudioTest {};

TEST_F(ClockOfTheGraph, IsFollowedWhileATonePlays) {
    ASSERT_TRUE(session.startTunnelSink("tunnel", "S16LE", 48000));
    session.spawn("player", {"pw-play", "--target", "tunnel", session.toneFile(48000)});
    const auto reads = [&](double rate) {
        return waitUntil([&] { return observer().virtualRate(observer().deviceByUID("tunnel")) == rate; });
    };
    EXPECT_TRUE(reads(48000)) << session.logs();
    for (const int rate : {96000, 44100, 48000}) {
        ASSERT_TRUE(session.forceClockRate(rate));
        EXPECT_TRUE(reads(rate)) << rate << ", read "
                                 << observer().virtualRate(observer().deviceByUID("tunnel"));
    }
}

TEST_F(ClockOfTheGraph, MayFollowTheStream) {
    ASSERT_EQ(session.run({"pw-metadata", "-n", "settings", "0", "clock.allowed-rates", "[ 44100 48000 ]"})
                  .exitStatus,
              0);
    ASSERT_TRUE(session.startTunnelSink("tunnel", "S16LE", 44100));
    session.spawn("player", {"pw-play", "--target", "tunnel", session.toneFile(44100)});
    EXPECT_TRUE(waitUntil([&] {
        const AudioObjectID device = observer().deviceByUID("tunnel");
        return observer().isRunning(device) && observer().virtualRate(device) == 44100;
    })) << session.logs();
}

TEST_F(ClockOfTheGraph, IsTheServersOwnWordForTwoStreamsOnOneClock) {
    const test::Command allow = {"pw-metadata",    "-n", "settings", "0", "clock.allowed-rates",
                                 "[ 44100 48000 ]"};
    ASSERT_EQ(session.run(allow).exitStatus, 0);
    ASSERT_TRUE(session.startTunnelSink("low", "S16LE", 44100));
    ASSERT_TRUE(session.startTunnelSink("high", "S16LE", 48000));
    session.spawn("first", {"pw-play", "--target", "low", session.toneFile(44100)});
    session.spawn("second", {"pw-play", "--target", "high", session.toneFile(48000)});
    // Both sinks hang on one driver. Whichever of the two rates it chose, one of the sinks has another: that
    // one tells the clock's rate, the other its stream's, which is the clock's.
    EXPECT_TRUE(waitUntil([&] {
        const AudioObjectID low = observer().deviceByUID("low");
        const AudioObjectID high = observer().deviceByUID("high");
        return observer().isRunning(low) && observer().isRunning(high) &&
               observer().virtualRate(low) == observer().virtualRate(high);
    })) << observer().virtualRate(observer().deviceByUID("low"))
        << " " << observer().virtualRate(observer().deviceByUID("high"));
}

/// The server may tell of cycles from before once the sink plays again.
TEST_F(ClockOfTheGraph, OfAnEarlierRunIsForgotten) {
    for (const char* const name : {"first", "second"}) {
        ASSERT_TRUE(session.startTunnelSink(name, "S16LE", 48000));
    }
    const auto second = [&] { return observer().virtualRate(observer().deviceByUID("second")); };
    const auto play = [&](const char* sink) {
        ASSERT_TRUE(session.setDefaultSink(sink));
        session.spawn("player", {"pacat", "--raw", "--format=s16le", "--rate=48000", "/dev/zero"});
        ASSERT_TRUE(waitUntil([&] { return observer().isRunning(observer().deviceByUID(sink)); }));
    };
    ASSERT_TRUE(session.forceClockRate(44100));
    ASSERT_NO_FATAL_FAILURE(play("second"));
    ASSERT_TRUE(waitUntil([&] { return second() == 44100; })) << second();
    session.process("player").kill();
    ASSERT_TRUE(waitUntil([&] { return !observer().isRunning(observer().deviceByUID("second")); }));
    ASSERT_TRUE(session.forceClockRate(96000));
    constexpr std::chrono::seconds soon(2);
    EXPECT_TRUE(waitUntil([&] { return second() == 48000; }, soon)) << "idle: " << second();
    ASSERT_NO_FATAL_FAILURE(play("first"));
    ASSERT_TRUE(session.setDefaultSink("second"));
    ASSERT_TRUE(waitUntil([&] { return observer().isRunning(observer().deviceByUID("second")); }));
    EXPECT_TRUE(waitUntil([&] { return second() == 96000; }, soon)) << "playing: " << second();
    const bool left = waitUntil([&] { return second() != 96000; }, std::chrono::milliseconds(1500));
    EXPECT_FALSE(left) << second();
}

}  // namespace
}  // namespace purlock
