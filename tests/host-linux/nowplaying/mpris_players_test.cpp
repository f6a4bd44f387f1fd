#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "platform/linux/dbus/bus_address.h"
#include "tests/host-linux/nowplaying/now_playing_session.h"
#include "tests/host-linux/nowplaying/scripted_player.h"
#include "tests/support/private_bus.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::NowPlayingSession;
using test::PrivateBus;
using test::ScriptedPlayer;

const ScriptedPlayer::Track song{"Song", {"Singer", "Choir"}, "Record", 180'500'000};
const ScriptedPlayer::Track next{"Next", {"Singer"}, "Record", 60'000'000};

std::string titleOf(const NowPlayingSession& session) {
    return session.info() ? session.info()->title.value_or("") : "nothing";
}

/// A session with one player that plays `song`.
struct OnePlayer {
    OnePlayer() {
        player.setStatus("Playing");
        player.setTrack(song);
        player.setPosition(30'250'000);
        session = std::make_unique<NowPlayingSession>(bus.address());
    }

    bool showsSong() {
        return session->turnUntil(
            [&] { return titleOf(*session) == "Song" && session->info()->appBundleID; });
    }

    PrivateBus bus;
    ScriptedPlayer player{bus.address(), {"scripted"}};
    std::unique_ptr<NowPlayingSession> session;
};

TEST(MprisPlayers, WithoutAPlayerNothingPlays) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    EXPECT_TRUE(session.turnUntil([&] { return session.publications() >= 2; }));
    EXPECT_EQ(session.info(), std::nullopt);
    EXPECT_EQ(session.unavailableReason(), std::nullopt);
}

TEST(MprisPlayers, TellsAllOfAPlayerThatIsThereAlready) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    EXPECT_EQ(one.session->info(), (NowPlayingInfo{"Song", "Singer, Choir", "Record", "com.example.test",
                                                   "Test", true, 30.25, 180.5}));
}

TEST(MprisPlayers, NoticesAPlayerThatComesAndGoes) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    {
        ScriptedPlayer player(bus.address(), {"scripted"});
        EXPECT_TRUE(session.turnUntil([&] { return session.info().has_value(); }));
        EXPECT_EQ(session.info(), (NowPlayingInfo{{}, {}, {}, "com.example.test", "Test", false, 0.0, {}}));
        player.tellTrack(song);
        EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
    }
    EXPECT_TRUE(session.turnUntil([&] { return !session.info(); }));
}

TEST(MprisPlayers, FollowsPauseTrackAndSeekWithoutBeingAsked) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.tellStatus("Paused");
    EXPECT_TRUE(one.session->turnUntil([&] { return !one.session->info()->isPlaying; }));
    one.player.tellStatus("Playing");
    EXPECT_TRUE(one.session->turnUntil([&] { return one.session->info()->isPlaying; }));
    one.player.tellTrack(next);
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Next"; }));
    EXPECT_EQ(one.session->info()->durationSeconds, 60.0);
    one.player.tellSeeked(12'000'000);
    EXPECT_TRUE(one.session->turnUntil([&] { return one.session->info()->elapsedSeconds == 12.0; }));
}

TEST(MprisPlayers, AFetchAsksForThePositionAndForNothingElse) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    const int properties = one.player.propertiesAsked();
    EXPECT_EQ(properties, 1);
    for (int second = 1; second <= 5; ++second) {
        const int positions = one.player.positionsAsked();
        one.player.setPosition(second * 1'000'000);
        one.session->refresh();
        EXPECT_TRUE(one.session->turnUntil([&] { return one.session->info()->elapsedSeconds == second; }));
        EXPECT_EQ(one.player.positionsAsked(), positions + 1);
    }
    EXPECT_EQ(one.player.propertiesAsked(), properties);
}

TEST(MprisPlayers, AsksAgainForPropertiesThatAreNoLongerTrue) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.setTrack(next);
    one.player.tellInvalidated("Metadata");
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Next"; }));
}

