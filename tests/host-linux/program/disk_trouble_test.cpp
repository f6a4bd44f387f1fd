#include <sys/mount.h>

#include "tests/host-linux/program/program_test.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

namespace fs = std::filesystem;

using namespace std::chrono_literals;
using test::signatureOf;
using test::waitUntil;

constexpr auto twoTicks = 1700ms;  // of the timer that has the snapshot written

/// The program may put its file back between the two steps.
bool replaceByFolder(const fs::path& file) {
    return test::waitUntil([&] {
        std::error_code ignored;
        fs::remove(file, ignored);
        return fs::create_directory(file, ignored);
    });
}

class DiskTrouble : public test::ProgramWithSoundTest {
  protected:
    void SetUp() override {
        ProgramWithSoundTest::SetUp();
        ASSERT_TRUE(session.loadNullSink("null44", 44100));
        ASSERT_TRUE(session.setDefaultSink("null48"));
    }

    void startProgram() {
        program.start();
        ASSERT_TRUE(program.awaitVerdict("idle"));
        ASSERT_TRUE(waitUntil([&] { return !program.log().empty(); }));
    }

    bool goesOnForAWhile() {
        return !waitUntil([&] { return !program.isRunning(); }, twoTicks);
    }

    /// The snapshot is written anew, and a change reaches the log.
    void expectWritesAgain() {
        const std::string other = uid_ == "null44" ? "null48" : "null44";
        ASSERT_TRUE(session.setDefaultSink(other));
        uid_ = other;
        EXPECT_TRUE(waitUntil([&] { return signatureOf(program.snapshot()).starts_with(uid_ + "|"); }));
        EXPECT_TRUE(waitUntil([&] {
            const auto records = program.log();
            return !records.empty() && signatureOf(records.back()).starts_with(uid_ + "|");
        }));
        EXPECT_EQ(program.faults(), "");
        EXPECT_EQ(program.console(), "");
    }

    void switchSink() {
        uid_ = uid_ == "null44" ? "null48" : "null44";
        ASSERT_TRUE(session.setDefaultSink(uid_));
    }

    std::string uid_ = "null48";
};

TEST_F(DiskTrouble, FolderThatIsAFile) {
    test::writeFile(program.folder(), "in the way");
    program.start();
    switchSink();
    EXPECT_TRUE(goesOnForAWhile());
    fs::remove(program.folder());
    fs::create_directory(program.folder());
    expectWritesAgain();
}

TEST_F(DiskTrouble, FolderDeletedInMidRun) {
    startProgram();
    ASSERT_TRUE(waitUntil([&] {
        std::error_code ignored;
        fs::remove_all(program.folder(), ignored);
        return !fs::exists(program.folder());
    }));
    switchSink();
    EXPECT_TRUE(goesOnForAWhile());
    EXPECT_FALSE(fs::exists(program.folder())) << "it is made at the start alone";
    fs::create_directory(program.folder());
    expectWritesAgain();
    EXPECT_EQ(program.log().size(), 1U) << "what was to be logged meanwhile is lost";
}

TEST_F(DiskTrouble, LogThatIsAFolder) {
    startProgram();
    ASSERT_TRUE(replaceByFolder(program.logFile()));
    switchSink();
    EXPECT_TRUE(waitUntil([&] { return signatureOf(program.snapshot()).starts_with(uid_ + "|"); }));
    EXPECT_TRUE(goesOnForAWhile());
    fs::remove(program.logFile());
    expectWritesAgain();
}

TEST_F(DiskTrouble, SnapshotThatIsAFolder) {
    startProgram();
    ASSERT_TRUE(replaceByFolder(program.stateFile()));
    EXPECT_TRUE(goesOnForAWhile());
    fs::remove(program.stateFile());
    expectWritesAgain();
}

/// A file system of 64 KiB in the place of the program's folder.
class SmallDisk : public DiskTrouble {
  protected:
    void SetUp() override {
        fs::create_directories(program.folder());
        if (::mount("tmpfs", program.folder().c_str(), "tmpfs", 0, "size=64k") != 0) {
            GTEST_SKIP() << "mounting is not permitted here";
        }
        isMounted_ = true;
        DiskTrouble::SetUp();
    }

    void TearDown() override {
        DiskTrouble::TearDown();
        program.process().kill();
        if (isMounted_) ::umount2(program.folder().c_str(), MNT_DETACH);
    }

    bool isMounted_ = false;
};

TEST_F(SmallDisk, FullLosesWholeLinesOnly) {
    startProgram();
    const fs::path ballast = program.folder() / "ballast";
    session.run({"dd", "if=/dev/zero", "of=" + ballast.string(), "bs=4096"});
    ASSERT_EQ(fs::space(program.folder()).available, 0U);
    const std::string before = test::contentsOf(program.stateFile());
    // The log's last block has room for a few lines; one of them will not fit whole.
    for (int i = 0; i < 25; ++i) {
        ASSERT_NO_FATAL_FAILURE(switchSink());
        ASSERT_EQ(program.faults(), "");
    }
    EXPECT_TRUE(goesOnForAWhile());
    EXPECT_EQ(test::contentsOf(program.stateFile()), before) << "the last one that was whole";
    EXPECT_EQ(program.faults(), "");
    EXPECT_LT(program.log().size(), 25U) << "the disk was full";
    fs::remove(ballast);
    expectWritesAgain();
}

TEST_F(SmallDisk, ReadOnlyIsSatOut) {
    startProgram();
    const std::string folder = program.folder();
    ASSERT_EQ(::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, "size=64k"), 0);
    const std::string before = test::contentsOf(program.stateFile());
    switchSink();
    EXPECT_TRUE(goesOnForAWhile());
    EXPECT_EQ(test::contentsOf(program.stateFile()), before);
    ASSERT_EQ(::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT, "size=64k"), 0);
    expectWritesAgain();
}

}  // namespace
}  // namespace purlock
