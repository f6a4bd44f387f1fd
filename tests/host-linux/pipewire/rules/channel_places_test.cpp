#include "platform/linux/pipewire/rules/channel_places.h"

#include <gtest/gtest.h>
#include <spa/param/audio/raw.h>

namespace purlock::host_linux {
namespace {

constexpr std::uint32_t FL = SPA_AUDIO_CHANNEL_FL;
constexpr std::uint32_t FR = SPA_AUDIO_CHANNEL_FR;
constexpr std::uint32_t FC = SPA_AUDIO_CHANNEL_FC;
constexpr std::uint32_t LFE = SPA_AUDIO_CHANNEL_LFE;
constexpr std::uint32_t SL = SPA_AUDIO_CHANNEL_SL;
constexpr std::uint32_t SR = SPA_AUDIO_CHANNEL_SR;
constexpr std::uint32_t RL = SPA_AUDIO_CHANNEL_RL;
constexpr std::uint32_t RR = SPA_AUDIO_CHANNEL_RR;
constexpr std::uint32_t MONO = SPA_AUDIO_CHANNEL_MONO;
constexpr std::uint32_t UNK = SPA_AUDIO_CHANNEL_UNKNOWN;
constexpr std::uint32_t AUX0 = SPA_AUDIO_CHANNEL_AUX0;
constexpr std::uint32_t AUX1 = SPA_AUDIO_CHANNEL_AUX1;

/// Each row is what noise showed that went through PipeWire's channel mixer.
TEST(ChannelPlaces, Rows) {
    struct Case {
        const char* name;
        ChannelPlaces from;
        ChannelPlaces to;
        bool expected;
    };
    const Case cases[] = {
        {"stereo", {FL, FR}, {FL, FR}, true},
        {"stereo the other way round", {FL, FR}, {FR, FL}, true},
        {"mono", {MONO}, {MONO}, true},
        {"mono to stereo", {MONO}, {FL, FR}, true},
        {"mono to 5.1", {MONO}, {FL, FR, FC, LFE, RL, RR}, true},
        {"one channel without a place", {UNK}, {FL, FR}, true},
        {"a centre alone to stereo", {FC}, {FL, FR}, false},
        {"a centre alone to 5.1", {FC}, {FL, FR, FC, LFE, RL, RR}, true},
        {"a centre alone to mono", {FC}, {MONO}, true},
        {"stereo to mono", {FL, FR}, {MONO}, false},
        {"stereo to 5.1", {FL, FR}, {FL, FR, FC, LFE, RL, RR}, true},
        {"5.1 to stereo", {FL, FR, FC, LFE, SL, SR}, {FL, FR}, false},
        {"quadraphonic to stereo", {FL, FR, RL, RR}, {FL, FR}, false},
        {"sides stand in for the rear", {FL, FR, FC, LFE, SL, SR}, {FL, FR, FC, LFE, RL, RR}, true},
        {"5.1 to quadraphonic", {FL, FR, FC, LFE, SL, SR}, {FL, FR, RL, RR}, false},
        {"7.1 to 5.1", {FL, FR, FC, LFE, RL, RR, SL, SR}, {FL, FR, FC, LFE, RL, RR}, false},
        {"without places, as many", {UNK, UNK}, {FL, FR}, true},
        {"to places without names", {FL, FR}, {AUX0, AUX1}, true},
        {"without places, fewer", {UNK, UNK, UNK}, {AUX0, AUX1}, false},
        {"to nothing", {MONO}, {}, false},
    };
    for (const Case& row : cases) EXPECT_EQ(arriveInPlace(row.from, row.to), row.expected) << row.name;
}

}  // namespace
}  // namespace purlock::host_linux
