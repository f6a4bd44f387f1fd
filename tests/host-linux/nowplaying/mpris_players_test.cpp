#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/nowplaying/player_roster.h"
#include "tests/host-linux/nowplaying/now_playing_session.h"
#include "tests/host-linux/nowplaying/scripted_player.h"
#include "tests/support/manual_queues.h"
#include "tests/support/private_bus.h"
#include "tests/support/wait_until.h"

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

/// What is published, without the position, which runs while a player plays.
NowPlayingInfo still(const NowPlayingSession& session) {
    NowPlayingInfo info = session.info().value_or(NowPlayingInfo{});
    info.elapsedSeconds.reset();
    return info;
}

/// Whether a position that was this one at some moment of the test is shown.
bool showsAbout(const NowPlayingSession& session, double seconds) {
    const double shown = session.info() ? session.info()->elapsedSeconds.value_or(-1) : -1;
    return shown >= seconds && shown < seconds + 5;
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
    EXPECT_EQ(
        still(*one.session),
        (NowPlayingInfo{"Song", "Singer, Choir", "Record", "com.example.test", "Test", true, {}, 180.5}));
    EXPECT_TRUE(showsAbout(*one.session, 30.25));
}

TEST(MprisPlayers, NoticesAPlayerThatComesAndGoes) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    {
        ScriptedPlayer player(bus.address(), {"scripted"});
        EXPECT_TRUE(session.turnUntil([&] { return player.propertiesAsked() > 0; }));
        session.turnFor(200ms);
        EXPECT_EQ(session.info(), std::nullopt) << "it is merely open";
        player.tellStatus("Paused");
        EXPECT_TRUE(session.turnUntil([&] { return session.info().has_value(); }));
        EXPECT_EQ(still(session), (NowPlayingInfo{{}, {}, {}, "com.example.test", "Test", false, {}, {}}));
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
    EXPECT_TRUE(one.session->turnUntil([&] { return showsAbout(*one.session, 12); }));
}

TEST(MprisPlayers, AFetchAsksThePlayerNothing) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    EXPECT_EQ(one.player.propertiesAsked(), 1);
    const int positions = one.player.positionsAsked();
    for (int fetch = 0; fetch < 5; ++fetch) {
        const double before = *one.session->info()->elapsedSeconds;
        one.session->refresh();
        EXPECT_TRUE(one.session->turnUntil([&] { return *one.session->info()->elapsedSeconds > before; }));
    }
    EXPECT_TRUE(showsAbout(*one.session, 30.25));
    EXPECT_EQ(one.player.positionsAsked(), positions);
    EXPECT_EQ(one.player.propertiesAsked(), 1);
}

TEST(MprisPlayers, AsksForThePositionWhereATrackOrAStateBegins) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    const int before = one.player.positionsAsked();
    one.player.setPosition(1'000'000);
    one.player.tellTrack(next);
    EXPECT_TRUE(one.session->turnUntil(
        [&] { return titleOf(*one.session) == "Next" && showsAbout(*one.session, 1); }));
    one.player.setPosition(7'500'000);
    one.player.tellStatus("Paused");
    EXPECT_TRUE(one.session->turnUntil([&] { return one.session->info()->elapsedSeconds == 7.5; }));
    EXPECT_EQ(one.player.positionsAsked(), before + 2);
}

TEST(MprisPlayers, AJumpOfThePositionIsNoChangeOfWhatPlays) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.session->turnFor(200ms);
    const auto before = one.session->changes();
    one.player.tellSeeked(60'000'000);
    EXPECT_TRUE(one.session->turnUntil([&] { return showsAbout(*one.session, 60); }));
    EXPECT_EQ(one.session->changes(), before);
    one.player.tellTrack(next);
    EXPECT_TRUE(one.session->turnUntil([&] { return titleOf(*one.session) == "Next"; }));
    EXPECT_EQ(one.session->changes(), before + 1);
    one.player.tellStatus("Paused");
    EXPECT_TRUE(one.session->turnUntil([&] { return !one.session->info()->isPlaying; }));
    EXPECT_EQ(one.session->changes(), before + 2);
}

TEST(MprisPlayers, ThePositionEndsWithTheTrack) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.tellSeeked(180'400'000);
    EXPECT_TRUE(one.session->turnUntil([&] {
        one.session->refresh();
        one.session->turnFor(20ms);
        return one.session->info()->elapsedSeconds == 180.5;
    }));
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

TEST(MprisPlayers, ASilentPlayerDelaysNoReaderAndDoesNotPlayForEver) {
    OnePlayer one;
    ASSERT_TRUE(one.showsSong());
    one.player.answerPositionWith(nullptr);
    one.player.answerPropertiesWith(nullptr);
    const auto fetch = [&] {
        const int before = one.session->publications();
        const auto start = NowPlayingSession::Clock::now();
        one.session->refresh();
        EXPECT_TRUE(one.session->turnUntil([&] { return one.session->publications() > before; }));
        EXPECT_LT(NowPlayingSession::Clock::now() - start, 200ms);
        one.session->turnFor(100ms);
    };
    EXPECT_TRUE(one.session->turnUntil(
        [&] {
            fetch();
            return !one.session->info()->isPlaying;
        },
        20s));
    EXPECT_EQ(titleOf(*one.session), "Song");
    one.player.tellStatus("Playing");
    EXPECT_TRUE(one.session->turnUntil([&] { return one.session->info()->isPlaying; }));
}

