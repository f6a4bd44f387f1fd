#include "source/introspectors.h"

#include "source/apple_music_introspector.h"
#include "source/spotify_introspector.h"
#include "source/tidal_introspector.h"

namespace purlock::Introspectors {

namespace {

/// Qobuz has no preference that could be read and shows no badge: what its top tier delivers is taken as
/// claimed.
SourceClaim qobuzClaim() {
    return {.app = SourceApp::qobuz,
            .configuredTier = "Hi-Res FLAC",
            .displayedTier = std::nullopt,
            .declaredRate = 96000.0,
            .declaredBitDepth = 24,
            .isLossless = true,
            .isHiRes = true,
            .codec = "FLAC"};
}

}  // namespace

std::optional<SourceClaim> claimFor(SourceApp app, const IntrospectionSeams& seams) {
    switch (app) {
        case SourceApp::tidal:
            return TidalIntrospector::read(seams);
        case SourceApp::appleMusic:
            return AppleMusicIntrospector::read(seams);
        case SourceApp::spotify:
            return SpotifyIntrospector::read(seams);
        case SourceApp::qobuz:
            return qobuzClaim();
        case SourceApp::other:
            break;
    }
    return std::nullopt;
}

}  // namespace purlock::Introspectors
