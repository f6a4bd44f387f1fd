#include "platform/linux/applications/desktop_applications.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "base/worker_pool.h"
#include "tests/host-linux/applications/desktop_machine.h"
#include "tests/support/thread_processor_time.h"

namespace purlock::host_linux {
namespace {

class DesktopApplicationsTest : public test::DesktopMachine {};

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
