#include "platform/macos/corefoundation/text.h"

#include "tests/macos/c/no_leak.h"

namespace purlock::host_macos {
namespace {

class Text : public test::NoLeak {};

struct TextRow {
    const char* name;
    std::u16string units;
    std::string text;
};

TEST_F(Text, ComesAsUtf8) {
    const TextRow rows[] = {
        {"plain", u"DAC", "DAC"},
        {"empty", u"", ""},
        {"an accent", u"L\u00F6ud", "Löud"},
        {"beyond the first plane", u"\U0001F3A7", "🎧"},
        {"a zero in the middle", std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
        {"half a pair", std::u16string(1, static_cast<char16_t>(0xD83C)), "?"},
        {"the other half first", {static_cast<char16_t>(0xDFA7), u'x'}, "?x"},
    };
    for (const TextRow& row : rows) {
        SCOPED_TRACE(row.name);
        const Owned string(simulated::makeString(row.units));
        EXPECT_EQ(textOf(string.get()), row.text);
    }
}

TEST_F(Text, IsCutWhereItIsTooLong) {
    const Owned string(simulated::makeString(std::u16string(longestText + 10, u'\u20AC')));
    EXPECT_EQ(textOf(string.get())->size(), static_cast<std::size_t>(longestText) * 3);
}

TEST_F(Text, WhatIsNoTextGivesNone) {
    EXPECT_EQ(textOf(nullptr), std::nullopt);
    const Owned number(simulated::makeNumber(3));
    EXPECT_EQ(textOf(number.get()), std::nullopt);
}

TEST_F(Text, GoesThereAndBack) {
    for (const std::string text : {"", "AXValue", "Löud 🎧"}) {
        const auto made = makeText(text);
        EXPECT_EQ(textOf(made.get()), text);
    }
    EXPECT_FALSE(makeText("\xFF"));
}

TEST_F(Text, OwnershipMovesAndIsGivenUpOnce) {
    Owned first(simulated::makeString("one"));
    auto second = Owned<CFStringRef>::retained(first.get());
    first = std::move(second);
    EXPECT_EQ(textOf(first.get()), "one");
    Owned<CFStringRef> third(std::move(first));
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(third);
}

TEST_F(Text, TheSimulationStopsAReleaseTooMany) {
    EXPECT_DEATH(
        {
            const CFStringRef string = simulated::makeString("x");
            CFRelease(string);
            CFRelease(string);
        },
        "gone, or never was");
}

}  // namespace
}  // namespace purlock::host_macos
