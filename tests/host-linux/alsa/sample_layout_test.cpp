#include "platform/linux/alsa/sample_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace purlock::host_linux {
namespace {

using enum SampleEncoding;

constexpr std::endian little = std::endian::little;
constexpr std::endian big = std::endian::big;
constexpr std::endian native = std::endian::native;

struct Case {
    std::vector<std::string> names;
    std::optional<SampleLayout> expected;
};

TEST(SampleLayout, ByName) {
    const Case cases[] = {
        {{"S8", "S8P"}, SampleLayout{8, 8, signedInteger, little}},
        {{"U8", "U8P"}, SampleLayout{8, 8, unsignedInteger, little}},
        {{"S16_LE", "S16LE"}, SampleLayout{16, 16, signedInteger, little}},
        {{"S16_BE", "S16BE"}, SampleLayout{16, 16, signedInteger, big}},
        {{"S16P"}, SampleLayout{16, 16, signedInteger, native}},
        {{"U16_LE", "U16LE"}, SampleLayout{16, 16, unsignedInteger, little}},
        {{"U16_BE", "U16BE"}, SampleLayout{16, 16, unsignedInteger, big}},
        {{"S18_3LE", "S18LE"}, SampleLayout{18, 24, signedInteger, little}},
        {{"S18_3BE", "S18BE"}, SampleLayout{18, 24, signedInteger, big}},
        {{"U18LE"}, SampleLayout{18, 24, unsignedInteger, little}},
        {{"U18BE"}, SampleLayout{18, 24, unsignedInteger, big}},
        {{"S20_LE"}, SampleLayout{20, 32, signedInteger, little}},
        {{"S20_BE"}, SampleLayout{20, 32, signedInteger, big}},
        {{"S20_3LE", "S20LE"}, SampleLayout{20, 24, signedInteger, little}},
        {{"S20_3BE", "S20BE"}, SampleLayout{20, 24, signedInteger, big}},
        {{"U20LE"}, SampleLayout{20, 24, unsignedInteger, little}},
        {{"U20BE"}, SampleLayout{20, 24, unsignedInteger, big}},
        {{"S24_LE", "S24_32LE", "IEC958_SUBFRAME_LE"}, SampleLayout{24, 32, signedInteger, little}},
        {{"S24_BE", "S24_32BE", "IEC958_SUBFRAME_BE"}, SampleLayout{24, 32, signedInteger, big}},
        {{"S24_32P"}, SampleLayout{24, 32, signedInteger, native}},
        {{"U24_LE", "U24_32LE"}, SampleLayout{24, 32, unsignedInteger, little}},
        {{"U24_BE", "U24_32BE"}, SampleLayout{24, 32, unsignedInteger, big}},
        {{"S24_3LE", "S24LE"}, SampleLayout{24, 24, signedInteger, little}},
        {{"S24_3BE", "S24BE"}, SampleLayout{24, 24, signedInteger, big}},
        {{"S24P"}, SampleLayout{24, 24, signedInteger, native}},
        {{"U24_3LE", "U24LE"}, SampleLayout{24, 24, unsignedInteger, little}},
        {{"U24_3BE", "U24BE"}, SampleLayout{24, 24, unsignedInteger, big}},
        {{"S32_LE", "S32LE"}, SampleLayout{32, 32, signedInteger, little}},
        {{"S32_BE", "S32BE"}, SampleLayout{32, 32, signedInteger, big}},
        {{"S32P"}, SampleLayout{32, 32, signedInteger, native}},
        {{"U32_LE", "U32LE"}, SampleLayout{32, 32, unsignedInteger, little}},
        {{"U32_BE", "U32BE"}, SampleLayout{32, 32, unsignedInteger, big}},
        {{"FLOAT_LE", "F32LE"}, SampleLayout{32, 32, floatingPoint, little}},
        {{"FLOAT_BE", "F32BE"}, SampleLayout{32, 32, floatingPoint, big}},
        {{"F32P"}, SampleLayout{32, 32, floatingPoint, native}},
        {{"FLOAT64_LE", "F64LE"}, SampleLayout{64, 64, floatingPoint, little}},
        {{"FLOAT64_BE", "F64BE"}, SampleLayout{64, 64, floatingPoint, big}},
        {{"F64P"}, SampleLayout{64, 64, floatingPoint, native}},
        {{"DSD_U8"}, SampleLayout{1, 8, dsd, little}},
        {{"DSD_U16_LE"}, SampleLayout{1, 16, dsd, little}},
        {{"DSD_U16_BE"}, SampleLayout{1, 16, dsd, big}},
        {{"DSD_U32_LE"}, SampleLayout{1, 32, dsd, little}},
        {{"DSD_U32_BE"}, SampleLayout{1, 32, dsd, big}},
        {{"MU_LAW", "ULAW", "A_LAW", "ALAW", "IMA_ADPCM", "MPEG", "GSM", "G723_24", "SPECIAL", "ENCODED",
          "UNKNOWN"},
         std::nullopt},
        {{"", "S", "LE", "_LE", "S_LE", "DSD_U", "FLOAT", "S16", "S16_", "S16_OE", "S16 LE", "s16_le"},
         std::nullopt},
        {{"S17_LE", "S0_LE", "S-16_LE", "S16_LEX", "S99999999999_LE", "S4000000000_LE"}, std::nullopt},
        {{"S24_16LE", "S24_33LE", "S24_4000000000LE", "S24_99999999999LE", "S24_-3LE"}, std::nullopt},
    };
    for (const Case& row : cases) {
        for (const std::string& name : row.names) EXPECT_EQ(sampleLayoutFromName(name), row.expected) << name;
    }
}

}  // namespace
}  // namespace purlock::host_linux
