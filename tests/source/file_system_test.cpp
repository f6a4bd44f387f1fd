#include "source/file_system.h"

#include <gtest/gtest.h>

#include "tests/support/fake_files.h"

namespace purlock {
namespace {

struct Row {
    const char* name;
    const char* path;
    const char* expanded;
};

constexpr Row rows[] = {
    {"a file below the home folder", "~/Library/a.plist", "/home/listener/Library/a.plist"},
    {"the home folder itself", "~", "/home/listener"},
    {"an absolute path", "/etc/~/a", "/etc/~/a"},
    {"another user's home folder", "~other/a", "~other/a"},
    {"a tilde in the middle", "a/~/b", "a/~/b"},
    {"nothing", "", ""},
};

TEST(FileSystem, ALeadingTildeIsTheHomeFolder) {
    test::FakeFiles files;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(stringByExpandingTildeInPath(files, row.path), row.expanded);
    }
}

TEST(FileSystem, WithoutAHomeFolderTheTildeStays) {
    test::FakeFiles files;
    files.forgetHome();
    EXPECT_EQ(stringByExpandingTildeInPath(files, "~/a"), "~/a");
}

}  // namespace
}  // namespace purlock
