#include "source/spotify_introspector.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/source/introspection_fixture.h"

namespace purlock {
namespace {

using test::IntrospectionFixture;

struct Row {
    const char* name;
    const char* badge;
    std::optional<std::string> displayed;
    const char* codec;
};

const Row rows[] = {
    {"Very High", "Very High", "Very High", "Ogg 320"},
    {"very high in capitals", "VERY HIGH", "VERY HIGH", "Ogg 160"},
    {"very high in lower case", "very high", "very high", "Ogg 160"},
    {"High", "High", "High", "Ogg 160"},
    {"Normal", "Normal", "Normal", "Ogg 160"},
    {"a pattern and Very apart from it", "Very normal", "Very normal", "Ogg 320"},
    {"Very without a pattern", "Very low", std::nullopt, "Ogg 160"},
    {"no badge", "Low", std::nullopt, "Ogg 160"},
};

TEST(SpotifyIntrospector, TheBadgeTellsTheCodecsBitRate) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        host.showBadge("com.spotify.client", row.badge);
        const SourceClaim claim = SpotifyIntrospector::read(host.seams);
        EXPECT_EQ(claim.app, SourceApp::spotify);
        EXPECT_EQ(claim.configuredTier, std::nullopt);
        EXPECT_EQ(claim.displayedTier, row.displayed);
        EXPECT_EQ(test::declaredBy(claim), (TierMeaning{44100.0, 16, false, false, row.codec}));
    }
}

TEST(SpotifyIntrospector, DeclaresLossyDeliveryEvenWhenItDoesNotRun) {
    IntrospectionFixture host;
    const SourceClaim claim = SpotifyIntrospector::read(host.seams);
    EXPECT_EQ(claim.displayedTier, std::nullopt);
    EXPECT_EQ(test::declaredBy(claim), (TierMeaning{44100.0, 16, false, false, "Ogg 160"}));
    EXPECT_TRUE(host.files.readPaths().empty());
}

}  // namespace
}  // namespace purlock