/// A player that changes and forgets to tell, or whose signal was lost.
TEST(MprisPlayers, SeesInTheEndWhatNoSignalTold) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.setTrack(next);
    one.player.setStatus("Paused");
    const auto start = NowPlayingSession::Clock::now();
    EXPECT_TRUE(one.session->turnUntil(
        [&] {
            one.session->refresh();
            one.session->turnFor(200ms);
            return titleOf(*one.session) == "Next" && !one.session->info()->isPlaying;
        },
        15s));
    EXPECT_GT(NowPlayingSession::Clock::now() - start, 5s);
    EXPECT_EQ(one.player.propertiesAsked(), 2);
    EXPECT_EQ(one.session->info()->elapsedSeconds, 30.25);
}

TEST(MprisPlayers, OfTwoTheOneThatStartedLastIsCurrent) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    ScriptedPlayer other(one.bus.address(), {"other"});
    other.tellTrack(next);
    one.session->turnFor(200ms);
    EXPECT_EQ(titleOf(*one.session), "Song");
    other.tellStatus("Playing");
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Next"; }));
    other.tellStatus("Paused");
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Song"; }));
}

TEST(MprisPlayers, PassesOverAProxy) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    ScriptedPlayer proxy(one.bus.address(), {"playerctld"});
    proxy.tellTrack(next);
    proxy.tellStatus("Playing");
    one.session->turnFor(300ms);
    EXPECT_EQ(titleOf(*one.session), "Song");
    EXPECT_EQ(proxy.propertiesAsked(), 0);
}

TEST(MprisPlayers, APeerWithTwoNamesIsAskedOnce) {
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted", "scripted.instance7"});
    player.setTrack(song);
    NowPlayingSession session(bus.address());
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
    session.turnFor(100ms);
    EXPECT_EQ(player.propertiesAsked(), 1);
}

TEST(MprisPlayers, ASilentPlayerDelaysAReaderOnceAndIsHeardAgain) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    one.player.answerPositionWith(nullptr);
    const auto fetchTime = [&] {
        const int before = one.session->publications();
        const auto start = NowPlayingSession::Clock::now();
        one.session->refresh();
        EXPECT_TRUE(one.session->turnUntil([&] { return one.session->publications() > before; }));
        return NowPlayingSession::Clock::now() - start;
    };
    const auto first = fetchTime();
    EXPECT_GT(first, 400ms);
    EXPECT_LT(first, 900ms);
    EXPECT_EQ(titleOf(*one.session), "Song");
    EXPECT_EQ(one.session->info()->elapsedSeconds, std::nullopt);
    for (int i = 0; i < 5; ++i) EXPECT_LT(fetchTime(), 200ms);

    one.player.answerPositionWith(
        [](sd_bus_message* reply) { sd_bus_message_append(reply, "v", "x", 7'000'000L); });
    EXPECT_TRUE(one.session->turnUntil([&] {
        fetchTime();
        return one.session->info()->elapsedSeconds == 7.0;
    }));
}

TEST(MprisPlayers, APlayerThatNeverTellsItsPropertiesIsOnlyAnApplication) {
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted"});
    player.answerPropertiesWith(nullptr);
    player.answerPositionWith(nullptr);
    NowPlayingSession session(bus.address());
    EXPECT_TRUE(session.turnUntil([&] { return session.info().has_value(); }));
    EXPECT_EQ(session.info(), (NowPlayingInfo{{}, {}, {}, "com.example.test", "Test", false, {}, {}}));
    player.tellTrack(song);  // what it tells unasked is heard
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
}

/// What a player may answer that is not what was asked for.
struct OddRow {
    const char* name;
    void (*write)(sd_bus_message*);
};

