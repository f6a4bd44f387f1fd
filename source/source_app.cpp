#include "source/source_app.h"

#include <array>

namespace purlock {

namespace {

struct KnownIdentifier {
    std::string_view bundleID;
    SourceApp app;
};

constexpr std::array knownIdentifiers = {
    KnownIdentifier{"com.tidal.desktop", SourceApp::tidal},
    KnownIdentifier{"com.tidal.TIDAL", SourceApp::tidal},
    KnownIdentifier{"com.apple.Music", SourceApp::appleMusic},
    KnownIdentifier{"com.apple.iTunes", SourceApp::appleMusic},
    KnownIdentifier{"com.spotify.client", SourceApp::spotify},
    KnownIdentifier{"com.qobuz.qobuzplayer", SourceApp::qobuz},
    KnownIdentifier{"com.qobuz.player", SourceApp::qobuz},
};

}  // namespace

SourceApp sourceAppFromBundleID(std::optional<std::string_view> bundleID) {
    if (!bundleID) return SourceApp::other;
    for (const KnownIdentifier& known : knownIdentifiers) {
        if (known.bundleID == *bundleID) return known.app;
    }
    return SourceApp::other;
}

}  // namespace purlock
