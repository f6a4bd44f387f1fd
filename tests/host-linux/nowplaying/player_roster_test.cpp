#include "platform/linux/nowplaying/player_roster.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace purlock::host_linux {
namespace {

using Arrival = PlayerRoster::Arrival;
using Dictionary = BusValue::Dictionary;

std::string playerName(const std::string& name) {
    return std::string(playerNamePrefix) + name;
}

// What happens to a roster; :1, :2 and :3 are the players' unique names.

using Event = std::function<void(PlayerRoster&)>;

Event arrives(const std::string& owner, const std::string& name) {
    return [=](PlayerRoster& roster) { roster.setNameOwner(playerName(name), owner); };
}
Event leaves(const std::string& name) {
    return [=](PlayerRoster& roster) { roster.setNameOwner(playerName(name), ""); };
}
Event tells(const std::string& owner, const std::string& property, const BusValue& value) {
    return [=](PlayerRoster& roster) {
        roster.updateProperties(owner, BusValue(Dictionary{{property, value}}));
    };
}
Event plays(const std::string& owner) {
    return tells(owner, "PlaybackStatus", BusValue("Playing"));
}
Event pauses(const std::string& owner) {
    return tells(owner, "PlaybackStatus", BusValue("Paused"));
}
Event loads(const std::string& owner, const std::string& title) {
    return tells(owner, "Metadata", BusValue(Dictionary{{"xesam:title", BusValue(title)}}));
}

struct CurrentRow {
    const char* name;
    std::vector<Event> events;
    const char* current;
};

const std::vector<CurrentRow>& currentRows() {
    const Event one = arrives(":1", "one");
    const Event two = arrives(":2", "two");
    const Event three = arrives(":3", "three");
    static const std::vector<CurrentRow> rows = {
        {"no player", {}, ""},
        {"one player that says nothing", {one}, ":1"},
        {"two players that say nothing", {two, one}, ":2"},
        {"the playing one", {one, two, plays(":2")}, ":2"},
        {"the one that started last", {one, two, plays(":2"), plays(":1")}, ":1"},
        {"the one that started last, the other way", {one, two, plays(":1"), plays(":2")}, ":2"},
        {"a playing one before a paused one that changes", {one, two, plays(":1"), loads(":2", "a")}, ":1"},
        {"the other playing one when the last one pauses",
         {one, two, plays(":1"), plays(":2"), pauses(":2")},
         ":1"},
        {"the last one when it plays again",
         {one, two, plays(":1"), plays(":2"), pauses(":2"), plays(":2")},
         ":2"},
        {"telling again that it plays is no start", {one, two, plays(":1"), plays(":2"), plays(":1")}, ":2"},
        {"a new track is no start", {one, two, plays(":1"), plays(":2"), loads(":1", "a")}, ":2"},
        {"the one that paused last", {one, two, plays(":1"), plays(":2"), pauses(":2"), pauses(":1")}, ":1"},
        {"the one that changed last", {one, two, loads(":1", "a"), loads(":2", "b")}, ":2"},
        {"telling the same again is no change",
         {one, two, loads(":1", "a"), loads(":2", "b"), loads(":1", "a")},
         ":2"},
        {"another property is no change",
         {one, two, loads(":1", "a"), tells(":2", "Volume", BusValue(0.5))},
         ":1"},
        {"an arrival is no change", {one, loads(":1", "a"), pauses(":1"), two}, ":1"},
        {"an arrival that tells that it stopped is no change",
         {one, loads(":1", "a"), two, tells(":2", "PlaybackStatus", BusValue("Stopped"))},
         ":1"},
        {"an arrival with a track is one", {one, loads(":1", "a"), two, loads(":2", "b")}, ":2"},
        {"the playing one leaves", {one, two, plays(":1"), plays(":2"), leaves("two")}, ":1"},
        {"all leave", {one, two, plays(":1"), leaves("two"), leaves("one")}, ""},
        {"of three, the last but one",
         {one, two, three, plays(":1"), plays(":2"), plays(":3"), leaves("three")},
         ":2"},
        {"a stranger that plays", {one, plays(":9")}, ":1"},
    };
    return rows;
}

TEST(PlayerRoster, KnowsTheCurrentPlayer) {
    for (const CurrentRow& row : currentRows()) {
        SCOPED_TRACE(row.name);
        PlayerRoster roster;
        for (const Event& event : row.events) event(roster);
        EXPECT_EQ(roster.currentOwner(), row.current);
    }
}

struct ProxyRow {
    const char* name;
    bool proxying;
};

constexpr ProxyRow proxyRows[] = {
    {"org.mpris.MediaPlayer2.playerctld", true},
    {"org.mpris.MediaPlayer2.playerctld.instance7", true},
    {"org.mpris.MediaPlayer2.kdeconnect.mpris_000001", true},
    {"org.mpris.MediaPlayer2.mpv", false},
    {"org.mpris.MediaPlayer2.vlc.instance4711", false},
    {"org.mpris.MediaPlayer2.playerctldish", false},
    {"org.mpris.MediaPlayer2.Playerctld", false},
    {"org.mpris.MediaPlayer2.some.playerctld", false},
    {"com.example.playerctld", false},
    {"playerctld", false},
    {"", false},
};

TEST(PlayerRoster, PassesOverProxyingPlayers) {
    for (const ProxyRow& row : proxyRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isProxyingPlayer(row.name), row.proxying);
    }
    PlayerRoster roster;
    EXPECT_EQ(roster.setNameOwner(playerName("playerctld"), ":1"), Arrival::refused);
    EXPECT_FALSE(roster.contains(":1"));
}

