#include "source/introspectors.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/source/introspection_fixture.h"

namespace purlock {
namespace {

using test::IntrospectionFixture;

struct Row {
    const char* name;
    SourceApp app;
    const char* bundleID;
    const char* badge;
    SourceClaim claim;
};

/// Each application runs and shows a badge of its own, so that a claim by the wrong reader is seen.
const Row readerRows[] = {
    {"Tidal",
     SourceApp::tidal,
     "com.tidal.desktop",
     "NORMAL",
     {SourceApp::tidal, std::nullopt, "NORMAL", 44100.0, 16, false, false, "AAC 96"}},
    {"Apple Music",
     SourceApp::appleMusic,
     "com.apple.Music",
     "Dolby Atmos",
     {SourceApp::appleMusic, std::nullopt, "Dolby Atmos", 48000.0, 24, true, false, "Dolby Atmos"}},
    {"Spotify",
     SourceApp::spotify,
     "com.spotify.client",
     "Very High",
     {SourceApp::spotify, std::nullopt, "Very High", 44100.0, 16, false, false, "Ogg 320"}},
};

TEST(Introspectors, AskTheReaderOfTheApplication) {
    for (const Row& row : readerRows) {
        SCOPED_TRACE(row.name);
        IntrospectionFixture host;
        host.showBadge(row.bundleID, row.badge);
        EXPECT_EQ(Introspectors::claimFor(row.app, host.seams), row.claim);
    }
}

TEST(Introspectors, QobuzAlwaysGivesTheFixedClaim) {
    IntrospectionFixture host;
    host.showBadge("com.qobuz.player", "NORMAL");
    const SourceClaim fixed{SourceApp::qobuz, "Hi-Res FLAC", std::nullopt, 96000.0, 24, true, true, "FLAC"};
    EXPECT_EQ(Introspectors::claimFor(SourceApp::qobuz, host.seams), fixed);
    EXPECT_TRUE(host.files.readPaths().empty());
    EXPECT_TRUE(host.accessibility.created().empty());
}

TEST(Introspectors, AnotherApplicationGivesNoClaim) {
    IntrospectionFixture host;
    EXPECT_EQ(Introspectors::claimFor(SourceApp::other, host.seams), std::nullopt);
    EXPECT_TRUE(host.accessibility.created().empty());
}

TEST(Introspectors, ConsultTheBadgeEvenWhenAPreferenceDecides) {
    IntrospectionFixture host;
    host.files.addPropertyList("/home/listener/Library/Preferences/com.tidal.desktop.plist",
                               {{"audioQuality", std::int64_t{3}}});
    host.showBadge("com.tidal.desktop", "HIGH");
    const auto claim = Introspectors::claimFor(SourceApp::tidal, host.seams);
    ASSERT_TRUE(claim);
    EXPECT_EQ(claim->displayedTier, "HIGH");
    EXPECT_EQ(host.accessibility.created().size(), 1U);
}

}  // namespace
}  // namespace purlock
