#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "tests/host-linux/program/program_test.h"
#include "tests/support/hanging_mount.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using test::HangingMount;
using test::waitUntil;

/// Folders and files of other programs on a disk that never answers.
class HangingFiles : public test::ProgramWithSoundTest {
  protected:
    void SetUp() override {
        ProgramWithSoundTest::SetUp();
        mount_ = std::make_unique<HangingMount>(mountFolder());
        if (!mount_->isThere()) GTEST_SKIP() << "needs root and FUSE";
        // A search for leaks stops all threads first, and one that hangs cannot be stopped.
        session.setVariable("ASAN_OPTIONS", "detect_leaks=0");
    }

    void TearDown() override {
        ProgramWithSoundTest::TearDown();
        program.process().kill();
        mount_.reset();
    }

    std::filesystem::path mountFolder() const { return session.folder() + "/hanging"; }

    /// The main thread works: the snapshot is rewritten, in time, again and again; and ends when it is told
    /// to.
    void expectLife() {
        for (int i = 0; i < 5; ++i) {
            const auto before = std::filesystem::last_write_time(program.stateFile());
            EXPECT_TRUE(waitUntil(
                [&] { return std::filesystem::last_write_time(program.stateFile()) != before; }, 2500ms))
                << i;
        }
        program.process().signal(SIGTERM);
        EXPECT_EQ(program.process().waitForExit(4s), 0);
    }

    std::unique_ptr<HangingMount> mount_;
};

TEST_F(HangingFiles, AnApplicationsFolderStopsNobody) {
    // The applications' alone: the toolkit itself looks for fonts beside them.
    std::filesystem::create_directories(session.folder() + "/share");
    std::filesystem::create_directory_symlink(mountFolder(), session.folder() + "/share/applications");
    session.setVariable("XDG_DATA_DIRS", session.folder() + "/share:/usr/share");
    play(48000);
    program.start();
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    expectLife();
}

TEST_F(HangingFiles, PreferenceFilesStopNobody) {
    const std::filesystem::path home = std::getenv("HOME");
    std::filesystem::create_directories(home / "Library");
    std::filesystem::create_directory_symlink(mountFolder(), home / "Library/Preferences");
    const std::string player = session.folder() + "/tidal-hifi";
    std::filesystem::copy_file("/usr/bin/mpv", player);
    test::writeFile(session.folder() + "/data/applications/tidal-hifi.desktop",
                    "[Desktop Entry]\nType=Application\nName=TIDAL\nExec=" + player + "\n");
    session.spawn("player", {player, "--no-terminal", "--no-video", "--ao=pulse", "--loop-file=inf",
                             session.toneFile(48000)});
    program.start();
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    expectLife();
}

/// The file that a player names is on such a disk; the player itself would not play on, so a stand-in names
/// it.
TEST_F(HangingFiles, APlayedFileStopsNobody) {
    play(48000);
    session.spawn("names", {PURLOCK_NAMING_PLAYER, "file://" + (mountFolder() / "a.flac").string()});
    program.start();
    ASSERT_TRUE(program.awaitVerdict("bitPerfect"));
    expectLife();
}

/// The disk of the program's own files hangs in mid-run.
class HangingDisk : public HangingFiles {
  protected:
    void SetUp() override {
        HangingFiles::SetUp();
        if (IsSkipped()) return;
        program.start();
        ASSERT_TRUE(program.awaitVerdict("idle"));
        mount_ = std::make_unique<HangingMount>(program.folder());
        ASSERT_TRUE(mount_->isThere());
        ASSERT_TRUE(waitUntil([&] { return mount_->takesRequest(); })) << "the snapshot is written";
    }

    /// What is printed of a failure lies on that disk.
    void TearDown() override {
        mount_.reset();
        HangingFiles::TearDown();
    }

    /// A line of /proc's file on the program's main thread, without its name.
    std::string processLine(const std::string& name) {
        std::ifstream status("/proc/" + std::to_string(program.process().pid()) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(name + ":\t")) return line.substr(name.size() + 2);
        }
        return {};
    }

    /// A thread that the disk holds keeps the process in the table, though all else of it has ended.
    bool hasEnded() { return processLine("State").starts_with("Z"); }

    bool hearsSignal(int number) {
        return (std::stoull(processLine("SigCgt"), nullptr, 16) >> (number - 1) & 1) != 0;
    }
};

TEST_F(HangingDisk, ItEndsAllTheSame) {
    ASSERT_TRUE(hearsSignal(SIGTERM));
    program.process().signal(SIGTERM);
    ASSERT_TRUE(waitUntil([&] { return hasEnded(); }));
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        EXPECT_FALSE(hearsSignal(signal)) << strsignal(signal) << " would have had no effect";
    }
    mount_.reset();
    EXPECT_EQ(program.process().waitForExit(10s), 0);
    EXPECT_EQ(program.console(), "");
}

TEST_F(HangingDisk, ItsEndHoldsUpNoSecondStart) {
    program.process().signal(SIGTERM);
    ASSERT_TRUE(waitUntil([&] { return hasEnded(); }));
    const std::string elsewhere = session.folder() + "/elsewhere";
    session.spawn("second", {"env", "XDG_DATA_HOME=" + elsewhere, PURLOCK_PROGRAM});
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(elsewhere + "/Purlock/state.json"); }))
        << test::contentsOf(session.folder() + "/log-second");
    session.process("second").signal(SIGTERM);
    EXPECT_EQ(session.process("second").waitForExit(10s), 0);
    EXPECT_TRUE(program.isRunning()) << "the system still waits for the first one's disk";
}

}  // namespace
}  // namespace purlock
