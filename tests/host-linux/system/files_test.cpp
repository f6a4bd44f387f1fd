#include "platform/linux/system/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/system/file_writing.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;
using test::writeFile;

TEST(ReadWholeFile, TellsWhatIsThere) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    EXPECT_EQ(readWholeFile(file, 10).status, FileStatus::missing);
    writeFile(file, "0123456789");
    EXPECT_EQ(readWholeFile(file, 10).status, FileStatus::read);
    EXPECT_EQ(readWholeFile(file, 10).text, "0123456789");
    EXPECT_EQ(readWholeFile(file, 9).status, FileStatus::tooLarge);
    EXPECT_EQ(readWholeFile(file, 9).text, "");
    writeFile(file, "");
    EXPECT_EQ(readWholeFile(file, 0).status, FileStatus::read);
    EXPECT_EQ(readWholeFile(folder.path(), 10).status, FileStatus::unreadable);
    writeFile(file, std::string(100000, 'x'));
    EXPECT_EQ(readWholeFile(file, 1 << 20).text, std::string(100000, 'x'));
}

TEST(ReadWholeFile, ReadsFilesWhoseSizeIsNotSaid) {
    const FileText text = readWholeFile("/proc/self/status", 1 << 20);
    EXPECT_EQ(text.status, FileStatus::read);
    EXPECT_NE(text.text.find("Name:"), std::string::npos);
}

TEST(ReadWholeFile, DoesNotWaitForAPipe) {
    const test::TemporaryFolder folder;
    const fs::path pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(readWholeFile(pipe, 10).status, FileStatus::unreadable);
}

std::size_t filesIn(const fs::path& folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder)) ++count;
    return count;
}

TEST(ReplaceFile, WritesAndReplaces) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    EXPECT_TRUE(replaceFile(file, "one"));
    EXPECT_EQ(contentsOf(file), "one");
    EXPECT_TRUE(replaceFile(file, ""));
    EXPECT_EQ(contentsOf(file), "");
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(ReplaceFile, ALeftoverOfACrashIsNoObstacle) {
    const test::TemporaryFolder folder;
    writeFile(folder.path() / ".file.new", "half");
    EXPECT_TRUE(replaceFile(folder.path() / "file", "whole"));
    EXPECT_EQ(contentsOf(folder.path() / "file"), "whole");
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(ReplaceFile, ReplacesASymbolicLinkAndLeavesItsTarget) {
    const test::TemporaryFolder folder;
    writeFile(folder.path() / "target", "kept");
    fs::create_symlink("target", folder.path() / "file");
    fs::create_symlink("target", folder.path() / ".file.new");
    EXPECT_TRUE(replaceFile(folder.path() / "file", "new"));
    EXPECT_EQ(contentsOf(folder.path() / "target"), "kept");
    EXPECT_EQ(contentsOf(folder.path() / "file"), "new");
}

TEST(ReplaceFile, FailsWhereItCannotWriteAndLeavesNothing) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(replaceFile(folder.path() / "missing" / "file", "text"));
    fs::create_directory(folder.path() / "file");
    EXPECT_FALSE(replaceFile(folder.path() / "file", "text"));
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(ReplaceFile, AReaderNeverSeesHalfAFile) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    const std::string a(50000, 'a');
    const std::string b(70000, 'b');
    ASSERT_TRUE(replaceFile(file, a));
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int i = 0; i < 300; ++i) replaceFile(file, i % 2 == 0 ? b : a);
        done = true;
    });
    std::size_t reads = 0;
    while (!done || reads == 0) {
        const std::string text = contentsOf(file);
        EXPECT_TRUE(text == a || text == b) << text.size() << " bytes";
        ++reads;
    }
    writer.join();
}

}  // namespace
}  // namespace purlock::host_linux
