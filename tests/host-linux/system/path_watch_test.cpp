#include "platform/linux/system/path_watch.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <filesystem>
#include <functional>
#include <string>

#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

bool isReadable(const PathWatch& watch) {
    pollfd descriptor{watch.descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) > 0;
}

/// `path` is waited for in a folder that has the folder "here"; `told` says whether `doing` must be heard.
struct Case {
    const char* name;
    const char* path;
    std::function<void(const fs::path& root)> doing;
    bool told;
};

class PathWatchTest : public testing::TestWithParam<Case> {};

TEST_P(PathWatchTest, TellsOfTheNextStepOnly) {
    const test::TemporaryFolder folder;
    fs::create_directory(folder.path() / "here");
    PathWatch watch;
    ASSERT_TRUE(watch.begin(folder.path() / GetParam().path));
    EXPECT_FALSE(watch.takeEvents()) << "nothing has happened";
    GetParam().doing(folder.path());
    EXPECT_EQ(watch.takeEvents(), GetParam().told);
    EXPECT_FALSE(watch.takeEvents()) << "told once";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PathWatchTest,
    testing::Values(
        Case{"Created", "here/bus", [](const fs::path& root) { writeFile(root / "here/bus", ""); }, true},
        Case{"MovedIntoPlace", "here/bus",
             [](const fs::path& root) {
                 writeFile(root / "other", "");
                 fs::rename(root / "other", root / "here/bus");
             },
             true},
        Case{"AnotherName", "here/bus", [](const fs::path& root) { writeFile(root / "here/bush", ""); },
             false},
        Case{"AnotherFolder", "here/bus", [](const fs::path& root) { writeFile(root / "bus", ""); }, false},
        Case{"TheFoldersEnd", "here/bus", [](const fs::path& root) { fs::remove(root / "here"); }, true},
        Case{"TheFolderMoves", "here/bus",
             [](const fs::path& root) { fs::rename(root / "here", root / "there"); }, true},
        Case{"AFolderOnTheWay", "here/later/bus",
             [](const fs::path& root) { fs::create_directory(root / "here/later"); }, true},
        Case{"ALinkOnTheWay", "later/deep/bus",
             [](const fs::path& root) { fs::create_directory_symlink(root / "here", root / "later"); }, true},
        Case{"AnotherFolderOnTheWay", "here/later/bus",
             [](const fs::path& root) { fs::create_directory(root / "later"); }, false}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(PathWatch, GoesOnToANearerFolder) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.path() / "a" / "b" / "bus";
    PathWatch watch;
    ASSERT_TRUE(watch.begin(path));
    const int descriptor = watch.descriptor();
    for (const char* const step : {"a", "a/b"}) {
        fs::create_directory(folder.path() / step);
        EXPECT_TRUE(watch.takeEvents()) << step;
        ASSERT_TRUE(watch.begin(path));
        EXPECT_FALSE(watch.takeEvents()) << "the farther folder is watched no longer";
    }
    fs::create_directory(folder.path() / "c");
    EXPECT_FALSE(isReadable(watch)) << "what happens in the farther folder wakes nobody";
    writeFile(path, "");
    EXPECT_TRUE(watch.takeEvents());
    EXPECT_EQ(watch.descriptor(), descriptor);
}

TEST(PathWatch, ReturnsToAFartherFolderWhenItsOwnHasGone) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.path() / "a" / "bus";
    fs::create_directory(folder.path() / "a");
    PathWatch watch;
    ASSERT_TRUE(watch.begin(path));
    fs::remove(folder.path() / "a");
    EXPECT_TRUE(watch.takeEvents());
    ASSERT_TRUE(watch.begin(path));
    fs::create_directory(folder.path() / "a");
    EXPECT_TRUE(watch.takeEvents());
    ASSERT_TRUE(watch.begin(path));
    writeFile(path, "");
    EXPECT_TRUE(watch.takeEvents());
}

TEST(PathWatch, RefusesWhatItCannotWatch) {
    PathWatch watch;
    EXPECT_LT(watch.descriptor(), 0);
    EXPECT_FALSE(watch.begin(""));
    EXPECT_FALSE(watch.begin("relative/bus"));
    EXPECT_FALSE(watch.begin("/"));
    EXPECT_LT(watch.descriptor(), 0);
    EXPECT_TRUE(watch.begin("/nonexistent/bus"));
    watch.end();
    EXPECT_LT(watch.descriptor(), 0);
}

}  // namespace
}  // namespace purlock::host_linux
