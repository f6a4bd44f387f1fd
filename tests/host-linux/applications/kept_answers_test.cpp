#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host-linux/applications/desktop_machine.h"
#include "tests/support/thread_processor_time.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using Applications = std::vector<RunningApplication>;

/// How long answers about processes are kept.
class KeptAnswersTest : public test::DesktopMachine {};

TEST_F(KeptAnswersTest, ACommandLineIsReadOnceForEachProcess) {
    addDesktopFile("usr/applications/first.desktop", "First", "first");
    addDesktopFile("usr/applications/second.desktop", "Second", "second");
    const std::string interpreter = "/usr/bin/python3.11";
    add({.pid = 10,
         .startTime = 100,
         .program = interpreter,
         .commandLine = std::string("python3\0first\0", 14)});
    EXPECT_EQ(later(10), application(10, "first", "First"));
    machine_.write("proc/10/cmdline", std::string("python3\0second\0", 15));
    EXPECT_EQ(later(10), application(10, "first", "First"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    add({.pid = 10,
         .startTime = 200,
         .program = interpreter,
         .commandLine = std::string("python3\0second\0", 15)});
    EXPECT_EQ(later(10), application(10, "second", "Second"));
}

TEST_F(KeptAnswersTest, ForAWhileTheFoldersAreNotLookedAt) {
    keptIndexTime_ = 10s;
    add({.pid = 10, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), std::nullopt);  // the first question looks
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    add({.pid = 11, .program = "/usr/bin/player"});
    EXPECT_EQ(of(11), std::nullopt);
    EXPECT_EQ(queue_->run(), 0U);
    now_ += 10s;
    EXPECT_EQ(later(11), application(11, "player", "Player"));
}

TEST_F(KeptAnswersTest, ForAMomentAProcessThatWasSeenIsNotLookedAt) {
    keptProcessTime_ = 2s;
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    add({.pid = 10, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    now_ += 2s - 1ms;
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    now_ += 1ms;
    EXPECT_EQ(of(10), std::nullopt);
}

TEST_F(KeptAnswersTest, AnotherProcessWithTheSameNumberIsToldApart) {
    keptProcessTime_ = 2s;
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    add({.pid = 10, .startTime = 100, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    add({.pid = 10, .startTime = 200, .program = "/usr/bin/player"});
    now_ += 2s;
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    add({.pid = 10, .startTime = 300, .program = "/usr/bin/other"});
    now_ += 2s;
    EXPECT_EQ(of(10), std::nullopt) << "a new process's first answer is young, even if it is the same";
}

/// A process may change its name. A name that has stood for long is trusted for long.
TEST_F(KeptAnswersTest, AnAnswerThatStandsIsKeptTwiceAsLongUpToALimit) {
    keptProcessTime_ = 5s;
    add({.pid = 10, .unit = "app-old-1.scope"});
    ASSERT_EQ(of(10), application(10, "old", nullptr));
    for (const auto kept : {5s, 10s, 20s, 40s, 40s}) {
        add({.pid = 10, .unit = "app-new-1.scope"});
        now_ += kept - 1ms;
        EXPECT_EQ(of(10), application(10, "old", nullptr)) << kept.count() << " s";
        add({.pid = 10, .unit = "app-old-1.scope"});
        now_ += 1ms;
        EXPECT_EQ(of(10), application(10, "old", nullptr));
    }
    add({.pid = 10, .unit = "app-new-1.scope"});
    now_ += 40s;
    EXPECT_EQ(of(10), application(10, "new", nullptr));
    add({.pid = 10, .unit = "app-old-1.scope"});
    now_ += 5s;
    EXPECT_EQ(of(10), application(10, "old", nullptr)) << "another answer is young again";
}

TEST_F(KeptAnswersTest, ANewDesktopFileIsNoticedByTheNextQuestion) {
    add({.pid = 10, .program = "/usr/bin/player"});
    std::filesystem::create_directories(machine_.path() / "usr/applications");
    EXPECT_EQ(of(10), std::nullopt);
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    EXPECT_EQ(of(10), std::nullopt);  // the folders are looked at elsewhere, and nobody waits
    EXPECT_EQ(queue_->run(), 1U);
    EXPECT_EQ(of(10), application(10, "player", "Player"));
}

TEST_F(KeptAnswersTest, InstancesComeInTheOrderOfTheirStartEachOnce) {
    addDesktopFile("usr/applications/com.spotify.Client.desktop", "Spotify",
                   "flatpak run com.spotify.Client");
    const std::string second = "app-flatpak-com.spotify.Client-2.scope";
    const std::string first = "app-flatpak-com.spotify.Client-1.scope";
    add({.pid = 10, .parent = 2, .startTime = 500, .program = "/usr/bin/bwrap", .unit = second});
    add({.pid = 11, .parent = 10, .startTime = 501, .unit = second, .flatpak = "com.spotify.Client"});
    add({.pid = 12, .parent = 11, .startTime = 502, .unit = second, .flatpak = "com.spotify.Client"});
    add({.pid = 30, .parent = 2, .startTime = 400, .program = "/usr/bin/bwrap", .unit = first});
    add({.pid = 31, .parent = 30, .startTime = 401, .unit = first, .flatpak = "com.spotify.Client"});
    add({.pid = 40, .parent = 2, .startTime = 300, .program = "/usr/bin/mpv"});
    const Applications expected{*application(30, "com.spotify.client", "Spotify"),
                                *application(10, "com.spotify.client", "Spotify")};
    EXPECT_EQ(applications().runningApplicationsWithBundleIdentifier("com.spotify.client"), Applications{});
    EXPECT_EQ(instancesLater("com.spotify.client"), expected);
    EXPECT_EQ(instancesLater("com.spotify.Client"), Applications{});
    EXPECT_EQ(instancesLater(""), Applications{});
    EXPECT_EQ(applications().searchingAtOnce().runningApplicationsWithBundleIdentifier("com.spotify.client"),
              expected);

    std::filesystem::remove_all(machine_.path() / "proc/30");
    EXPECT_EQ(applications().runningApplicationsWithBundleIdentifier("com.spotify.client"),
              Applications{expected.back()});
}

TEST_F(KeptAnswersTest, AQuestionForInstancesLooksAtNoOtherProcess) {
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    constexpr int processes = 3000;
    for (int pid = 1000; pid < 1000 + processes; ++pid) {
        std::filesystem::create_directories(machine_.path() / "proc" / std::to_string(pid));
    }
    add({.pid = 10, .program = "/usr/bin/player"});
    const auto ask = [&] { return applications().runningApplicationsWithBundleIdentifier("player"); };
    const auto start = test::threadProcessorTime();
    EXPECT_EQ(ask(), Applications{});
    EXPECT_LT(test::threadProcessorTime() - start, std::chrono::milliseconds(5));
    queue_->run();
    const auto again = test::threadProcessorTime();
    EXPECT_EQ(ask(), Applications{*application(10, "player", "Player")});
    EXPECT_LT(test::threadProcessorTime() - again, std::chrono::milliseconds(5));
}

}  // namespace
}  // namespace purlock::host_linux
