#include "platform/linux/applications/desktop_applications.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "base/worker_pool.h"
#include "tests/support/manual_queues.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/thread_processor_time.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using Applications = std::vector<RunningApplication>;

/// A machine with processes and desktop files that the test writes down.
class DesktopApplicationsTest : public ::testing::Test {
  protected:
    struct Process {
        std::int32_t pid = 0;
        std::int32_t parent = 1;
        std::int32_t session = 0;
        std::uint64_t startTime = 0;
        std::string program = {};
        std::string unit = "session-2.scope";
        std::string flatpak = {};
        std::string commandLine = {};
    };

    void add(const Process& process) {
        const std::string folder = "proc/" + std::to_string(process.pid) + "/";
        machine_.write(folder + "stat",
                       std::to_string(process.pid) + " (x) S " + std::to_string(process.parent) + " 1 " +
                           std::to_string(process.session) + " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 " +
                           std::to_string(process.startTime) + " 0\n");
        machine_.write(folder + "cgroup", "0::/user.slice/" + process.unit + "\n");
        if (!process.commandLine.empty()) machine_.write(folder + "cmdline", process.commandLine);
        if (!process.program.empty()) {
            std::filesystem::create_symlink(process.program, machine_.path() / (folder + "exe"));
        }
        if (!process.flatpak.empty()) {
            machine_.write(folder + "root/.flatpak-info", "[Application]\nname=" + process.flatpak + "\n");
            std::filesystem::create_directories(machine_.path() / (folder + "ns"));
            std::filesystem::create_symlink("mnt:[4026531999]", machine_.path() / (folder + "ns/mnt"));
        }
    }

