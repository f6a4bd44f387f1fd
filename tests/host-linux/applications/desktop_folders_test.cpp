#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/applications/desktop_index.h"
#include "platform/linux/system/directories.h"

namespace purlock::host_linux {
namespace {

using Folders = std::vector<std::string>;

const std::string flatpak = "/var/lib/flatpak/exports/share";
const std::string snapd = "/var/lib/snapd/desktop";

struct Row {
    const char* name;
    std::map<std::string, std::string> variables;
    Folders folders;
};

const Row rows[] = {
    {"home only",
     {{"HOME", "/home/ann"}},
     {"/home/ann/.local/share", "/usr/local/share", "/usr/share",
      "/home/ann/.local/share/flatpak/exports/share", flatpak, snapd}},
    {"all named",
     {{"HOME", "/home/ann"}, {"XDG_DATA_HOME", "/d"}, {"XDG_DATA_DIRS", "/a:/b/:/usr/share//"}},
     {"/d", "/a", "/b", "/usr/share", "/home/ann/.local/share/flatpak/exports/share", flatpak, snapd}},
    {"each once",
     {{"HOME", "/home/ann"}, {"XDG_DATA_DIRS", "/a:/home/ann/.local/share:/a/:/var/lib/snapd/desktop"}},
     {"/home/ann/.local/share", "/a", snapd, "/home/ann/.local/share/flatpak/exports/share", flatpak}},
    {"what is not absolute does not count",
     {{"HOME", "/home/ann"}, {"XDG_DATA_HOME", "d"}, {"XDG_DATA_DIRS", "a::./b:/c"}},
     {"/home/ann/.local/share", "/c", "/home/ann/.local/share/flatpak/exports/share", flatpak, snapd}},
    {"empty stands for not set",
     {{"HOME", "/home/ann"}, {"XDG_DATA_HOME", ""}, {"XDG_DATA_DIRS", ""}},
     {"/home/ann/.local/share", "/usr/local/share", "/usr/share",
      "/home/ann/.local/share/flatpak/exports/share", flatpak, snapd}},
    {"a colon belongs to the name of the user's folder",
     {{"HOME", "/home/ann"}, {"XDG_DATA_HOME", "/d:e"}, {"XDG_DATA_DIRS", "/a"}},
     {"/d:e", "/a", "/home/ann/.local/share/flatpak/exports/share", flatpak, snapd}},
};

Folders foldersWith(const std::map<std::string, std::string>& variables) {
    return desktopDataFolders([&](const char* name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found != variables.end() ? std::optional(found->second) : std::nullopt;
    });
}

TEST(DesktopDataFolders, FollowTheEnvironment) {
    for (const Row& row : rows) EXPECT_EQ(foldersWith(row.variables), row.folders) << row.name;
}

/// The user database knows the home folder too.
TEST(DesktopDataFolders, WithoutAHomeVariableAreNotThoseOfTheRoot) {
    const Folders folders = foldersWith({});
    ASSERT_FALSE(folders.empty());
    const auto ofDatabase = homeDirectory([](const char*) { return std::nullopt; });
    ASSERT_TRUE(ofDatabase);
    EXPECT_EQ(folders.front(), (*ofDatabase / ".local/share").string());
    EXPECT_EQ(std::ranges::count(folders, "/.local/share"), 0);
    EXPECT_EQ(std::ranges::count(folders, "/.local/share/flatpak/exports/share"), 0);
}

}  // namespace
}  // namespace purlock::host_linux