/// The process that is asked for from within a dictionary's block is that dictionary's, whoever has become
/// current meanwhile: no title is ever published with another player's name.
TEST(MprisFramework, ADictionaryAndItsProcessAreThoseOfOnePlayer) {
    PrivateBus bus;
    auto player = std::make_unique<ScriptedPlayer>(bus.address(), std::vector<std::string>{"scripted"});
    player->setTrack(song);
    player->setStatus("Playing");
    test::ManualRunLoop loop;
    BusThread thread;
    MainNotificationCenter center(loop);
    PlayedFiles files(std::make_shared<test::ManualSerialQueue>("files"));
    MprisFrameworkLoader loader(thread, bus.address(), center, files);
    const auto framework =
        loader.openNowPlayingFramework("/System/Library/PrivateFrameworks/MediaRemote.framework");
    const auto getInfo = framework->getInfoFunctionForName("MRMediaRemoteGetNowPlayingInfo");
    const auto getPID = framework->getPIDFunctionForName("MRMediaRemoteGetNowPlayingApplicationPID");
    const auto queue = std::make_shared<test::ManualSerialQueue>("framework");
    const auto entries = [&] {
        std::size_t count = 0;
        getInfo(queue, [&](const NowPlayingDictionary& dictionary) { count = dictionary.size(); });
        queue->run();
        return count;
    };
    ASSERT_TRUE(test::waitUntil([&] { return entries() > 3; }));
    std::int32_t pid = -1;
    getInfo(queue, [&](const NowPlayingDictionary& dictionary) {
        EXPECT_TRUE(dictionary.contains("kMRMediaRemoteNowPlayingInfoTitle"));
        player.reset();
        EXPECT_TRUE(test::waitUntil([&] { return entries() == 0; }));
        getPID(queue, [&](std::int32_t answer) { pid = answer; });
    });
    queue->run();
    EXPECT_EQ(pid, getpid());
    getPID(queue, [&](std::int32_t answer) { pid = answer; });
    queue->run();
    EXPECT_EQ(pid, 0) << "asked by itself it is the current player's";
}

TEST(MprisPlayers, APlayerThatNeverTellsItsPropertiesIsNoSourceUntilItIsHeard) {
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted"});
    player.answerPropertiesWith(nullptr);
    player.answerPositionWith(nullptr);
    NowPlayingSession session(bus.address());
    EXPECT_TRUE(session.turnUntil([&] { return player.propertiesAsked() > 0; }));
    session.turnFor(200ms);
    EXPECT_EQ(session.info(), std::nullopt);
    player.tellTrack(song);  // what it tells unasked is heard
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
}

TEST(MprisPlayers, TellsWhatThePlayerCallsItself) {
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted"});
    player.setIdentity("C* Music Player", "cmus");
    NowPlayingSession session(bus.address());
    player.tellTrack(song);
    EXPECT_TRUE(session.turnUntil([&] { return session.identityOf(getpid()).has_value(); }));
    EXPECT_TRUE(session.turnUntil([&] {
        return session.identityOf(getpid()) == PlayerIdentity{"C* Music Player", "cmus"};
    }));
    EXPECT_EQ(session.identityOf(1), std::nullopt);
    EXPECT_EQ(session.identityOf(0), std::nullopt);
}

TEST(MprisPlayers, AFileWithoutTagsIsKnownByItsName) {
    PrivateBus bus;
    ScriptedPlayer player(bus.address(), {"scripted"});
    NowPlayingSession session(bus.address());
    player.tellTrack({"", {}, "", 0, "file:///music/A%20song.flac"});
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "A song.flac"; }));
    player.tellTrack({"", {}, "", 0, "https://radio.example/stream"});
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session).empty(); }));
}

/// Names without players behind them are no reason to miss one.
TEST(MprisPlayers, APlayerAmongManyNamesIsSeenAndStaysSeenWhenTheyLeave) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    std::vector<std::unique_ptr<ScriptedPlayer>> crowd;
    for (int i = 0; i < 70; ++i)
        crowd.push_back(
            std::make_unique<ScriptedPlayer>(bus.address(), std::vector{"crowd" + std::to_string(i)}));
    ScriptedPlayer player(bus.address(), {"player"});
    player.tellTrack(song);
    player.tellStatus("Playing");
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song" && session.info()->isPlaying; }));
    crowd.front()->tellTrack(next);  // it had to make room
    crowd.front()->tellStatus("Playing");
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Next"; }));
    crowd.clear();
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Song"; }));
    player.tellStatus("Paused");
    EXPECT_TRUE(session.turnUntil([&] { return !session.info()->isPlaying; }));
}

TEST(MprisPlayers, APlayerForWhichThereWasNoRoomIsSeenOnceThereIs) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    std::vector<std::unique_ptr<ScriptedPlayer>> crowd;
    for (std::size_t i = 0; i < PlayerRoster::maximumPlayers; ++i) {
        crowd.push_back(
            std::make_unique<ScriptedPlayer>(bus.address(), std::vector{"crowd" + std::to_string(i)}));
        crowd.back()->tellTrack(next);
        crowd.back()->tellStatus("Playing");
    }
    EXPECT_TRUE(session.turnUntil([&] { return titleOf(session) == "Next"; }));
    session.turnFor(500ms);  // until all of them have told that they play
    ScriptedPlayer player(bus.address(), {"player"});
    player.setTrack(song);
    player.setStatus("Paused");
    session.turnFor(300ms);
    EXPECT_EQ(player.propertiesAsked(), 0);
    crowd.clear();
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
        EXPECT_TRUE(session.turnUntil([&] { return player.propertiesAsked() > 0; }));
        session.turnFor(100ms);
        EXPECT_EQ(session.info(), std::nullopt);
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
    EXPECT_TRUE(showsAbout(*one.session, 30.25));
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
