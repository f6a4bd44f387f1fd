#include "platform/linux/alsa/pcm_text.h"

#include <gtest/gtest.h>

#include <string>

namespace purlock::host_linux {
namespace {

struct ParametersCase {
    const char* name;
    std::string text;
    std::optional<HardwareParameters> expected;
};

std::string parameters(const std::string& format, const std::string& channels, const std::string& rate) {
    return "access: RW_INTERLEAVED\nformat: " + format + "\nsubformat: STD\nchannels: " + channels +
           "\nrate: " + rate + "\nperiod_size: 1024\nbuffer_size: 32768\n";
}

constexpr SampleLayout s16 = {16, 16, SampleEncoding::signedInteger};
constexpr SampleLayout s24in32 = {24, 32, SampleEncoding::signedInteger};
constexpr SampleLayout s24in24 = {24, 24, SampleEncoding::signedInteger};
constexpr SampleLayout s32big = {32, 32, SampleEncoding::signedInteger, std::endian::big};
constexpr SampleLayout float32 = {32, 32, SampleEncoding::floatingPoint};
constexpr SampleLayout dsd32big = {1, 32, SampleEncoding::dsd, std::endian::big};

TEST(PcmText, HardwareParameters) {
    const ParametersCase cases[] = {
        {"built-in", parameters("S16_LE", "2", "44100 (44100/1)"), HardwareParameters{s16, 44100, 2}},
        {"HDMI", parameters("S24_LE", "8", "48000 (48000/1)"), HardwareParameters{s24in32, 48000, 8}},
        {"USB DAC", parameters("S24_3LE", "2", "96000 (96000/1)"), HardwareParameters{s24in24, 96000, 2}},
        {"USB DAC, big-endian", parameters("S32_BE", "2", "384000 (384000/1)"),
         HardwareParameters{s32big, 384000, 2}},
        {"float", parameters("FLOAT_LE", "2", "48000 (48000/1)"), HardwareParameters{float32, 48000, 2}},
        {"DSD", parameters("DSD_U32_BE", "2", "88200 (88200/1)"), HardwareParameters{dsd32big, 88200, 2}},
        {"a rate that is no whole number", parameters("S16_LE", "2", "44099 (88199/2)"),
         HardwareParameters{s16, 44099.5, 2}},
        {"a fraction that does not fit", parameters("S16_LE", "2", "44100 (1/1)"),
         HardwareParameters{s16, 44100, 2}},
        {"no fraction", parameters("S16_LE", "2", "44100"), HardwareParameters{s16, 44100, 2}},
        {"a fraction by zero", parameters("S16_LE", "2", "44100 (44100/0)"),
         HardwareParameters{s16, 44100, 2}},
        {"closed", "closed\n", std::nullopt},
        {"no setup", "no setup\n", std::nullopt},
        {"empty", "", std::nullopt},
        {"unknown format", parameters("S17_LE", "2", "44100 (44100/1)"), std::nullopt},
        {"no channels", parameters("S16_LE", "0", "44100 (44100/1)"), std::nullopt},
        {"too many channels", parameters("S16_LE", "4000000000", "44100 (44100/1)"), std::nullopt},
        {"negative channels", parameters("S16_LE", "-2", "44100 (44100/1)"), std::nullopt},
        {"no rate", parameters("S16_LE", "2", "0 (0/1)"), std::nullopt},
        {"a rate beyond 32 bits", parameters("S16_LE", "2", "99999999999"), std::nullopt},
        {"cut off", "access: RW_INTERLEAVED\nformat: S16_LE\nchan", std::nullopt},
        {"no line ends", "format: S16_LE channels: 2 rate: 44100", std::nullopt},
        {"mapped", "access: MMAP_INTERLEAVED\nformat: S16_LE\nchannels: 2\nrate: 44100 (44100/1)\n",
         HardwareParameters{s16, 44100, 2, true}},
        {"mapped, a channel after the other",
         "access: MMAP_NONINTERLEAVED\nformat: S16_LE\nchannels: 2\nrate: 44100 (44100/1)\n",
         HardwareParameters{s16, 44100, 2, true}},
        {"written, a channel after the other",
         "access: RW_NONINTERLEAVED\nformat: S16_LE\nchannels: 2\nrate: 44100 (44100/1)\n",
         HardwareParameters{s16, 44100, 2}},
        {"carriage returns", "format: S16_LE\r\nchannels: 2\r\nrate: 44100 (44100/1)\r\n",
         HardwareParameters{s16, 44100, 2}},
    };
    for (const ParametersCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parseHardwareParameters(row.text), row.expected);
    }
}

struct StatusCase {
    const char* name;
    std::string text;
    PcmStatus expected;
};

TEST(PcmText, Status) {
    const StatusCase cases[] = {
        {"closed", "closed\n", {PcmState::closed, std::nullopt}},
        {"running", "state: RUNNING\nowner_pid   : 4711\ntrigger_time: 12.5\n", {PcmState::running, 4711}},
        {"open", "state: OPEN\nowner_pid   : 12\n", {PcmState::open, 12}},
        {"setup", "state: SETUP\nowner_pid   : 12\n", {PcmState::setup, 12}},
        {"prepared", "state: PREPARED\nowner_pid   : 12\n", {PcmState::prepared, 12}},
        {"underrun", "state: XRUN\nowner_pid   : 12\n", {PcmState::xrun, 12}},
        {"draining", "state: DRAINING\nowner_pid   : 12\n", {PcmState::draining, 12}},
        {"paused", "state: PAUSED\nowner_pid   : 12\n", {PcmState::paused, 12}},
        {"suspended", "state: SUSPENDED\nowner_pid   : 12\n", {PcmState::suspended, 12}},
        {"unplugged", "state: DISCONNECTED\n", {PcmState::disconnected, std::nullopt}},
        {"no owner", "state: RUNNING\n", {PcmState::running, std::nullopt}},
        {"owner without a state", "owner_pid   : 12\n", {PcmState::closed, std::nullopt}},
        {"owner 0", "state: RUNNING\nowner_pid   : 0\n", {PcmState::running, std::nullopt}},
        {"negative owner", "state: RUNNING\nowner_pid   : -1\n", {PcmState::running, std::nullopt}},
        {"owner beyond 32 bits",
         "state: RUNNING\nowner_pid   : 99999999999\n",
         {PcmState::running, std::nullopt}},
        {"unknown state", "state: DANCING\nowner_pid   : 12\n", {PcmState::closed, std::nullopt}},
        {"empty", "", {PcmState::closed, std::nullopt}},
    };
    for (const StatusCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parsePcmStatus(row.text), row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
