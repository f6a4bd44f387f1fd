#include "platform/linux/applications/process_identity.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/linux/applications/known_identifiers.h"

namespace purlock::host_linux {
namespace {

struct GroupRow {
    const char* name;
    std::string text;
    std::optional<std::string> expected;
};

class ControlGroups : public ::testing::TestWithParam<GroupRow> {};

TEST_P(ControlGroups, NameTheApplication) {
    EXPECT_EQ(applicationOfControlGroup(GetParam().text), GetParam().expected);
}

const std::string slice = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";

const GroupRow groupRows[] = {
    {"GnomeScope", slice + "app-gnome-org.gnome.Rhythmbox3-2873.scope\n", "org.gnome.Rhythmbox3"},
    {"GnomeScopeOfAPlainName", slice + "app-gnome-firefox-2873.scope\n", "firefox"},
    {"PlasmaScope", slice + "app-org.kde.elisa-6f2c0a4be1d94ad2a9c4.scope\n", "org.kde.elisa"},
    {"FlatpakScope", slice + "app-flatpak-com.spotify.Client-3113.scope\n", "com.spotify.Client"},
    {"EscapedDash", slice + "app-gnome-tidal\\x2dhifi-99.scope\n", "tidal-hifi"},
    {"Service", slice + "app-org.kde.elisa@7a0e.service\n", "org.kde.elisa"},
    {"ServiceWithALauncher", slice + "app-gnome-org.gnome.Music@autostart.service\n", "org.gnome.Music"},
    {"ServiceWithoutRandom", slice + "app-org.kde.elisa.service\n", "org.kde.elisa"},
    {"EscapedDashInAService", slice + "app-tidal\\x2dhifi@autostart.service\n", "tidal-hifi"},
    {"Snap", slice + "snap.spotify.spotify-0e3f7c1a-54be-4bb1-a0fc-2f7a0f9a3f36.scope\n", "spotify_spotify"},
    {"OldSnap", slice + "snap.spotify.spotify.0e3f7c1a-54be-4bb1-a0fc-2f7a0f9a3f36.scope\n",
     "spotify_spotify"},
    {"SnapApplicationWithADash", slice + "snap.tidal.tidal-hifi-0e3f7c1a-54be-4bb1-a0fc-2f7a0f9a3f36.scope\n",
     "tidal_tidal-hifi"},
    {"LegacyHierarchy",
     "12:cpu,cpuacct:/\n1:name=systemd:/user.slice/app-gnome-mpv-11.scope\n0::/elsewhere\n", "mpv"},
    {"InnermostUnitOnly", slice + "app-org.kde.konsole-11.scope/tab(21).scope\n", std::nullopt},
    {"Terminal", slice + "vte-spawn-0e3f7c1a.scope\n", std::nullopt},
    {"Session", "0::/user.slice/user-1000.slice/session-2.scope\n", std::nullopt},
    {"Daemon", "0::/system.slice/bluetooth.service\n", std::nullopt},
    {"SliceOnly", slice + "app-gnome.slice\n", std::nullopt},
    {"ScopeWithoutRandom", slice + "app-mpv.scope\n", std::nullopt},
    {"EmptyIdentifier", slice + "app-gnome--1.scope\n", std::nullopt},
    {"EscapedSlash", slice + "app-gnome-a\\x2fb-1.scope\n", std::nullopt},
    {"EscapedNul", slice + "app-gnome-a\\x00b-1.scope\n", std::nullopt},
    {"BrokenEscapeStays", slice + "app-gnome-a\\xZZ-1.scope\n", "a\\xZZ"},
    {"TooLong", slice + "app-gnome-" + std::string(300, 'a') + "-1.scope\n", std::nullopt},
    {"Root", "0::/\n", std::nullopt},
    {"Empty", "", std::nullopt},
    {"Noise", "::::\n\n/\n:", std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Rows, ControlGroups, ::testing::ValuesIn(groupRows),
                         [](const auto& row) { return row.param.name; });

class FlatpakInfo : public ::testing::TestWithParam<GroupRow> {};

TEST_P(FlatpakInfo, NamesTheApplication) {
    EXPECT_EQ(applicationOfFlatpakInfo(GetParam().text), GetParam().expected);
}

const GroupRow infoRows[] = {
    {"Application", "[Application]\nname=com.spotify.Client\nruntime=runtime/org.freedesktop.Platform\n",
     "com.spotify.Client"},
    {"LaterGroup", "[Instance]\nname=wrong\n[Application]\nruntime=x\nname=org.gnome.Music\n",
     "org.gnome.Music"},
    {"Runtime", "[Runtime]\nname=org.gnome.Platform\n", std::nullopt},
    {"EmptyName", "[Application]\nname=\n", std::nullopt},
    {"PathAsName", "[Application]\nname=../../x\n", std::nullopt},
    {"Empty", "", std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Rows, FlatpakInfo, ::testing::ValuesIn(infoRows),
                         [](const auto& row) { return row.param.name; });

struct StatusRow {
    const char* name;
    std::string text;
    std::optional<ProcessStatus> expected;
};

class ProcessStatusTexts : public ::testing::TestWithParam<StatusRow> {};

TEST_P(ProcessStatusTexts, AreRead) {
    EXPECT_EQ(parseProcessStatus(GetParam().text), GetParam().expected);
}

const std::string fields = " S 1234 55 66 0 -1 4194304 1 2 3 4 5 6 7 8 20 0 1 0 987654 11 12\n";

const StatusRow statusRows[] = {
    {"Usual", "77 (mpv)" + fields, ProcessStatus{1234, 66, 987654}},
    {"NameWithBracketsAndBlanks", "77 (a) b (c) S 9)" + fields, ProcessStatus{1234, 66, 987654}},
    {"Cut", "77 (mpv) S 1234 55", std::nullopt},
    {"CutBeforeTheStartTime", "77 (mpv) S 1234 55 66 0 -1", std::nullopt},
    {"NoName", "77 mpv S 1 2 3", std::nullopt},
    {"NothingAfterTheName", "77 (mpv)", std::nullopt},
    {"Empty", "", std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Rows, ProcessStatusTexts, ::testing::ValuesIn(statusRows),
                         [](const auto& row) { return row.param.name; });

struct KnownRow {
    const char* desktopID;
    const char* bundleID;
};

class KnownIdentifiers : public ::testing::TestWithParam<KnownRow> {};

TEST_P(KnownIdentifiers, AreTranslated) {
    const auto [desktopID, bundleID] = GetParam();
    EXPECT_EQ(bundleIdentifierOf(desktopID), bundleID);
    EXPECT_TRUE(isBundleIdentifierOf(bundleID, desktopID));
    EXPECT_FALSE(isBundleIdentifierOf("org.other", desktopID));
}

INSTANTIATE_TEST_SUITE_P(Rows, KnownIdentifiers,
                         ::testing::Values(KnownRow{"spotify", "com.spotify.client"},
                                           KnownRow{"com.spotify.Client", "com.spotify.client"},
                                           KnownRow{"spotify_spotify", "com.spotify.client"},
                                           KnownRow{"spotify-launcher", "com.spotify.client"},
                                           KnownRow{"tidal-hifi", "com.tidal.desktop"},
                                           KnownRow{"com.mastermindzh.tidal-hifi", "com.tidal.desktop"},
                                           KnownRow{"io.github.nokse22.high-tide", "com.tidal.desktop"},
                                           KnownRow{"sh.cider.Cider", "com.apple.Music"},
                                           KnownRow{"sh.cider.genten", "com.apple.Music"},
                                           KnownRow{"cider", "com.apple.Music"}, KnownRow{"mpv", "mpv"},
                                           KnownRow{"Spotify", "Spotify"},
                                           KnownRow{"org.gnome.Rhythmbox3", "org.gnome.Rhythmbox3"}));

}  // namespace
}  // namespace purlock::host_linux
