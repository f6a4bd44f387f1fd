#include "source/source_app.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace purlock {
namespace {

struct Row {
    const char* name;
    std::optional<std::string_view> bundleID;
    SourceApp app;
};

constexpr Row rows[] = {
    {"no identifier", std::nullopt, SourceApp::other},
    {"an empty identifier", "", SourceApp::other},
    {"Tidal", "com.tidal.desktop", SourceApp::tidal},
    {"Tidal, the other one", "com.tidal.TIDAL", SourceApp::tidal},
    {"Apple Music", "com.apple.Music", SourceApp::appleMusic},
    {"iTunes", "com.apple.iTunes", SourceApp::appleMusic},
    {"Spotify", "com.spotify.client", SourceApp::spotify},
    {"Qobuz", "com.qobuz.qobuzplayer", SourceApp::qobuz},
    {"Qobuz, the other one", "com.qobuz.player", SourceApp::qobuz},
    {"Apple Music in lower case", "com.apple.music", SourceApp::other},
    {"Tidal in lower case", "com.tidal.tidal", SourceApp::other},
    {"Spotify in capitals", "COM.SPOTIFY.CLIENT", SourceApp::other},
    {"only the beginning", "com.spotify", SourceApp::other},
    {"something behind it", "com.spotify.client.helper", SourceApp::other},
    {"something before it", "x.com.spotify.client", SourceApp::other},
    {"a blank behind it", "com.spotify.client ", SourceApp::other},
    {"another player", "io.mpv.Mpv", SourceApp::other},
};

TEST(SourceApp, IsFoundByTheWholeIdentifier) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(sourceAppFromBundleID(row.bundleID), row.app);
    }
}

}  // namespace
}  // namespace purlock
