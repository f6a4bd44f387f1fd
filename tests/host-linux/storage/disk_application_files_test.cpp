#include "platform/linux/storage/disk_application_files.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;

class DiskApplicationFilesTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder_;
    DiskApplicationFiles files_{folder_.path()};
    const fs::path log_ = folder_.path() / "log.jsonl";
};

TEST_F(DiskApplicationFilesTest, TheFolderIsMadeWithThoseAboveIt) {
    EXPECT_EQ(files_.applicationSupportDirectory(), folder_.path());
    EXPECT_EQ(DiskApplicationFiles(std::nullopt).applicationSupportDirectory(), std::nullopt);
    files_.createDirectory(folder_.path() / "a" / "b");
    files_.createDirectory(folder_.path() / "a" / "b");
    EXPECT_TRUE(fs::is_directory(folder_.path() / "a" / "b"));
}

TEST_F(DiskApplicationFilesTest, CreatesAppendsAndReplaces) {
    EXPECT_FALSE(files_.fileExists(log_));
    EXPECT_FALSE(files_.appendToFile(log_, "lost\n")) << "appending makes no file";
    EXPECT_TRUE(files_.createFile(log_, "one\n"));
    EXPECT_TRUE(files_.fileExists(log_));
    EXPECT_FALSE(files_.createFile(log_, "other\n")) << "creating replaces none";
    EXPECT_TRUE(files_.appendToFile(log_, "two\n"));
    EXPECT_EQ(contentsOf(log_), "one\ntwo\n");
    EXPECT_TRUE(files_.replaceFile(log_, "three"));
    EXPECT_EQ(contentsOf(log_), "three");
}

TEST_F(DiskApplicationFilesTest, WhatIsInTheWayIsLeftAlone) {
    fs::create_directory(log_);
    EXPECT_TRUE(files_.fileExists(log_));
    EXPECT_FALSE(files_.appendToFile(log_, "x"));
    EXPECT_FALSE(files_.replaceFile(log_, "x"));
    fs::remove(log_);
    ASSERT_EQ(mkfifo(log_.c_str(), 0600), 0);
    EXPECT_FALSE(files_.appendToFile(log_, "x"));
    EXPECT_FALSE(files_.createFile(folder_.path() / "missing" / "log.jsonl", "x"));
}

TEST_F(DiskApplicationFilesTest, LinesOfSeveralWritersNeverMix) {
    ASSERT_TRUE(files_.createFile(log_, ""));
    std::vector<std::thread> writers;
    for (char name = 'a'; name < 'e'; ++name) {
        writers.emplace_back([&, name] {
            for (int i = 0; i < 500; ++i) files_.appendToFile(log_, std::string(200, name) + "\n");
        });
    }
    for (std::thread& writer : writers) writer.join();
    const std::string text = contentsOf(log_);
    ASSERT_EQ(text.size(), 4U * 500U * 201U);
    for (std::size_t line = 0; line < text.size(); line += 201) {
        EXPECT_EQ(text.substr(line, 201), std::string(200, text[line]) + "\n");
    }
}

/// A limit on the size of files cuts a write short, as a full disk does. In a process of its own, for the
/// limit stays.
TEST_F(DiskApplicationFilesTest, AFullDiskLeavesWholeLines) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{30, 30};
        setrlimit(RLIMIT_FSIZE, &limit);
        bool fine = files_.createFile(log_, "0123456789\n") && files_.appendToFile(log_, "0123456789\n");
        fine =
            fine && !files_.appendToFile(log_, "0123456789\n") && !files_.appendToFile(log_, "0123456789\n");
        fine = fine && !files_.createFile(folder_.path() / "other", std::string(40, 'x'));
        fine = fine && !files_.replaceFile(folder_.path() / "state.json", std::string(40, 'x'));
        _exit(fine ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentsOf(log_), "0123456789\n0123456789\n");
    EXPECT_FALSE(fs::exists(folder_.path() / "state.json"));
    EXPECT_FALSE(fs::exists(folder_.path() / ".state.json.new"));
}

}  // namespace
}  // namespace purlock::host_linux