const OddRow oddRows[] = {
    {"nothing", [](sd_bus_message*) {}},
    {"a text", [](sd_bus_message* m) { sd_bus_message_append(m, "s", "Playing"); }},
    {"a number", [](sd_bus_message* m) { sd_bus_message_append(m, "i", -7); }},
    {"a list of texts", [](sd_bus_message* m) { sd_bus_message_append(m, "as", 2, "a", "b"); }},
    {"a dictionary with other keys",
     [](sd_bus_message* m) { sd_bus_message_append(m, "a{iv}", 1, 7, "s", "a"); }},
    {"a dictionary of wrong values",
     [](sd_bus_message* m) {
         sd_bus_message_append(m, "a{sv}", 3, "Metadata", "s", "a", "PlaybackStatus", "i", 7, "Rate", "b", 1);
     }},
    {"metadata of wrong values",
     [](sd_bus_message* m) {
         sd_bus_message_append(m, "a{sv}", 1, "Metadata", "a{sv}", 4, "xesam:title", "i", 7, "xesam:artist",
                               "x", 7L, "xesam:album", "as", 1, "a", "mpris:length", "s", "a");
     }},
    {"a variant in place of the dictionary",
     [](sd_bus_message* m) { sd_bus_message_append(m, "v", "s", "a"); }},
};

TEST(MprisPlayers, WrongTypesAreAsIfNothingWasSaid) {
    for (const OddRow& row : oddRows) {
        SCOPED_TRACE(row.name);
        PrivateBus bus;
        ScriptedPlayer player(bus.address(), {"scripted"});
        player.answerPropertiesWith(row.write);
        player.answerPositionWith(row.write);
        NowPlayingSession session(bus.address());
        EXPECT_TRUE(
            session.turnUntil([&] { return player.positionsAsked() > 0 && session.info().has_value(); }));
        session.turnFor(100ms);
        EXPECT_EQ(session.info(), (NowPlayingInfo{{}, {}, {}, "com.example.test", "Test", false, {}, {}}));
        player.tell(row.write);
        player.tellTrack(song);
        EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
    }
}

TEST(MprisPlayers, SurvivesTheEndOfTheBusAndFindsItAgain) {
    OnePlayer one;
    for (int life = 0; life < 3; ++life) {
        SCOPED_TRACE(life);
        ASSERT_TRUE(one.showsSong());
        one.bus.kill();
        EXPECT_TRUE(one.session->turnUntil([&] { return !one.session->info(); }));
        ASSERT_TRUE(one.bus.start());
    }
    EXPECT_TRUE(one.showsSong());
    EXPECT_EQ(one.session->info()->elapsedSeconds, 30.25);
}

TEST(MprisPlayers, FindsABusThatComesLater) {
    const test::TemporaryFolder folder;
    NowPlayingSession session(busAddressOfPath(folder.path() / "later" / "bus"));
    EXPECT_TRUE(session.turnUntil([&] { return session.publications() >= 2; }));
    EXPECT_EQ(session.info(), std::nullopt);
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted"});
    player.setTrack(song);
    std::filesystem::create_directory_symlink(bus.folder().path(), folder.path() / "later");
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }, 3s));
}

TEST(MprisPlayers, MayEndWithAFetchUnderWay) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.answerPositionWith(nullptr);
    one.session->refresh();
    one.session->turnFor(50ms);
    one.session.reset();
    SUCCEED();  // the sanitizers see what is used after its end
}

/// How often this process's bus threads went to sleep so far, which they do once for each wake-up.
long busThreadSleeps() {
    long total = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        if (name != "purlock-bus") continue;
        std::ifstream status(task.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("voluntary_ctxt_switches:")) total += std::stol(line.substr(24));
        }
    }
    return total;
}

TEST(MprisPlayers, AnIdleSessionWakesNobody) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(300ms);
    const long before = busThreadSleeps();
    ASSERT_GT(before, 0);
    one.session->turnFor(2s);
    EXPECT_EQ(busThreadSleeps(), before);
}

TEST(MprisPlayers, AFloodOfChangesIsToldInMeasure) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    const int before = one.session->publications();
    const auto start = NowPlayingSession::Clock::now();
    for (int i = 0; i < 5000; ++i) one.player.tellTrack({"Song " + std::to_string(i), {}, "", 0});
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Song 4999"; }, 30s));
    const std::chrono::duration<double> seconds = NowPlayingSession::Clock::now() - start;
    EXPECT_LT(one.session->publications() - before, 3 + static_cast<int>(seconds.count() / 0.05));
}

}  // namespace
}  // namespace purlock::host_linux
