#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/linux/dbus/bus_address.h"
#include "tests/host-linux/nowplaying/one_player.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::NowPlayingSession;
using test::OnePlayer;
using test::PrivateBus;
using test::ScriptedPlayer;
using test::showsAbout;
using test::song;
using test::titleOf;

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
