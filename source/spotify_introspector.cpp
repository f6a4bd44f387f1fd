#include "source/spotify_introspector.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "base/text.h"
#include "source/accessibility_scraper.h"

namespace purlock::SpotifyIntrospector {

namespace {

constexpr std::string_view scrapedBundleID = "com.spotify.client";
constexpr std::array<std::string_view, 3> badgePatterns = {"Very High", "High", "Normal"};

}  // namespace

SourceClaim read(const IntrospectionSeams& seams) {
    const auto displayed =
        AccessibilityScraper::scrape(seams.accessibility, seams.applications, scrapedBundleID, badgePatterns);
    // The badge is found in any letter case, but only the one that the application itself writes names the
    // tier.
    const bool isVeryHigh = displayed && contains(*displayed, "Very");
    return makeClaim(SourceApp::spotify, std::nullopt, displayed,
                     {.rate = 44100.0,
                      .bitDepth = 16,
                      .lossless = false,
                      .hiRes = false,
                      .codec = isVeryHigh ? "Ogg 320" : "Ogg 160"});
}

}  // namespace purlock::SpotifyIntrospector
