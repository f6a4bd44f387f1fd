#include "platform/linux/pipewire/rules/metadata_text.h"

#include <gtest/gtest.h>

namespace purlock::host_linux {
namespace {

struct NameCase {
    const char* name;
    std::string text;
    std::optional<std::string> expected;
};

TEST(MetadataText, NamesOfDefaults) {
    const NameCase cases[] = {
        {"as the session manager writes it", R"({"name":"alsa_output.usb-x"})", "alsa_output.usb-x"},
        {"with blanks", R"({ "name": "null48" })", "null48"},
        {"escaped", R"({"name":"a\"b\u00e9"})", "a\"b\xC3\xA9"},
        {"more members", R"({"id":3,"name":"x"})", "x"},
        {"empty name", R"({"name":""})", std::nullopt},
        {"a number", R"({"name":3})", std::nullopt},
        {"nested", R"({"name":{"name":"x"}})", std::nullopt},
        {"an array", R"(["name","x"])", std::nullopt},
        {"no name", "{}", std::nullopt},
        {"cut off", R"({"name":"x)", std::nullopt},
        {"malformed UTF-8", "{\"name\":\"\xFF\"}", std::nullopt},
        {"deep", std::string(10000, '['), std::nullopt},
        {"too long", "{\"name\":\"" + std::string(20000, 'x') + "\"}", std::nullopt},
        {"empty", "", std::nullopt},
    };
    for (const NameCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(nameFromMetadata(row.text), row.expected);
    }
}

TEST(MetadataText, Rates) {
    using Rates = std::vector<std::uint32_t>;
    EXPECT_EQ(rateFromMetadata("48000"), 48000U);
    EXPECT_EQ(rateFromMetadata(" 48000\n"), 48000U);
    EXPECT_EQ(rateFromMetadata(""), std::nullopt);
    EXPECT_EQ(rateFromMetadata("-1"), std::nullopt);
    EXPECT_EQ(rateFromMetadata("48000 Hz"), std::nullopt);
    EXPECT_EQ(rateFromMetadata("99999999999"), std::nullopt);
    EXPECT_EQ(ratesFromMetadata("[ 44100, 48000 ]"), (Rates{44100, 48000}));
    EXPECT_EQ(ratesFromMetadata("[ 44100 48000 ]"), (Rates{44100, 48000}));
    EXPECT_EQ(ratesFromMetadata("[44100,x,0,96000"), (Rates{44100, 96000}));
    EXPECT_EQ(ratesFromMetadata(""), Rates{});
    std::string many = "[";
    for (int i = 1; i < 100; ++i) many += " " + std::to_string(i);
    EXPECT_EQ(ratesFromMetadata(many).size(), 32U);
}

}  // namespace
}  // namespace purlock::host_linux
