#include "source/tidal_introspector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/source/introspection_fixture.h"

namespace purlock {
namespace {

using test::IntrospectionFixture;
using Dictionary = PropertyListDictionary;
using Entries = std::optional<Dictionary>;

const std::string firstFile = "/home/listener/Library/Preferences/com.tidal.desktop.plist";
const std::string secondFile =
    "/home/listener/Library/Containers/com.tidal.desktop/Data/Library/Preferences/com.tidal.desktop.plist";

const TierMeaning hiRes{96000.0, 24, true, true, "FLAC"};
const TierMeaning lossless{44100.0, 16, true, false, "FLAC"};
const TierMeaning high{44100.0, 16, false, false, "AAC 320"};
const TierMeaning normal{44100.0, 16, false, false, "AAC 96"};

PropertyListValue text(const char* value) {
    return std::string(value);
}
PropertyListValue number(std::int64_t value) {
    return value;
}
const PropertyListValue other = OtherPropertyListType{};

// Preferences

struct PreferenceRow {
    const char* name;
    Entries first;  // absent: there is no such file
    Entries second;
    std::optional<Prefs> expected;
};

const Prefs stopped{};

const std::vector<PreferenceRow>& preferenceRows() {
    static const std::vector<PreferenceRow> rows = {
        {"no file", {}, {}, {}},
        {"a file without the keys", Dictionary{{"volume", number(3)}}, {}, {}},

        {"first key", Dictionary{{"audioQuality", text("a")}}, {}, Prefs{"a"}},
        {"second key", Dictionary{{"streamingQuality", text("b")}}, {}, Prefs{"b"}},
        {"third key", Dictionary{{"preferredAudioQuality", text("c")}}, {}, Prefs{"c"}},
        {"fourth key", Dictionary{{"playback.quality", text("d")}}, {}, Prefs{"d"}},
        {"a key in other letters", Dictionary{{"AudioQuality", text("a")}}, {}, {}},

        {"first key before second",
         Dictionary{{"audioQuality", text("a")}, {"streamingQuality", text("b")}},
         {},
         Prefs{"a"}},
        {"second key before third",
         Dictionary{{"streamingQuality", text("b")}, {"preferredAudioQuality", text("c")}},
         {},
         Prefs{"b"}},
        {"third key before fourth",
         Dictionary{{"preferredAudioQuality", text("c")}, {"playback.quality", text("d")}},
         {},
         Prefs{"c"}},

        {"integer 0", Dictionary{{"audioQuality", number(0)}}, {}, Prefs{"NORMAL"}},
        {"integer 1", Dictionary{{"audioQuality", number(1)}}, {}, Prefs{"HIGH"}},
        {"integer 2", Dictionary{{"audioQuality", number(2)}}, {}, Prefs{"LOSSLESS"}},
        {"integer 3", Dictionary{{"audioQuality", number(3)}}, {}, Prefs{"HI-RES LOSSLESS"}},
        {"integer under a later key", Dictionary{{"playback.quality", number(2)}}, {}, Prefs{"LOSSLESS"}},

        {"integer 4 stops", Dictionary{{"audioQuality", number(4)}}, {}, stopped},
        {"integer -1 stops", Dictionary{{"audioQuality", number(-1)}}, {}, stopped},
        {"the largest integer stops",
         Dictionary{{"audioQuality", number(std::numeric_limits<std::int64_t>::max())}},
         {},
         stopped},
        {"the smallest integer stops",
         Dictionary{{"audioQuality", number(std::numeric_limits<std::int64_t>::min())}},
         {},
         stopped},
        {"7 stops before a later key",
         Dictionary{{"audioQuality", number(7)}, {"streamingQuality", text("HIGH")}},
         {},
         stopped},
        {"7 stops before the second file", Dictionary{{"audioQuality", number(7)}},
         Dictionary{{"audioQuality", text("HIGH")}}, stopped},
        {"7 under a later key leaves the earlier one alone",
         Dictionary{{"audioQuality", text("HIGH")}, {"streamingQuality", number(7)}},
         {},
         Prefs{"HIGH"}},

        {"an empty text is a tier", Dictionary{{"audioQuality", text("")}}, {}, Prefs{""}},
        {"a text that is a number", Dictionary{{"audioQuality", text("3")}}, {}, Prefs{"3"}},
        {"a Boolean is no integer",
         Dictionary{{"audioQuality", true}, {"streamingQuality", text("b")}},
         {},
         Prefs{"b"}},
        {"another type moves on",
         Dictionary{{"audioQuality", other}, {"streamingQuality", number(1)}},
         {},
         Prefs{"HIGH"}},
        {"nothing but other types",
         Dictionary{{"audioQuality", other},
                    {"streamingQuality", false},
                    {"preferredAudioQuality", other},
                    {"playback.quality", other}},
         {},
         {}},

        {"only the second file", {}, Dictionary{{"audioQuality", number(2)}}, Prefs{"LOSSLESS"}},
        {"the first file wins", Dictionary{{"playback.quality", text("first")}},
         Dictionary{{"audioQuality", text("second")}}, Prefs{"first"}},
        {"a first file without the keys", Dictionary{{"volume", number(3)}},
         Dictionary{{"audioQuality", text("second")}}, Prefs{"second"}},
        {"a first file of other types", Dictionary{{"audioQuality", true}},
         Dictionary{{"audioQuality", text("second")}}, Prefs{"second"}},
    };
    return rows;
}

TEST(TidalIntrospector, ReadsTheFirstKeyOfTheFirstFileThatHasATier) {
    for (const PreferenceRow& row : preferenceRows()) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        if (row.first) host.files.addPropertyList(firstFile, *row.first);
        if (row.second) host.files.addPropertyList(secondFile, *row.second);
        EXPECT_EQ(TidalIntrospector::readTidalPreferences(host.seams), row.expected);
    }
}

TEST(TidalIntrospector, PassesOverAFileThatCannotBeRead) {
    IntrospectionFixture host;
    host.files.addUnreadable(firstFile);
    host.files.addPropertyList(secondFile, {{"audioQuality", number(1)}});
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(host.seams), Prefs{"HIGH"});
    EXPECT_EQ(host.files.readPaths(), (std::vector<std::string>{firstFile, secondFile}));
}

