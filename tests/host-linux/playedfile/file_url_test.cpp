#include "platform/linux/playedfile/file_url.h"

#include <gtest/gtest.h>

#include <string>

namespace purlock::host_linux {
namespace {

struct UrlRow {
    const char* name;
    std::string url;
    std::optional<std::string> path;
};

const UrlRow urlRows[] = {
    {"a file", "file:///music/a.flac", "/music/a.flac"},
    {"of this machine by name", "file://localhost/music/a.flac", "/music/a.flac"},
    {"the short form", "file:/music/a.flac", "/music/a.flac"},
    {"a path as it stands", "/music/100%25.flac", "/music/100%25.flac"},
    {"escaped blanks", "file:///a%20b%2520.flac", "/a b%20.flac"},
    {"escaped UTF-8", "file:///%C3%9cn%C3%AF.flac", "/Ünï.flac"},
    {"UTF-8 as it stands", "file:///Ünï.flac", "/Ünï.flac"},
    {"what would end another URL", "file:///a#1?b.flac", "/a#1?b.flac"},
    {"lower case digits", "file:///a%2fb", "/a/b"},
    {"a percent sign alone", "file:///a%", std::nullopt},
    {"half a byte", "file:///a%2", std::nullopt},
    {"no digits", "file:///a%zz", std::nullopt},
    {"a sign in place of a digit", "file:///a%+1", std::nullopt},
    {"a zero byte", "file:///a%00b", std::nullopt},
    {"another machine", "file://server/music/a.flac", std::nullopt},
    {"another machine in the path", "file:////server/music/a.flac", std::nullopt},
    {"no path", "file://", std::nullopt},
    {"a relative path", "file:a.flac", std::nullopt},
    {"a relative path without a scheme", "a.flac", std::nullopt},
    {"the network", "https://example.org/a.flac", std::nullopt},
    {"a sound card's disc", "cdda:///dev/cdrom", std::nullopt},
    {"a share", "smb://server/a.flac", std::nullopt},
    {"letters in another case", "FILE:///a.flac", std::nullopt},
    {"nothing", "", std::nullopt},
    {"a path that is too long", "file:///" + std::string(5000, 'a'), std::nullopt},
};

TEST(LocalPathOf, TakesFilesOfThisMachineAlone) {
    for (const UrlRow& row : urlRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(localPathOf(row.url), row.path);
    }
}

}  // namespace
}  // namespace purlock::host_linux
