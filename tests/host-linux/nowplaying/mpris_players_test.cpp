#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

#include "tests/host-linux/nowplaying/one_player.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::next;
using test::NowPlayingSession;
using test::OnePlayer;
using test::PrivateBus;
using test::ScriptedPlayer;
using test::showsAbout;
using test::song;
using test::still;
using test::titleOf;

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

}  // namespace
}  // namespace purlock::host_linux
