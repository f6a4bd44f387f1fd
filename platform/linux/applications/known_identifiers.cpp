#include "platform/linux/applications/known_identifiers.h"

#include <algorithm>

namespace purlock::host_linux {

namespace {

struct Known {
    std::string_view desktopID;
    std::string_view bundleID;
};

constexpr Known knownApplications[] = {
    {"spotify", "com.spotify.client"},             // the service's Debian package
    {"com.spotify.Client", "com.spotify.client"},  // Flathub
    {"spotify_spotify", "com.spotify.client"},     // the service's snap
    {"spotify-launcher", "com.spotify.client"},    // Arch Linux, which starts the service's own program

    {"tidal-hifi", "com.tidal.desktop"},                   // the web player with its own window
    {"com.mastermindzh.tidal-hifi", "com.tidal.desktop"},  // the same from Flathub
    {"io.github.nokse22.high-tide", "com.tidal.desktop"},  // High Tide, Flathub

    {"sh.cider.Cider", "com.apple.Music"},   // Cider 2, Flathub
    {"sh.cider.genten", "com.apple.Music"},  // Cider 3
    {"cider", "com.apple.Music"},            // Cider's Debian package
};

}  // namespace

std::string bundleIdentifierOf(std::string_view desktopID) {
    const auto* known = std::ranges::find(knownApplications, desktopID, &Known::desktopID);
    return std::string(known != std::end(knownApplications) ? known->bundleID : desktopID);
}

bool isBundleIdentifierOf(std::string_view bundleID, std::string_view desktopID) {
    const auto* known = std::ranges::find(knownApplications, desktopID, &Known::desktopID);
    return bundleID == (known != std::end(knownApplications) ? known->bundleID : desktopID);
}

}  // namespace purlock::host_linux
