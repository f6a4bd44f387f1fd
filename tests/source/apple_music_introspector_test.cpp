#include "source/apple_music_introspector.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/source/introspection_fixture.h"

namespace purlock {
namespace {

using test::IntrospectionFixture;

const std::string file = "/home/listener/Library/Preferences/com.apple.Music.plist";

const TierMeaning hiRes{96000.0, 24, true, true, "ALAC"};
const TierMeaning lossless{48000.0, 24, true, false, "ALAC"};
const TierMeaning high{44100.0, 16, false, false, "AAC 256"};
const TierMeaning dolby{48000.0, 24, true, false, "Dolby Atmos"};

// Preferences

struct PreferenceRow {
    const char* name;
    PropertyListDictionary dictionary;
    const char* tier;
};

const std::vector<PreferenceRow>& preferenceRows() {
    const PropertyListValue text = std::string("true");
    const PropertyListValue one = std::int64_t{1};
    static const std::vector<PreferenceRow> rows = {
        {"none of the keys", {}, "High Quality"},
        {"other keys", {{"volume", one}}, "High Quality"},
        {"lossless, first spelling", {{"lossless-enabled", true}}, "Lossless"},
        {"lossless, second spelling", {{"losslessEnabled", true}}, "Lossless"},
        {"hi-res, first spelling", {{"hi-res-lossless-enabled", true}}, "Hi-Res Lossless"},
        {"hi-res, second spelling", {{"hiResLosslessEnabled", true}}, "Hi-Res Lossless"},
        {"lossless off", {{"lossless-enabled", false}}, "High Quality"},
        {"hi-res off, lossless on",
         {{"hi-res-lossless-enabled", false}, {"losslessEnabled", true}},
         "Lossless"},
        {"hi-res on, lossless off",
         {{"hiResLosslessEnabled", true}, {"lossless-enabled", false}},
         "Hi-Res Lossless"},
        {"both on", {{"hi-res-lossless-enabled", true}, {"lossless-enabled", true}}, "Hi-Res Lossless"},
        {"hi-res: the first spelling's no decides",
         {{"hi-res-lossless-enabled", false}, {"hiResLosslessEnabled", true}},
         "High Quality"},
        {"hi-res: the first spelling's no decides, with lossless",
         {{"hi-res-lossless-enabled", false}, {"hiResLosslessEnabled", true}, {"lossless-enabled", true}},
         "Lossless"},
        {"hi-res: the first spelling's yes decides",
         {{"hi-res-lossless-enabled", true}, {"hiResLosslessEnabled", false}},
         "Hi-Res Lossless"},
        {"lossless: the first spelling's no decides",
         {{"lossless-enabled", false}, {"losslessEnabled", true}},
         "High Quality"},
        {"hi-res: an integer is no Boolean",
         {{"hi-res-lossless-enabled", one}, {"hiResLosslessEnabled", true}},
         "Hi-Res Lossless"},
        {"lossless: a text is no Boolean",
         {{"lossless-enabled", text}, {"losslessEnabled", true}},
         "Lossless"},
        {"lossless: nothing but other types",
         {{"lossless-enabled", one}, {"losslessEnabled", OtherPropertyListType{}}},
         "High Quality"},
    };
    return rows;
}

TEST(AppleMusicIntrospector, AReadableFileAlwaysGivesATier) {
    for (const PreferenceRow& row : preferenceRows()) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        host.files.addPropertyList(file, row.dictionary);
        EXPECT_EQ(AppleMusicIntrospector::readPreferences(host.seams), Prefs{row.tier});
    }
}

TEST(AppleMusicIntrospector, WithoutAFileThereIsNoPreference) {
    IntrospectionFixture host;
    EXPECT_EQ(AppleMusicIntrospector::readPreferences(host.seams), std::nullopt);
    EXPECT_TRUE(host.files.readPaths().empty());
}

TEST(AppleMusicIntrospector, AnUnreadableFileGivesNoPreference) {
    IntrospectionFixture host;
    host.files.addUnreadable(file);
    EXPECT_EQ(AppleMusicIntrospector::readPreferences(host.seams), std::nullopt);
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
    {"Hi-Res Lossless", "Hi-Res Lossless", hiRes},
    {"hi-res in capitals", "HI-RES", hiRes},
    {"hi-res behind lossless", "Lossless, even hi-res", hiRes},
    {"Lossless", "Lossless", lossless},
    {"lossless in capitals", "APPLE LOSSLESS", lossless},
    {"lossless before high", "High or lossless", lossless},
    {"High Quality", "High Quality", high},
    {"high in another word", "Highlights", high},
    {"high before dolby", "Dolby, high", high},
    {"Dolby Atmos", "Dolby Atmos", dolby},
    {"dolby in lower case", "dolby audio", dolby},
    {"an unknown tier", "Low", {}},
    {"hires without the dash", "Hires", {}},
};

TEST(AppleMusicIntrospector, KnowsWhatATierMeans) {
    for (const TierRow& row : tierRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(AppleMusicIntrospector::normaliseTier(row.tier), row.meaning);
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
    {"Hi-Res Lossless", "  Hi-Res Lossless\n", "Hi-Res Lossless", hiRes},
    {"Lossless", "Lossless", "Lossless", lossless},
    {"High Quality", "High Quality", "High Quality", high},
    {"Dolby Atmos", "Dolby Atmos", "Dolby Atmos", dolby},
    {"Hi-Res alone is no badge", "Hi-Res", std::nullopt, {}},
    {"High alone is no badge", "High", std::nullopt, {}},
    {"Dolby alone is no badge", "Dolby", std::nullopt, {}},
};

TEST(AppleMusicIntrospector, FallsBackOnTheBadge) {
    for (const BadgeRow& row : badgeRows) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        host.showBadge("com.apple.Music", row.badge);
        const SourceClaim claim = AppleMusicIntrospector::read(host.seams);
        EXPECT_EQ(claim.app, SourceApp::appleMusic);
        EXPECT_EQ(claim.configuredTier, std::nullopt);
        EXPECT_EQ(claim.displayedTier, row.displayed);
        EXPECT_EQ(test::declaredBy(claim), row.meaning);
    }
}

TEST(AppleMusicIntrospector, ThePreferenceDecidesAndBothTextsAreKept) {
    IntrospectionFixture host;
    host.files.addPropertyList(file, {});
    host.showBadge("com.apple.Music", "Dolby Atmos");
    const SourceClaim claim = AppleMusicIntrospector::read(host.seams);
    EXPECT_EQ(claim.configuredTier, "High Quality");
    EXPECT_EQ(claim.displayedTier, "Dolby Atmos");
    EXPECT_EQ(test::declaredBy(claim), high);
}

TEST(AppleMusicIntrospector, WithoutAnyEvidenceOnlyTheApplicationIsKnown) {
    IntrospectionFixture host;
    EXPECT_EQ(AppleMusicIntrospector::read(host.seams), SourceClaim{.app = SourceApp::appleMusic});
}

}  // namespace
}  // namespace purlock
