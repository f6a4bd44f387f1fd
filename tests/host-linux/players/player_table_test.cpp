#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/host-linux/session/session_test.h"

namespace purlock::test {
namespace {

using namespace std::chrono_literals;
using Command = std::vector<std::string>;

/// A player, how it is told to play "FILE", and what the source stage calls it.
struct PlayerRow {
    const char* name;
    const char* program;
    Command start;
    std::vector<Command> orders;  // given until the program shows the track
    const char* shownName;
    bool namesFile;  // by MPRIS
    bool isDaily;    // also where only ./test has installed what it needs
};

std::ostream& operator<<(std::ostream& out, const PlayerRow& row) {
    return out << row.name;
}

const PlayerRow playerRows[] = {
    {"mpv",
     "/usr/bin/mpv",
     {"mpv", "--no-terminal", "--no-video", "--ao=pulse", "FILE"},
     {},
     "mpv Media Player",
     true,
     true},
    {"cmus",
     "/usr/bin/cmus",
     {"script", "--quiet", "--command", "exec cmus", "/dev/null"},
     {{"cmus-remote", "--raw", "set output_plugin=pulse"}, {"cmus-remote", "--raw", "player-play FILE"}},
     "cmus",
     false,
     true},
    {"quodlibet",
     "/usr/bin/quodlibet",
     {"quodlibet"},
     {{"quodlibet", "--play-file=FILE"}},
     "Quod Libet",
     true,
     true},
    {"audacious",
     "/usr/bin/audacious",
     {"audacious", "-H", "FILE"},
     {{"audtool", "playback-play"}},
     "Audacious",
     true,
     false},
    {"strawberry",
     "/usr/bin/strawberry",
     {"strawberry", "FILE"},
     {{"strawberry", "--play"}},
     "Strawberry",
     true,
     false},
    {"clementine",
     "/usr/bin/clementine",
     {"clementine", "FILE"},
     {{"clementine", "--play"}},
     "Clementine",
     true,
     false},
    {"sayonara", "/usr/bin/sayonara", {"sayonara", "FILE"}, {}, "Sayonara", true, false},
    {"lollypop", "/usr/bin/lollypop", {"lollypop", "FILE"}, {}, "Lollypop", true, false},
    {"rhythmbox",
     "/usr/bin/rhythmbox",
     {"rhythmbox", "FILE"},
     {{"rhythmbox-client", "--play-uri=file://FILE"}},
     "Rhythmbox",
     true,
     false},
    {"celluloid", "/usr/bin/celluloid", {"celluloid", "FILE"}, {}, "Celluloid", true, false},
    {"vlc",
     "/usr/bin/vlc",
     {"vlc", "--intf", "dummy", "--quiet", "--no-video", "--aout", "pulse", "--control", "dbus", "FILE"},
     {},
     "VLC media player",
     true,
     false},
};

bool wantsAll() {
    const char* players = std::getenv("PURLOCK_PLAYERS");
    return players != nullptr && std::string(players) == "all";
}

class PlayerTable : public SessionTest, public testing::WithParamInterface<PlayerRow> {
  protected:
    void SetUp() override {
        if (!GetParam().isDaily && !wantsAll()) GTEST_SKIP() << "only with PURLOCK_PLAYERS=all";
        ASSERT_TRUE(std::filesystem::exists(GetParam().program)) << GetParam().program << " is not installed";
        SessionTest::SetUp();
        desktop.parts().setVariable("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
        file_ = desktop.parts().folder() + "/spring.flac";
        const auto made = desktop.parts().run({"sox",
                                               "-n",
                                               "-r",
                                               "96000",
                                               "-b",
                                               "24",
                                               "-c",
                                               "2",
                                               "--add-comment",
                                               "TITLE=Spring",
                                               "--add-comment",
                                               "ARTIST=The Larks",
                                               "--add-comment",
                                               "ALBUM=Seasons",
                                               file_,
                                               "synth",
                                               "120",
                                               "sine",
                                               "440",
                                               "vol",
                                               "0.1"},
                                              60s);
        ASSERT_EQ(made.exitStatus, 0);
    }

    void TearDown() override {
        if (!IsSkipped()) SessionTest::TearDown();
    }

    Command withFile(Command command) const {
        for (std::string& word : command) {
            if (const auto place = word.find("FILE"); place != std::string::npos)
                word.replace(place, 4, file_);
        }
        return command;
    }

    /// VLC will not run as root, as in a container; for the test it may: a copy of the program gets to call
    /// another function whose name is as long.
    void makeRunnable(Command& command) {
        if (command.front() != "vlc" || getuid() != 0) return;
        std::ifstream in(GetParam().program, std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(in), {});
        for (auto at = bytes.find("geteuid"); at != bytes.npos; at = bytes.find("geteuid", at))
            bytes.replace(at, 7, "getppid");
        command.front() = desktop.parts().folder() + "/vlc";
        writeFile(command.front(), bytes);
        std::filesystem::permissions(command.front(), std::filesystem::perms::owner_all);
    }

    const char* shownFile() const {
        return GetParam().namesFile ? "FLAC · 24-bit · 96.0 kHz" : "(source quality not detected)";
    }

    std::string file_;
};

TEST_P(PlayerTable, IsNamedWithItsTrackAndItsFile) {
    const PlayerRow& row = GetParam();
    Command start = withFile(row.start);
    makeRunnable(start);
    desktop.parts().spawn("player", start);
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
    bool isKnown = false;
    for (int i = 0; i < 6 && !isKnown; ++i) {
        for (const Command& order : row.orders) desktop.parts().run(withFile(order), 5s);
        isKnown = waitUntil(
            [&] {
                const Accessible screen = desktop.onScreen();
                return elementNamed(screen, shownFile()) && elementNamed(screen, "Spring") &&
                       elementNamed(screen, "Playing");
            },
            4s);
    }
    EXPECT_TRUE(isKnown);
    EXPECT_TRUE(shows("Spring"));
    EXPECT_TRUE(shows(row.shownName));
    std::this_thread::sleep_for(2s);  // the sound may begin later than the track
    std::string line;
    for (const std::string& text : texts()) line += text + " | ";
    std::printf("%s: %s\n", row.name, line.c_str());
}

INSTANTIATE_TEST_SUITE_P(Rows, PlayerTable, testing::ValuesIn(playerRows),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace purlock::test
