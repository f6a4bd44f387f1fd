#include "platform/linux/system/files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>
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

/// Both ways of replacing keep the same promises.
using Replace = bool (*)(const fs::path& file, std::string_view text);

class ReplaceFile : public testing::TestWithParam<Replace> {
  protected:
    const Replace replace = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Ways, ReplaceFile, testing::Values(&replaceFile, &replaceTransientFile),
                         [](const auto& each) {
                             return std::string(each.param == &replaceFile ? "Moved" : "Exchanged");
                         });

TEST_P(ReplaceFile, WritesAndReplaces) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    EXPECT_TRUE(replace(file, "one"));
    EXPECT_EQ(contentsOf(file), "one");
    EXPECT_TRUE(replace(file, ""));
    EXPECT_EQ(contentsOf(file), "");
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST_P(ReplaceFile, ALeftoverOfACrashIsNoObstacle) {
    const test::TemporaryFolder folder;
    writeFile(folder.path() / ".file.new", "half");
    EXPECT_TRUE(replace(folder.path() / "file", "whole"));
    EXPECT_EQ(contentsOf(folder.path() / "file"), "whole");
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST_P(ReplaceFile, ReplacesASymbolicLinkAndLeavesItsTarget) {
    const test::TemporaryFolder folder;
    writeFile(folder.path() / "target", "kept");
    fs::create_symlink("target", folder.path() / "file");
    fs::create_symlink("target", folder.path() / ".file.new");
    EXPECT_TRUE(replace(folder.path() / "file", "new"));
    EXPECT_EQ(contentsOf(folder.path() / "target"), "kept");
    EXPECT_EQ(contentsOf(folder.path() / "file"), "new");
}

TEST_P(ReplaceFile, FailsWhereItCannotWriteAndLeavesNothing) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(replace(folder.path() / "missing" / "file", "text"));
    writeFile(folder.path() / "file" / "inner", "kept");
    EXPECT_FALSE(replace(folder.path() / "file", "text"));
    EXPECT_EQ(contentsOf(folder.path() / "file" / "inner"), "kept");
    EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST_P(ReplaceFile, AReaderNeverSeesHalfAFile) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    const std::string a(50000, 'a');
    const std::string b(70000, 'b');
    ASSERT_TRUE(replace(file, a));
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int i = 0; i < 300; ++i) replace(file, i % 2 == 0 ? b : a);
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

TEST(ReplaceTransientFile, MakesNobodyWaitForTheDisk) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "file";
    const auto switches = [] {
        rusage use{};
        getrusage(RUSAGE_THREAD, &use);
        return use.ru_nvcsw;
    };
    ASSERT_TRUE(replaceTransientFile(file, "first"));
    const long before = switches();
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(replaceTransientFile(file, std::string(600, 'x')));
    EXPECT_LT(switches() - before, 25) << "one a file when the disk is waited for";
}

}  // namespace
}  // namespace purlock::host_linux
