#include "platform/linux/system/directories.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace purlock::host_linux {
namespace {

using Variables = std::map<std::string, std::string>;

struct Row {
    const char* name;
    Variables variables;
    const char* config;
    const char* data;
};

const Row rows[] = {
    {"home only", {{"HOME", "/home/ann"}}, "/home/ann/.config", "/home/ann/.local/share"},
    {"both named", {{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", "/c"}, {"XDG_DATA_HOME", "/d"}}, "/c", "/d"},
    {"named without a home", {{"XDG_CONFIG_HOME", "/c"}, {"XDG_DATA_HOME", "/d"}}, "/c", "/d"},
    {"relative paths do not count",
     {{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", "c"}, {"XDG_DATA_HOME", "./d"}},
     "/home/ann/.config",
     "/home/ann/.local/share"},
    {"empty does not count",
     {{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", ""}, {"XDG_DATA_HOME", ""}},
     "/home/ann/.config",
     "/home/ann/.local/share"},
};

TEST(Directories, FollowTheEnvironment) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto environment = [&](const char* name) -> std::optional<std::string> {
            const auto found = row.variables.find(name);
            return found != row.variables.end() ? std::optional(found->second) : std::nullopt;
        };
        EXPECT_EQ(configDirectory(environment), row.config);
        EXPECT_EQ(dataDirectory(environment), row.data);
    }
}

TEST(Directories, WithoutAHomeVariableTheUserDatabaseTells) {
    const auto home = homeDirectory([](const char*) { return std::nullopt; });
    ASSERT_TRUE(home);
    EXPECT_TRUE(home->is_absolute());
}

}  // namespace
}  // namespace purlock::host_linux