TEST(TidalIntrospector, OpensNoFileThatIsNotThere) {
    IntrospectionFixture host;
    EXPECT_EQ(TidalIntrospector::readTidalPreferences(host.seams), std::nullopt);
    EXPECT_TRUE(host.files.readPaths().empty());
}

// Tiers

struct TierRow {
    const char* name;
    std::optional<std::string_view> tier;
    TierMeaning meaning;
};

const TierRow tierRows[] = {
    {"no tier", std::nullopt, {}},
    {"an empty tier", "", {}},
    {"HI-RES", "HI-RES", hiRes},
    {"HI-RES LOSSLESS", "HI-RES LOSSLESS", hiRes},
    {"hi-res in a longer text", "streaming in hi-res today", hiRes},
    {"lossless before hi-res in the text", "Lossless (Hi-Res)", hiRes},
    {"MAX", "MAX", hiRes},
    {"max in lower case", "max", hiRes},
    {"mAx", "mAx", hiRes},
    {"begins with MAX", "MAXIMUM", {}},
    {"MAX and more", "MAX quality", {}},
    {"MAX with a blank", " MAX", {}},
    {"MAX and a known word", "MAX HIGH", high},
    {"LOSSLESS", "LOSSLESS", lossless},
    {"lossless in lower case", "lossless", lossless},
    {"lossless in a longer text", "FLAC lossless stream", lossless},
    {"lossless before high", "high or lossless", lossless},
    {"HIGH", "HIGH", high},
    {"High in a longer text", "Highest quality", high},
    {"high before normal", "normal or high", high},
    {"NORMAL", "NORMAL", normal},
    {"normal in a longer text", "abnormal", normal},
    {"hires without the dash", "HIRES", {}},
    {"an unknown tier", "LOW", {}},
    {"a text outside ASCII", "質", {}},
};

TEST(TidalIntrospector, KnowsWhatATierMeans) {
    for (const TierRow& row : tierRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(TidalIntrospector::normaliseTier(row.tier), row.meaning);
    }
}

// Badges

struct BadgeRow {
    const char* name;
    const char* badge;
    std::optional<std::string> displayed;
    TierMeaning meaning;
};