    void addDesktopFile(const std::string& path, const std::string& name, const std::string& command,
                        const std::string& more = "") {
        machine_.write(path,
                       "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + command + "\n" + more);
    }

    /// The subject, with the desktop files read.
    DesktopApplications& applications() {
        if (!applications_) {
            applications_ = std::make_unique<DesktopApplications>(
                queue_,
                DesktopRoots{(machine_.path() / "proc").string(),
                             {(machine_.path() / "home").string(), (machine_.path() / "usr").string()},
                             "de_DE.UTF-8",
                             keptIndexTime_,
                             trustedProcessTime_,
                             5s,
                             [this] { return now_; }});
            queue_->run();
        }
        return *applications_;
    }

    std::optional<RunningApplication> of(std::int32_t pid) {
        return applications().runningApplicationWithProcessIdentifier(pid);
    }

    /// What is known once the queue has done what the question asked for.
    std::optional<RunningApplication> later(std::int32_t pid) {
        of(pid);
        queue_->run();
        return of(pid);
    }
    Applications instancesLater(std::string_view bundleID) {
        applications().runningApplicationsWithBundleIdentifier(bundleID);
        queue_->run();
        return applications().runningApplicationsWithBundleIdentifier(bundleID);
    }

    static std::optional<RunningApplication> application(std::int32_t pid, const char* id, const char* name) {
        return RunningApplication{pid, id, name != nullptr ? std::optional<std::string>(name) : std::nullopt};
    }

    const test::TemporaryFolder machine_;
    const std::shared_ptr<test::ManualSerialQueue> queue_ =
        std::make_shared<test::ManualSerialQueue>("desktop");
    std::chrono::milliseconds keptIndexTime_{0};       // every question looks at the folders
    std::chrono::milliseconds trustedProcessTime_{0};  // and at the process
    std::chrono::steady_clock::time_point now_{1h};
    std::unique_ptr<DesktopApplications> applications_;
};

TEST_F(DesktopApplicationsTest, TheControlGroupNamesAProcessBeforeItsSandbox) {
    addDesktopFile("usr/applications/com.spotify.Client.desktop", "Spotify",
                   "flatpak run com.spotify.Client");
    add({.pid = 10, .unit = "app-flatpak-com.spotify.Client-1.scope", .flatpak = "org.other.App"});
    EXPECT_EQ(of(10), application(10, "com.spotify.client", "Spotify"));
    EXPECT_EQ(queue_->run(), 1U) << "the desktop files' folders; nobody looks into the sandbox";
}

TEST_F(DesktopApplicationsTest, TheSandboxNamesAProcessBeforeItsProgramOnceItWasReadOnTheQueue) {
    addDesktopFile("usr/applications/com.spotify.Client.desktop", "Spotify",
                   "flatpak run com.spotify.Client");
    addDesktopFile("usr/applications/mpv.desktop", "mpv", "mpv");
    add({.pid = 10, .program = "/usr/bin/mpv", .flatpak = "com.spotify.Client"});
    EXPECT_EQ(of(10), application(10, "mpv", "mpv"));
    EXPECT_EQ(later(10), application(10, "com.spotify.client", "Spotify"));
}

/// A process may make anything its root; only one with mounts of its own can be a sandbox.
TEST_F(DesktopApplicationsTest, AProcessWithTheSameMountsIsNotAskedForASandbox) {
    addDesktopFile("usr/applications/mpv.desktop", "mpv", "mpv");
    add({.pid = 10, .program = "/usr/bin/mpv", .flatpak = "com.spotify.Client"});
    std::filesystem::create_directories(machine_.path() / "proc/self/ns");
    std::filesystem::create_symlink("mnt:[4026531999]", machine_.path() / "proc/self/ns/mnt");
    EXPECT_EQ(later(10), application(10, "mpv", "mpv"));
}

TEST_F(DesktopApplicationsTest, TheControlGroupNamesAProcessBeforeItsProgram) {
    addDesktopFile("usr/applications/tidal-hifi.desktop", "TIDAL Hi-Fi", "/opt/tidal-hifi/tidal-hifi");
    addDesktopFile("usr/applications/electron.desktop", "Electron", "electron29");
    add({.pid = 10, .program = "/usr/lib/electron29", .unit = "app-gnome-tidal\\x2dhifi-4.scope"});
    EXPECT_EQ(of(10), application(10, "com.tidal.desktop", "TIDAL Hi-Fi"));
}

TEST_F(DesktopApplicationsTest, AnApplicationWithoutADesktopFileHasNoName) {
    add({.pid = 10, .unit = "app-gnome-org.gnome.Music-4.scope"});
    EXPECT_EQ(of(10), application(10, "org.gnome.Music", nullptr));
}

TEST_F(DesktopApplicationsTest, ADesktopFileNamesTheProgram) {
    addDesktopFile("usr/applications/mpv.desktop", "mpv", "mpv --player-operation-mode=pseudo-gui -- %U",
                   "Name[de]=mpv Spieler\n");
    add({.pid = 10, .program = "/usr/bin/mpv"});
    add({.pid = 11, .program = "/usr/bin/mpv (deleted)"});
    EXPECT_EQ(of(10), application(10, "mpv", "mpv Spieler"));
    EXPECT_EQ(of(11), application(11, "mpv", "mpv Spieler"));
}

TEST_F(DesktopApplicationsTest, ACommandLinePlayerBelongsToNoApplication) {
    addDesktopFile("usr/applications/xterm.desktop", "XTerm", "xterm",
                   "Categories=System;TerminalEmulator;\n");
    addDesktopFile("usr/applications/shell.desktop", "Shell", "desktop-shell", "NoDisplay=true\n");
    add({.pid = 5, .session = 5, .program = "/usr/bin/desktop-shell"});
    add({.pid = 6, .parent = 5, .session = 5, .program = "/usr/bin/xterm"});
    add({.pid = 7, .parent = 6, .session = 7, .program = "/usr/bin/bash"});
    add({.pid = 8, .parent = 7, .session = 7, .program = "/usr/bin/pw-cat"});
    add({.pid = 9, .parent = 6, .session = 5, .program = "/usr/bin/pw-cat"});  // from the terminal's own menu
    add({.pid = 10, .parent = 5, .session = 5, .program = "/opt/tool.AppImage"});  // from the desktop shell
    for (const int pid : {8, 9, 10}) EXPECT_EQ(of(pid), std::nullopt) << pid;
}

TEST_F(DesktopApplicationsTest, ATerminalsControlGroupDoesNotNameWhatRunsInside) {
    addDesktopFile("usr/applications/org.kde.konsole.desktop", "Konsole", "konsole",
                   "Categories=Qt;TerminalEmulator;\n");
    addDesktopFile("usr/applications/mpv.desktop", "mpv", "mpv");
    add({.pid = 10, .program = "/usr/bin/mpv", .unit = "app-org.kde.konsole-1.scope"});
    add({.pid = 11, .program = "/usr/bin/pw-cat", .unit = "app-org.kde.konsole-1.scope"});
    EXPECT_EQ(of(10), application(10, "mpv", "mpv"));
    EXPECT_EQ(of(11), std::nullopt);
}

TEST_F(DesktopApplicationsTest, AChildBelongsToItsParentsApplication) {
    addDesktopFile("usr/applications/browser.desktop", "Browser", "/usr/bin/browser %U");
    add({.pid = 10, .session = 3, .program = "/usr/lib/browser/browser"});
    add({.pid = 11, .parent = 10, .session = 3, .program = "/usr/lib/browser/zygote"});
    add({.pid = 12, .parent = 11, .session = 3, .program = "/usr/lib/browser/audio-service"});
    add({.pid = 13, .parent = 11, .session = 3, .program = "/usr/lib/x", .unit = "other.scope"});
    EXPECT_EQ(of(12), application(12, "browser", "Browser"));
    EXPECT_EQ(of(13), std::nullopt);
}

TEST_F(DesktopApplicationsTest, AScriptIsFoundByItsName) {
    addDesktopFile("usr/applications/quodlibet.desktop", "Quod Libet", "quodlibet");
    add({.pid = 10,
         .program = "/usr/bin/python3.11",
         .commandLine = std::string("/usr/bin/python3\0-u\0/usr/bin/quodlibet\0", 39)});
    add({.pid = 11, .program = "/usr/bin/python3.11", .commandLine = std::string("python3\0", 8)});
    EXPECT_EQ(later(10), application(10, "quodlibet", "Quod Libet"));
    EXPECT_EQ(later(11), std::nullopt);
}

/// A process's command line lies in its own memory, which may be a file that hangs.
TEST_F(DesktopApplicationsTest, ACommandLineIsReadOnTheQueueAndNobodyIsNamedBeforehand) {
    addDesktopFile("usr/applications/start.desktop", "Start", "start");
    addDesktopFile("usr/applications/quodlibet.desktop", "Quod Libet", "quodlibet");
    const std::string script("python3\0/usr/bin/quodlibet\0", 27);
    add({.pid = 5, .session = 3, .program = "/usr/bin/start"});
    add({.pid = 10, .parent = 5, .session = 3, .program = "/usr/bin/python3.11", .commandLine = script});
    add({.pid = 11, .parent = 10, .session = 3, .program = "/usr/lib/quodlibet/output"});
    EXPECT_EQ(of(11), std::nullopt);
    EXPECT_EQ(of(10), std::nullopt);
    queue_->run();
    EXPECT_EQ(of(11), application(11, "quodlibet", "Quod Libet"));
    EXPECT_EQ(of(10), application(10, "quodlibet", "Quod Libet"));
}

TEST_F(DesktopApplicationsTest, ACommandLineIsReadOnceForEachProcess) {
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

/// Debian's package of the interpreter has a desktop file of its own, which names the very program that every
/// such player runs.
TEST_F(DesktopApplicationsTest, TheScriptIsAskedBeforeItsInterpreter) {
    addDesktopFile("usr/applications/python3.11.desktop", "Python (v3.11)", "/usr/bin/python3.11",
                   "NoDisplay=true\n");
    addDesktopFile("usr/applications/python3.desktop", "Python", "/usr/bin/python3.11");
    addDesktopFile("usr/applications/org.gnome.Lollypop.desktop", "Lollypop", "lollypop %U");
    const auto commandLine = [](std::initializer_list<std::string> words) {
        std::string text;
        for (const std::string& word : words) text += word + '\0';
        return text;
    };
    add({.pid = 10,
         .program = "/usr/bin/python3.11",
         .commandLine = commandLine({"python3", "-W", "ignore", "/usr/bin/lollypop", "-e"})});
    add({.pid = 11,
         .program = "/usr/bin/python3.11",
         .commandLine = commandLine({"python3", "-m", "lollypop"})});
    add({.pid = 12,
         .program = "/usr/bin/python3.11",
         .commandLine = commandLine({"python3", "-c", "lollypop"})});
    add({.pid = 13,
         .program = "/usr/bin/python3.11",
         .commandLine = commandLine({"python3", "/opt/other.py"})});
    EXPECT_EQ(later(10), application(10, "org.gnome.Lollypop", "Lollypop"));
    EXPECT_EQ(later(11), application(11, "org.gnome.Lollypop", "Lollypop"));
    EXPECT_EQ(later(12), std::nullopt);
    EXPECT_EQ(later(13), std::nullopt);
}

TEST_F(DesktopApplicationsTest, AnIndexKnowsNoLauncher) {
    addDesktopFile("usr/applications/python3.desktop", "Python", "/usr/bin/python3.11");
    addDesktopFile("usr/applications/electron.desktop", "Electron", "electron29 %u");
    addDesktopFile("usr/applications/player.desktop", "Player", "player3.11");
    const DesktopIndex index = DesktopIndex::read({(machine_.path() / "usr").string()}, {});
    EXPECT_EQ(index.idOfExecutable("/usr/bin/python3.11"), std::nullopt);
    EXPECT_EQ(index.idOfExecutable("electron29"), std::nullopt);
    EXPECT_FALSE(index.isHelper("/usr/bin/python3.11"));
    EXPECT_EQ(index.idOfExecutable("/usr/bin/player3.11"), "player");
}

TEST_F(DesktopApplicationsTest, AnEntryThatNoMenuShowsNamesNoProgram) {
    addDesktopFile("usr/applications/helper.desktop", "Helper", "/usr/lib/helper", "NoDisplay=true\n");
    add({.pid = 10, .program = "/usr/lib/helper"});
    EXPECT_EQ(of(10), std::nullopt);
}

TEST_F(DesktopApplicationsTest, FoldersThatLeadToThemselvesAreReadOnce) {
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    for (int i = 0; i < 12; ++i) {
        std::filesystem::create_symlink(".", machine_.path() / "usr/applications" / std::to_string(i));
    }
    add({.pid = 10, .program = "/usr/bin/player"});
    const auto start = test::threadProcessorTime();
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    EXPECT_LT(test::threadProcessorTime() - start, std::chrono::milliseconds(200));
}

TEST_F(DesktopApplicationsTest, ALauncherNamesNoProgram) {
    addDesktopFile("usr/applications/org.gnome.Music.desktop", "Music",
                   "/usr/bin/flatpak run org.gnome.Music");
    addDesktopFile("usr/applications/script.desktop", "Script", "sh -c 'x'");
    add({.pid = 10, .program = "/usr/bin/flatpak"});
    add({.pid = 11, .program = "/usr/bin/sh"});
    EXPECT_EQ(of(10), std::nullopt);
    EXPECT_EQ(of(11), std::nullopt);
}

TEST_F(DesktopApplicationsTest, AmongSeveralDesktopFilesTheBestWins) {
    addDesktopFile("usr/applications/a-handler.desktop", "Handler", "player --open %U", "NoDisplay=true\n");
    addDesktopFile("usr/applications/other.desktop", "Other", "player --other");
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    addDesktopFile("usr/applications/exact.desktop", "Exact", "/opt/exact/player");
    addDesktopFile("usr/applications/deleted.desktop", "Deleted", "gone", "Hidden=true\n");
    add({.pid = 10, .program = "/usr/bin/player"});
    add({.pid = 11, .program = "/opt/exact/player"});
    add({.pid = 12, .program = "/usr/bin/gone"});
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    EXPECT_EQ(of(11), application(11, "exact", "Exact"));
    EXPECT_EQ(of(12), std::nullopt);
}

TEST_F(DesktopApplicationsTest, TheUsersOwnDesktopFileWinsAndFoldersBecomeDashes) {
    addDesktopFile("usr/applications/kde/player.desktop", "System", "player");
    addDesktopFile("home/applications/kde-player.desktop", "Mine", "player");
    add({.pid = 10, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), application(10, "kde-player", "Mine"));
}

TEST_F(DesktopApplicationsTest, ForAWhileTheFoldersAreNotLookedAt) {
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

TEST_F(DesktopApplicationsTest, AnotherProcessWithTheSameNumberIsToldApart) {
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    add({.pid = 10, .startTime = 100, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    add({.pid = 10, .startTime = 200, .program = "/usr/bin/other"});
    EXPECT_EQ(of(10), std::nullopt);
}

TEST_F(DesktopApplicationsTest, ForAMomentAProcessThatWasSeenIsNotLookedAt) {
    trustedProcessTime_ = 2s;
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    add({.pid = 10, .program = "/usr/bin/player"});
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    std::filesystem::remove_all(machine_.path() / "proc/10");
    now_ += 1s;
    EXPECT_EQ(of(10), application(10, "player", "Player"));
    now_ += 1s;
    EXPECT_EQ(of(10), std::nullopt);
}

/// A process may change its name. A name that has stood for long is trusted for long.
TEST_F(DesktopApplicationsTest, AnAnswerThatStandsIsKeptTwiceAsLongUpToALimit) {
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

TEST_F(DesktopApplicationsTest, ANewDesktopFileIsNoticedByTheNextQuestion) {
    add({.pid = 10, .program = "/usr/bin/player"});
    std::filesystem::create_directories(machine_.path() / "usr/applications");
    EXPECT_EQ(of(10), std::nullopt);
    addDesktopFile("usr/applications/player.desktop", "Player", "player");
    EXPECT_EQ(of(10), std::nullopt);  // the folders are looked at elsewhere, and nobody waits
    EXPECT_EQ(queue_->run(), 1U);
    EXPECT_EQ(of(10), application(10, "player", "Player"));
}

TEST_F(DesktopApplicationsTest, InstancesComeInTheOrderOfTheirStartEachOnce) {
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

TEST_F(DesktopApplicationsTest, AQuestionForInstancesLooksAtNoOtherProcess) {
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

TEST_F(DesktopApplicationsTest, AProcessThatIsNotThereHasNoApplication) {
    std::filesystem::create_directories(machine_.path() / "proc/77");
    for (const int pid : {-1, 0, 77, 12345}) EXPECT_EQ(of(pid), std::nullopt) << pid;
}

TEST_F(DesktopApplicationsTest, ATreeOfParentsThatIsACircleEnds) {
    add({.pid = 10, .parent = 11, .program = "/usr/bin/x"});
    add({.pid = 11, .parent = 10, .program = "/usr/bin/y"});
    EXPECT_EQ(of(10), std::nullopt);
}

TEST_F(DesktopApplicationsTest, MayEndBeforeTheFilesAreRead) {
    auto early = std::make_unique<DesktopApplications>(queue_, DesktopRoots{});
    EXPECT_EQ(early->runningApplicationWithProcessIdentifier(1 << 30), std::nullopt);
    early.reset();
    EXPECT_EQ(queue_->run(), 1U);
}

TEST(DesktopApplicationsOfThisMachine, NoDesktopFileNamesAnInterpreter) {
    const DesktopIndex index = DesktopIndex::read(desktopDataFolders(), {});
    int interpreters = 0;
    for (const char* folder : {"/usr/bin", "/bin", "/usr/local/bin"}) {
        std::error_code error;
        for (const auto& file : std::filesystem::directory_iterator(folder, error)) {
            const std::string path = file.path().string();
            const std::string name = file.path().filename().string();
            if (!name.starts_with("python3") && name != "bash" && name != "sh" && !name.starts_with("perl")) {
                continue;
            }
            ++interpreters;
            EXPECT_EQ(index.idOfExecutable(path), std::nullopt) << path;
            EXPECT_EQ(index.idOfExecutable(name), std::nullopt) << name;
        }
    }
    EXPECT_GT(interpreters, 2);
}

TEST(DesktopApplicationsOfThisMachine, KnowTheirOwnProcessAndAnswerQuickly) {
    WorkerPool pool(1);
    DesktopApplications applications(pool.makeSerialQueue("desktop"));
    const auto start = std::chrono::steady_clock::now();
    applications.runningApplicationWithProcessIdentifier(getpid());
    applications.runningApplicationsWithBundleIdentifier("com.spotify.client");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

}  // namespace
}  // namespace purlock::host_linux
