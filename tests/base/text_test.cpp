#include "base/text.h"

#include <gtest/gtest.h>
#include <wctype.h>

#include <clocale>
#include <string>

#include "base/case_tables.h"
#include "tests/support/malformed_utf8.h"

namespace purlock {
namespace {

struct CaseRow {
    const char* name;
    const char* text;
    const char* lower;
    const char* upper;
};

const CaseRow caseRows[] = {
    {"empty", "", "", ""},
    {"ASCII", "Hi-Res [LOSSLESS] 24/96 @z`", "hi-res [lossless] 24/96 @z`", "HI-RES [LOSSLESS] 24/96 @Z`"},
    {"Latin-1", "ÀÉîõ", "àéîõ", "ÀÉÎÕ"},
    {"multiplication sign between letters", "×÷", "×÷", "×÷"},
    {"sharp s", "Straße", "straße", "STRASSE"},
    {"capital sharp s", "ẞ", "ß", "ẞ"},
    {"dotted capital I", "İ", "i\u0307", "İ"},
    {"dotless i", "ı", "ı", "I"},
    {"long s", "ſ", "ſ", "S"},
    {"Kelvin and Angstrom signs", "\u212A\u212B", "k\u00E5", "\u212A\u212B"},
    {"Greek, no final form", "ΑΣ", "ασ", "ΑΣ"},
    {"Cyrillic", "Бош", "бош", "БОШ"},
    {"Georgian", "Აა", "აა", "ᲐᲐ"},
    {"ligatures", "ﬁﬄ", "ﬁﬄ", "FIFFL"},
    {"title-case digraph", "ǅ", "ǆ", "Ǆ"},
    {"beyond the basic plane", "𐐀𐐨", "𐐨𐐨", "𐐀𐐀"},
    {"no case", "日本 📌 \u05D0", "日本 📌 \u05D0", "日本 📌 \u05D0"},
};

TEST(Text, Case) {
    for (const CaseRow& row : caseRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lowercased(row.text), row.lower);
        EXPECT_EQ(uppercased(row.text), row.upper);
    }
}

TEST(Text, CaseTablesAreSortedAndStayOutsideAscii) {
    for (const CaseTable* table : {&lowerCaseTable, &upperCaseTable}) {
        char32_t last = 0x7F;
        for (const CaseRange& range : table->ranges) {
            EXPECT_GT(range.first, last);
            EXPECT_GE(range.last, range.first);
            EXPECT_TRUE(range.step == 1 || range.step == 2);
            EXPECT_EQ((range.last - range.first) % range.step, 0U);
            last = range.last;
        }
        last = 0x7F;
        for (const CaseExpansion& expansion : table->expansions) {
            EXPECT_GT(expansion.from, last);
            last = expansion.from;
        }
    }
}

/// Of Unicode 14: Changes_When_Lowercased and Changes_When_Uppercased, each code point by itself.
TEST(Text, NoCodePointOfTheCaseTablesIsMissing) {
    std::size_t lowered = 0;
    std::size_t raised = 0;
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        appendCodePoint(text, c);
        lowered += lowercased(text) != text ? 1U : 0U;
        raised += uppercased(text) != text ? 1U : 0U;
    }
    EXPECT_EQ(lowered, 1433U);
    EXPECT_EQ(raised, 1525U);
}

/// The C library's own tables as a second opinion, code point by code point. They may be of another version
/// of Unicode, so a code point that has no case here may have one there; a mapping that we have must agree.
TEST(Text, CaseAgreesWithTheCLibrary) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    std::size_t mapped = 0;
    std::size_t missing = 0;
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        appendCodePoint(text, c);
        const auto expectSame = [&](const std::string& ours, wint_t theirs) {
            const DecodedCodePoint first = decodeFirst(ours);
            if (first.length != ours.size()) return;  // an expansion, which the C library does not know
            if (first.codePoint == c) {
                missing += theirs != c ? 1U : 0U;
                return;
            }
            ++mapped;
            EXPECT_EQ(first.codePoint, static_cast<char32_t>(theirs))
                << "U+" << std::hex << static_cast<unsigned>(c);
        };
        expectSame(lowercased(text), towlower(static_cast<wint_t>(c)));
        expectSame(uppercased(text), towupper(static_cast<wint_t>(c)));
    }
    EXPECT_GE(mapped, 2800U);
    EXPECT_LE(missing, 60U);
    std::setlocale(LC_CTYPE, "C");
}