const BadgeRow badgeRows[] = {
    {"HI-RES LOSSLESS", "HI-RES LOSSLESS", "HI-RES LOSSLESS", hiRes},
    {"HI-RES", "Hi-Res", "Hi-Res", hiRes},
    {"MAX", "Max", "Max", hiRes},
    {"MAX inside a word", "Maximum", "Maximum", {}},
    {"LOSSLESS", "Lossless", "Lossless", lossless},
    {"HIGH", "High", "High", high},
    {"NORMAL", "Normal", "Normal", normal},
    {"no pattern", "Low", std::nullopt, {}},
};

TEST(TidalIntrospector, FallsBackOnTheBadge) {
    for (const BadgeRow& row : badgeRows) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        host.showBadge("com.tidal.desktop", row.badge);
        const SourceClaim claim = TidalIntrospector::read(host.seams);
        EXPECT_EQ(claim.app, SourceApp::tidal);
        EXPECT_EQ(claim.configuredTier, std::nullopt);
        EXPECT_EQ(claim.displayedTier, row.displayed);
        EXPECT_EQ(test::declaredBy(claim), row.meaning);
    }
}

TEST(TidalIntrospector, ReadsTheBadgeOfTheDesktopApplicationOnly) {
    IntrospectionFixture host;
    host.showBadge("com.tidal.TIDAL", "HIGH");
    EXPECT_EQ(TidalIntrospector::read(host.seams).displayedTier, std::nullopt);
}

TEST(TidalIntrospector, APreferenceOfThreeIsHiRes) {
    IntrospectionFixture host;
    host.files.addPropertyList(firstFile, {{"audioQuality", number(3)}});
    const SourceClaim claim = TidalIntrospector::read(host.seams);
    EXPECT_EQ(claim.configuredTier, "HI-RES LOSSLESS");
    EXPECT_EQ(claim.displayedTier, std::nullopt);
    EXPECT_EQ(test::declaredBy(claim), hiRes);
}

TEST(TidalIntrospector, ThePreferenceDecidesAndBothTextsAreKept) {
    IntrospectionFixture host;
    host.files.addPropertyList(firstFile, {{"audioQuality", text("High")}});
    host.showBadge("com.tidal.desktop", "LOSSLESS");
    const SourceClaim claim = TidalIntrospector::read(host.seams);
    EXPECT_EQ(claim.configuredTier, "High");
    EXPECT_EQ(claim.displayedTier, "LOSSLESS");
    EXPECT_EQ(test::declaredBy(claim), high);
}

TEST(TidalIntrospector, AnUnknownPreferenceStillDecides) {
    IntrospectionFixture host;
    host.files.addPropertyList(firstFile, {{"audioQuality", text("")}});
    host.showBadge("com.tidal.desktop", "LOSSLESS");
    const SourceClaim claim = TidalIntrospector::read(host.seams);
    EXPECT_EQ(claim.configuredTier, "");
    EXPECT_EQ(claim.displayedTier, "LOSSLESS");
    EXPECT_EQ(test::declaredBy(claim), TierMeaning{});
}

TEST(TidalIntrospector, AStoppedSearchLeavesTheBadgeToDecide) {
    IntrospectionFixture host;
    host.files.addPropertyList(firstFile, {{"audioQuality", number(7)}, {"streamingQuality", text("HIGH")}});
    host.showBadge("com.tidal.desktop", "LOSSLESS");
    const SourceClaim claim = TidalIntrospector::read(host.seams);
    EXPECT_EQ(claim.configuredTier, std::nullopt);
    EXPECT_EQ(claim.displayedTier, "LOSSLESS");
    EXPECT_EQ(test::declaredBy(claim), lossless);
}

TEST(TidalIntrospector, WithoutAnyEvidenceOnlyTheApplicationIsKnown) {
    IntrospectionFixture host;
    EXPECT_EQ(TidalIntrospector::read(host.seams), SourceClaim{.app = SourceApp::tidal});
}

TEST(TidalIntrospector, ReadsTheFileAfreshAtEachCall) {
    IntrospectionFixture host;
    host.files.addPropertyList(firstFile, {{"audioQuality", number(1)}});
    EXPECT_EQ(TidalIntrospector::read(host.seams).configuredTier, "HIGH");
    host.files.addPropertyList(firstFile, {{"audioQuality", number(2)}});
    EXPECT_EQ(TidalIntrospector::read(host.seams).configuredTier, "LOSSLESS");
}

}  // namespace
}  // namespace purlock
