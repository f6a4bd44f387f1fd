#include "platform/linux/applications/known_identifiers.h"

#include <algorithm>

namespace purlock::host_linux {

namespace {

struct Known {
    std::string_view desktopID;
    std::string_view bundleID;
};

// Each with where its desktop file's id comes from. Programs that play Spotify through librespot take the
// same Ogg Vorbis as the service's own.
constexpr Known knownApplications[] = {
    {"spotify", "com.spotify.client"},                  // the service's Debian package
    {"com.spotify.Client", "com.spotify.client"},       // Flathub
    {"spotify_spotify", "com.spotify.client"},          // the service's snap
    {"spotify-launcher", "com.spotify.client"},         // Arch Linux, which starts the service's own program
    {"io.github.hrkfdn.ncspot", "com.spotify.client"},  // ncspot, Flathub
    {"ncspot", "com.spotify.client"},                   // the same from distributions (misc/ncspot.desktop)
    {"ncspot_ncspot", "com.spotify.client"},            // and as a snap
    {"dev.alextren.Spot", "com.spotify.client"},        // Spot, Flathub
    {"dev.diegovsky.Riff", "com.spotify.client"},       // Riff, which came after Spot, Flathub

    {"tidal-hifi", "com.tidal.desktop"},                   // the web player with its own window
    {"com.mastermindzh.tidal-hifi", "com.tidal.desktop"},  // the same from Flathub
    {"io.github.nokse22.high-tide", "com.tidal.desktop"},  // High Tide, Flathub
    {"io.github.nokse22.HighTide", "com.tidal.desktop"},   // the same, as it was called before
    {"io.github.lullabyX.sone", "com.tidal.desktop"},      // SONE, Flathub
    {"sone", "com.tidal.desktop"},                         // the same from the AUR
    {"com.hiresti.player", "com.tidal.desktop"},           // hiresTI, its own Flatpak

    {"com.blitzfc.qbz", "com.qobuz.player"},  // QBZ, Flatpak and Arch package
    {"qbz", "com.qobuz.player"},              // the same from the AUR and its Debian package
    {"qbz-player_qbz", "com.qobuz.player"},   // and as a snap

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