TEST(Text, FirstCharacters) {
    struct Row {
        const char* name;
        std::string_view text;
        std::size_t bytes;
        std::string_view first;
    };
    const std::string_view longer = "a\xC3\xA9";
    const Row rows[] = {
        {"shorter", "abc", 4, "abc"},
        {"as long", "abc", 3, "abc"},
        {"as long, though its last character goes on behind it", longer.substr(0, 2), 2, "a\xC3"},
        {"longer", "abcd", 3, "abc"},
        {"nothing", "abc", 0, ""},
        {"between two characters", "\xC3\xA9\xC3\xA9", 2, "\xC3\xA9"},
        {"within a character of two bytes", "a\xC3\xA9z", 2, "a"},
        {"within one of four", "a\xF0\x9F\x8E\xB5z", 4, "a"},
        {"within the only one", "\xF0\x9F\x8E\xB5", 3, ""},
        {"no UTF-8 at all", "\x80\x80\x80\x80\x80\x80\x80\x80", 6, "\x80\x80\x80\x80\x80\x80"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(firstCharacters(row.text, row.bytes), row.first);
    }
}

TEST(Text, Contains) {
    struct Row {
        const char* name;
        const char* text;
        const char* part;
        bool expected;
    };
    const Row rows[] = {
        {"inside", "usb-dac-3", "dac", true},
        {"whole", "dac", "dac", true},
        {"longer part", "dac", "dac2", false},
        {"letter case counts", "DAC", "dac", false},
        {"empty part", "dac", "", true},
        {"empty text", "", "dac", false},
        {"both empty", "", "", true},
        {"beyond ASCII", "björks kopfhörer", "hörer", true},
        {"another letter of the same lead byte", "é", "è", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(contains(row.text, row.part), row.expected);
    }
}

TEST(Text, Trimmed) {
    struct Row {
        const char* name;
        const char* text;
        const char* expected;
    };
    const Row rows[] = {
        {"nothing to trim", "MAX", "MAX"},
        {"blanks and a line break", "  Hi-Res Lossless\n", "Hi-Res Lossless"},
        {"every ASCII kind", "\t\n\v\f\r High \r\f\v\n\t", "High"},
        {"inner white space stays", " Very  High ", "Very  High"},
        {"no-break space", "\u00A0MAX\u00A0", "MAX"},
        {"next line", "\u0085MAX\u0085", "MAX"},
        {"Ogham space", "\u1680MAX\u1680", "MAX"},
        {"en quad to hair space",
         "\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200AMAX\u2003", "MAX"},
        {"zero-width space", "\u200BMAX\u200B", "MAX"},
        {"line and paragraph separators", "\u2028\u2029MAX\u2029\u2028", "MAX"},
        {"narrow no-break and mathematical space", "\u202F\u205FMAX\u205F\u202F", "MAX"},
        {"ideographic space", "\u3000MAX\u3000", "MAX"},
        {"all white", " \t\u3000\n", ""},
        {"empty", "", ""},
        {"control characters are no white space", "\x1FMAX\x7F", "\x1FMAX\x7F"},
        {"the joiner is no white space", "\u200DMAX\u200D", "\u200DMAX\u200D"},
        {"beyond ASCII inside", " Qualité ", "Qualité"},
        {"malformed at both ends", " \xC2MAX\x80 ", "\xC2MAX\x80"},
        {"a space's bytes without its lead", "\x80\x80MAX\x80\x80", "\x80\x80MAX\x80\x80"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(trimmed(row.text), row.expected);
    }
}

TEST(Text, MalformedBytesPassThroughUnchanged) {
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        EXPECT_EQ(lowercased("X" + text + "X").size(), text.size() + 2);
        EXPECT_EQ(uppercased(lowercased(text)).size(), text.size());
        EXPECT_EQ(trimmed(" " + text + " "), text);
        EXPECT_TRUE(contains("a" + text, text));
    }
    EXPECT_EQ(lowercased("A\xC3(\xC3\x89\xFF"), "a\xC3(é\xFF");
    EXPECT_EQ(uppercased("a\xE2\x82\xC3\xA9"), "A\xE2\x82É");
}

TEST(Text, WellFormed) {
    struct Row {
        const char* name;
        std::string text;
        std::string expected;
    };
    const Row rows[] = {
        {"good text", "Ünï — 📌", "Ünï — 📌"},
        {"truncated sequence is one", "\xF0\x9F\x93", "\uFFFD"},
        {"sequence broken by ASCII", "\xE2\x82(", "\uFFFD("},
        {"each byte of an overlong form", "\xC0\xAF", "\uFFFD\uFFFD"},
        {"each byte of a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"Latin-1", "Caf\xE9!", "Caf\uFFFD!"},
        {"zero byte", std::string("a\0b", 3), std::string("a\0b", 3)},
        {"highest code point", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(wellFormed(row.text), row.expected);
    }
}

TEST(Text, EveryCodePointSurvivesARoundTrip) {
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        appendCodePoint(text, c);
        const DecodedCodePoint decoded = decodeFirst(text + "x");
        ASSERT_TRUE(decoded.valid);
        ASSERT_EQ(decoded.codePoint, c);
        ASSERT_EQ(decoded.length, text.size());
    }
}

TEST(Text, Joined) {
    EXPECT_EQ(joined({}), "");
    EXPECT_EQ(joined({"a", "", "bc"}), "abc");
}

}  // namespace
}  // namespace purlock
