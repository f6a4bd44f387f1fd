#include <gtest/gtest.h>

#include <iostream>

#include "tests/host-linux/samples/situation.h"

namespace purlock {
namespace {

using namespace purlock::test;

using F = SampleFormat;

const std::vector<Situation> depths = {
    {.name = "8 bits to 16", .device = F::s16, .stream = {.format = F::u8}},
    {.name = "8 bits to 32", .device = F::s32, .stream = {.format = F::u8}},
    {.name = "16 bits to 16", .device = F::s16},
    {.name = "16 bits to 24 packed", .device = F::s24},
    {.name = "16 bits to 24 in 32", .device = F::s24in32},
    {.name = "16 bits to 32", .device = F::s32},
    {.name = "16 bits to float", .device = F::f32},
    {.name = "24 bits to 16", .device = F::s16, .stream = {.format = F::s24}},
    {.name = "24 bits to 24 packed", .device = F::s24, .stream = {.format = F::s24}},
    {.name = "24 bits to 24 in 32", .device = F::s24in32, .stream = {.format = F::s24}},
    {.name = "24 bits to 32", .device = F::s32, .stream = {.format = F::s24}},
    {.name = "24 bits to float", .device = F::f32, .stream = {.format = F::s24}},
    {.name = "32 bits to 16", .device = F::s16, .stream = {.format = F::s32}},
    {.name = "32 bits to 24", .device = F::s24, .stream = {.format = F::s32}},
    {.name = "32 bits to 32", .device = F::s32, .stream = {.format = F::s32}},
    {.name = "float to 16", .device = F::s16, .stream = {.format = F::f32}},
    {.name = "float to 24", .device = F::s24in32, .stream = {.format = F::f32}},
    {.name = "float to 32", .device = F::s32, .stream = {.format = F::f32}},
    {.name = "float to float", .device = F::f32, .stream = {.format = F::f32}},
    {.name = "16 bits to 8", .device = F::u8},
};

const std::vector<Situation> players = {
    {.name = "PulseAudio, 16 to 16", .device = F::s16, .stream = {.player = Player::pulse}},
    {.name = "PulseAudio, 24 to 24", .device = F::s24, .stream = {.format = F::s24, .player = Player::pulse}},
    {.name = "PulseAudio, 24 to 16", .device = F::s16, .stream = {.format = F::s24, .player = Player::pulse}},
    {.name = "mpv, 16 to 16", .device = F::s16, .stream = {.player = Player::mpv}},
    {.name = "mpv, 24 to 24", .device = F::s24, .stream = {.format = F::s24, .player = Player::mpv}},
    {.name = "mpv, 24 to 16", .device = F::s16, .stream = {.format = F::s24, .player = Player::mpv}},
};

const std::vector<Situation> rates = {
    {.name = "44.1 into 48", .device = F::s16, .stream = {.rate = 44100}},
    {.name = "48 into 44.1", .device = F::s16, .deviceRate = 44100},
    {.name = "44.1 to 44.1, clock at 48", .device = F::s32, .deviceRate = 44100, .stream = {.rate = 44100}},
    {.name = "44.1 to 44.1, allowed",
     .deviceRate = 44100,
     .stream = {.rate = 44100},
     .allowedRates = {44100, 48000}},
    {.name = "44.1 into 48, allowed",
     .deviceRate = 48000,
     .stream = {.rate = 44100},
     .allowedRates = {44100, 48000}},
    {.name = "88.2 to 88.2, allowed",
     .deviceRate = 88200,
     .stream = {.rate = 88200},
     .allowedRates = {44100, 48000, 88200, 96000}},
    {.name = "96 to 96, allowed",
     .device = F::s24in32,
     .deviceRate = 96000,
     .stream = {.format = F::s24, .rate = 96000},
     .allowedRates = {44100, 48000, 88200, 96000, 192000}},
    {.name = "176.4 to 176.4, allowed",
     .deviceRate = 176400,
     .stream = {.rate = 176400},
     .allowedRates = {44100, 48000, 176400}},
    {.name = "192 to 192, allowed",
     .deviceRate = 192000,
     .stream = {.format = F::s24, .rate = 192000},
     .allowedRates = {44100, 48000, 192000}},
    {.name = "192 to 192, not allowed", .deviceRate = 192000, .stream = {.rate = 192000}},
    {.name = "96 into 48", .stream = {.format = F::s24, .rate = 96000}},
    {.name = "44.1 forced, all at 44.1", .deviceRate = 44100, .stream = {.rate = 44100}, .forcedRate = 44100},
    {.name = "44.1 forced, 48 to 48", .forcedRate = 44100},
    {.name = "96 forced, 48 into 96", .deviceRate = 96000, .forcedRate = 96000},
    {.name = "PulseAudio, 44.1 into 48", .stream = {.rate = 44100, .player = Player::pulse}},
    {.name = "mpv, 44.1 into 48", .stream = {.rate = 44100, .player = Player::mpv}},
    {.name = "mpv, 96 to 96, allowed",
     .deviceRate = 96000,
     .stream = {.format = F::s24, .rate = 96000, .player = Player::mpv},
     .allowedRates = {48000, 96000}},
    {.name = "5.1 of float at 176.4, allowed",
     .device = F::f32,
     .deviceRate = 176400,
     .deviceChannels = 6,
     .stream = {.format = F::f32, .rate = 176400, .channels = 6, .player = Player::pulse},
     .allowedRates = {44100, 48000, 176400}},
};

const std::vector<Situation> volumes = {
    {.name = "dither", .device = F::s16, .dithers = true},
    {.name = "stream at half", .stream = {.volume = 0.5}},
    {.name = "stream above full", .stream = {.volume = 1.1}},
    {.name = "stream muted", .stream = {.isMuted = true}},
    {.name = "PulseAudio stream at a quarter", .stream = {.player = Player::pulse, .volume = 0.25}},
    {.name = "mpv at half", .stream = {.player = Player::mpv, .volume = 0.5}},
    {.name = "device at half", .deviceVolume = 0.5},
    {.name = "device muted", .isDeviceMuted = true},
    {.name = "device of 16 bits at a tenth", .device = F::s16, .deviceVolume = 0.1},
};

const std::vector<Situation> channels = {
    {.name = "mono to stereo", .stream = {.channels = 1}},
    {.name = "mono to mono", .deviceChannels = 1, .stream = {.channels = 1}},
    {.name = "stereo to mono", .deviceChannels = 1},
    {.name = "stereo to 5.1", .deviceChannels = 6},
    {.name = "stereo to 7.1", .deviceChannels = 8},
    {.name = "quadraphonic to stereo", .stream = {.channels = 4}},
    {.name = "quadraphonic to 5.1", .deviceChannels = 6, .stream = {.channels = 4, .player = Player::pulse}},
    {.name = "5.1 to stereo", .stream = {.channels = 6, .player = Player::pulse}},
    {.name = "5.1 to 5.1", .deviceChannels = 6, .stream = {.channels = 6, .player = Player::pulse}},
    {.name = "7.1 to 7.1", .deviceChannels = 8, .stream = {.channels = 8, .player = Player::pulse}},
};

const std::vector<Situation> between = {
    {.name = "equaliser", .between = Between::equalizer},
    {.name = "loopback", .between = Between::loopback},
    {.name = "loopback, device of 44.1", .deviceRate = 44100, .between = Between::loopback},
    {.name = "loopback, 24 bits to 16",
     .device = F::s16,
     .stream = {.format = F::s24},
     .between = Between::loopback},
    {.name = "loopback at half", .between = Between::quietLoopback},
    {.name = "combined with another rate", .between = Between::combined},
    {.name = "the monitor of a sink", .between = Between::monitor},
    {.name = "the monitor of a quiet sink", .between = Between::quietMonitor},
    {.name = "swapped channels", .between = Between::swapped},
};

const std::vector<Situation> besides = {
    {.name = "two streams", .besides = Besides::secondStream},
    {.name = "the second stream has ended", .besides = Besides::pausedStream},
    {.name = "another stream elsewhere", .besides = Besides::streamElsewhere},
    {.name = "a recorder listens", .besides = Besides::recorder},
    {.name = "silence first, then 44.1",
     .stream = {.rate = 44100},
     .besides = Besides::silentStreamFirst,
     .allowedRates = {44100, 48000}},
    {.name = "to another device", .playsElsewhere = true},
    {.name = "nothing plays", .plays = false},
    {.name = "nothing plays, a recorder listens", .besides = Besides::recorder, .plays = false},
    {.name = "nothing plays, a filter is loaded", .between = Between::equalizer, .plays = false},
    {.name = "nothing plays, a loopback is loaded", .between = Between::loopback, .plays = false},
};

/// Plays each situation to captured devices, and compares what the program says with what arrived.
void playAll(const std::vector<Situation>& situations) {
    Stage stage;
    ASSERT_TRUE(stage.start()) << stage.logs();
    for (const Situation& situation : situations) {
        SCOPED_TRACE(describe(situation));
        const Finding finding = playClearly(stage, situation);
        EXPECT_EQ(finding.trouble, "");
        EXPECT_TRUE(finding.agrees(situation))
            << "samples: " << name(finding.outcome) << ", verdict: " << finding.verdict
            << ", alterations: " << finding.alterations;
        EXPECT_EQ(finding.falseLine(situation), "") << "a line of the log that never was so, among\n"
                                                    << finding.lines;
        std::cout << situation.name << ": " << name(finding.outcome) << ", " << finding.verdict << "\n";
    }
    if (testing::Test::HasFailure()) std::cout << stage.logs();
}

TEST(Samples, OfAllDepthsDecideTheVerdict) {
    playAll(depths);
}

TEST(Samples, OfAllPlayersDecideTheVerdict) {
    playAll(players);
}

TEST(Samples, OfAllRatesDecideTheVerdict) {
    playAll(rates);
}

TEST(Samples, OfAllVolumesDecideTheVerdict) {
    playAll(volumes);
}

TEST(Samples, OfAllChannelsDecideTheVerdict) {
    playAll(channels);
}

TEST(Samples, OfAllBetweenDecideTheVerdict) {
    playAll(between);
}

TEST(Samples, OfAllBesidesDecideTheVerdict) {
    playAll(besides);
}

}  // namespace
}  // namespace purlock
