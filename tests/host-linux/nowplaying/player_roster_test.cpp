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

Event stops(const std::string& owner) {
    return tells(owner, "PlaybackStatus", BusValue("Stopped"));
}
Event unloads(const std::string& owner) {
    return tells(owner, "Metadata", BusValue(Dictionary{}));
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
        {"one player that says nothing", {one}, ""},
        {"two players with a track", {two, one, loads(":2", "a"), loads(":1", "b")}, ":1"},
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
        {"a stranger that plays", {one, loads(":1", "a"), plays(":9")}, ":1"},
        {"a stopped player without a track", {one, stops(":1")}, ""},
        {"a stopped player with a track", {one, loads(":1", "a"), stops(":1")}, ":1"},
        {"a stopped player whose track goes", {one, loads(":1", "a"), stops(":1"), unloads(":1")}, ""},
        {"a paused player without a track", {one, pauses(":1")}, ":1"},
        {"a player that plays without a track", {one, plays(":1")}, ":1"},
        {"a stopped player without a track is passed over", {one, loads(":1", "a"), two, stops(":2")}, ":1"},
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
    {"org.mpris.MediaPlayer2.plasma-browser-integration", true},
    {"org.mpris.MediaPlayer2.plasma-browser-integration.instance7", true},
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
    for (int i = 0; i < 1000; ++i) roster.setNameOwner(playerName("alias" + std::to_string(i)), ":0");
    EXPECT_LE(roster.find(":0")->names.size(), PlayerRoster::maximumPlayers);
    EXPECT_TRUE(roster.isFull());
    for (const std::string& owner : roster.owners()) plays(owner)(roster);
    EXPECT_EQ(roster.setNameOwner(playerName("more"), ":more"), Arrival::refused) << "all of them play";
    leaves("1")(roster);
    EXPECT_EQ(roster.setNameOwner(playerName("more"), ":more"), Arrival::added);
}

TEST(PlayerRoster, ANewPlayerTakesThePlaceOfOneThatIsMerelyOpen) {
    PlayerRoster roster;
    for (std::size_t i = 0; i < PlayerRoster::maximumPlayers; ++i) {
        const std::string number = std::to_string(i);
        arrives(":" + number, number)(roster);
        if (i != 7) loads(":" + number, "a")(roster);
    }
    EXPECT_EQ(roster.setNameOwner(playerName("mpv"), ":mpv"), Arrival::added);
    EXPECT_FALSE(roster.contains(":7"));
    plays(":mpv")(roster);
    EXPECT_EQ(roster.currentOwner(), ":mpv");
    EXPECT_EQ(roster.setNameOwner(playerName("vlc"), ":vlc"), Arrival::added);
    EXPECT_FALSE(roster.contains(":0")) << "nobody is merely open: the one that said nothing for longest";
    EXPECT_EQ(roster.owners().size(), PlayerRoster::maximumPlayers);
}

TEST(PlayerRoster, APlayerThatDoesNotAnswerDoesNotPlay) {
    PlayerRoster roster;
    arrives(":1", "one")(roster);
    arrives(":2", "two")(roster);
    loads(":1", "a")(roster);
    loads(":2", "b")(roster);
    plays(":1")(roster);
    plays(":2")(roster);
    roster.setSilent(":2", true);
    EXPECT_EQ(roster.currentOwner(), ":1");
    roster.setSilent(":1", true);
    EXPECT_EQ(roster.find(roster.currentOwner())->playbackRate(), 0);
    plays(":2")(roster);  // it is heard again
    EXPECT_EQ(roster.currentOwner(), ":2");
    EXPECT_EQ(roster.find(":2")->playbackRate(), 1);
}

TEST(PlayerRoster, CountsThePositionBetweenTwoWordsOfThePlayer) {
    using std::chrono::seconds;
    PlayerRoster roster;
    const PlayerRoster::Moment start{};
    const auto tell = [&](Dictionary properties, int second) {
        roster.updateProperties(":1", BusValue(std::move(properties)), start + seconds(second));
    };
    const auto position = [&](int second) {
        return roster.find(":1")->clock.positionAt(start + seconds(second));
    };
    arrives(":1", "one")(roster);
    EXPECT_EQ(position(0), std::nullopt);
    tell({{"PlaybackStatus", BusValue("Playing")},
          {"Rate", BusValue(2.0)},
          {"Position", BusValue(std::int64_t{10'000'000})}},
         0);
    EXPECT_FALSE(roster.find(":1")->isPositionWanted);
    EXPECT_EQ(position(5), 20.0);
    tell({{"PlaybackStatus", BusValue("Paused")}}, 5);
    EXPECT_TRUE(roster.find(":1")->isPositionWanted) << "its own word is better";
    EXPECT_EQ(position(60), 20.0);
    roster.setPosition(":1", 20.5, start + seconds(60));
    tell({{"PlaybackStatus", BusValue("Playing")}, {"Rate", BusValue(1.0)}}, 70);
    EXPECT_EQ(position(71), 21.5);
    roster.setSilent(":1", true, start + seconds(71));
    EXPECT_EQ(position(99), 21.5);
    tell({{"Metadata", BusValue(Dictionary{{"xesam:title", BusValue("b")}})}}, 99);
    EXPECT_EQ(position(99), std::nullopt) << "another track";
    EXPECT_TRUE(roster.find(":1")->isPositionWanted);
}

TEST(PlayerRoster, TellsWhatAReaderCouldSeeDiffer) {
    const NowPlayingChanges nothing;
    PlayerRoster roster;
    EXPECT_EQ(roster.takeChanges(), nothing);

    arrives(":1", "one")(roster);
    EXPECT_EQ(roster.takeChanges(), nothing) << "it is merely open";
    pauses(":1")(roster);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.application = true}));
    EXPECT_EQ(roster.takeChanges(), nothing);

    roster.setProcessIdentifier(":1", 4711);
    EXPECT_EQ(roster.find(":1")->processIdentifier, 4711);
    EXPECT_EQ(roster.takeChanges(), (NowPlayingChanges{.application = true}));

    roster.setIdentity(":1", {.name = "One", .desktopID = std::nullopt});
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