TEST(PlayerRoster, APeerWithTwoNamesIsOnePlayerUntilItHasLostBoth) {
    PlayerRoster roster;
    EXPECT_EQ(roster.setNameOwner(playerName("vlc"), ":1"), Arrival::added);
    EXPECT_EQ(roster.setNameOwner(playerName("vlc.instance7"), ":1"), Arrival::known);
    EXPECT_EQ(roster.setNameOwner(playerName("vlc"), ":1"), Arrival::known);
    roster.setNameOwner(playerName("vlc"), "");
    EXPECT_TRUE(roster.contains(":1"));
    roster.setNameOwner(playerName("vlc.instance7"), "");
    EXPECT_FALSE(roster.contains(":1"));
}

TEST(PlayerRoster, ANameThatChangesHandsIsTheNewOwners) {
    PlayerRoster roster;
    roster.setNameOwner(playerName("mpv"), ":1");
    EXPECT_EQ(roster.setNameOwner(playerName("mpv"), ":2"), Arrival::added);
    EXPECT_FALSE(roster.contains(":1"));
    EXPECT_TRUE(roster.contains(":2"));
}

TEST(PlayerRoster, OtherNamesAreNoPlayers) {
    PlayerRoster roster;
    for (const char* name :
         {"org.mpris.MediaPlayer2", "org.freedesktop.DBus", "org.mpris.MediaPlayer3.mpv", ""}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(roster.setNameOwner(name, ":1"), Arrival::refused);
    }
    EXPECT_EQ(roster.currentOwner(), "");
}

TEST(PlayerRoster, KeepsABoundedNumberOfPlayersAndNames) {
    PlayerRoster roster;
    for (std::size_t i = 0; i < PlayerRoster::maximumPlayers; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(roster.setNameOwner(playerName(number), ":" + number), Arrival::added);
    }
    EXPECT_EQ(roster.setNameOwner(playerName("more"), ":more"), Arrival::refused);
    for (int i = 0; i < 1000; ++i) roster.setNameOwner(playerName("alias" + std::to_string(i)), ":0");
    EXPECT_LE(roster.find(":0")->names.size(), PlayerRoster::maximumPlayers);
    roster.setNameOwner(playerName("1"), "");
    EXPECT_EQ(roster.setNameOwner(playerName("more"), ":more"), Arrival::added);
}

TEST(PlayerRoster, TellsWhatAReaderCouldSeeDiffer) {
    const NowPlayingChanges nothing;
    PlayerRoster roster;
    EXPECT_EQ(roster.takeChanges(), nothing);

    arrives(":1", "one")(roster);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.application = true}));
    EXPECT_EQ(roster.takeChanges(), nothing);

    roster.setProcessIdentifier(":1", 4711);
    EXPECT_EQ(roster.find(":1")->processIdentifier, 4711);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.application = true}));

    loads(":1", "a")(roster);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.information = true}));

    plays(":1")(roster);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.playing = true}));

    tells(":1", "Rate", BusValue(2.0))(roster);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.playing = true}));

    tells(":1", "Volume", BusValue(0.1))(roster);
    EXPECT_EQ(roster.takeChanges(), nothing);

    arrives(":2", "two")(roster);
    loads(":2", "b")(roster);
    EXPECT_EQ(roster.takeChanges(), nothing);  // nobody sees it

    plays(":2")(roster);
    EXPECT_EQ(roster.takeChanges(),
              (NowPlayingChanges{.application = true, .information = true, .playing = true}));

    roster.clear();
    EXPECT_EQ(roster.takeChanges(),
              (NowPlayingChanges{.application = true, .information = true, .playing = true}));
}

}  // namespace
}  // namespace purlock::host_linux
