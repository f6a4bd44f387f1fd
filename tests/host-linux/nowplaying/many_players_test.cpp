#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/nowplaying/player_roster.h"
#include "tests/host-linux/nowplaying/one_player.h"
#include "tests/support/manual_queues.h"
#include "tests/support/wait_until.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::next;
using test::NowPlayingSession;
using test::OnePlayer;
using test::PrivateBus;
using test::ScriptedPlayer;
using test::song;
using test::titleOf;

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

/// The process that is asked for from within a dictionary's block is that dictionary's, also when another
/// player has become current meanwhile: no title is ever published with another player's name.
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

/// Names without players behind them are no reason to miss one.
TEST(MprisPlayers, APlayerAmongManyNamesIsSeenAndStaysSeenWhenTheyLeave) {
    PrivateBus bus;
    NowPlayingSession session(bus.address());
    std::vector<std::unique_ptr<ScriptedPlayer>> crowd;
    for (int i = 0; i < 70; ++i) {
        crowd.push_back(
            std::make_unique<ScriptedPlayer>(bus.address(), std::vector{"crowd" + std::to_string(i)}));
    }
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

}  // namespace
}  // namespace purlock::host_linux
