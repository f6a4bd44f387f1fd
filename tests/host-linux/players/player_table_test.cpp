#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host-linux/session/session_test.h"

namespace purlock::test {
namespace {

using namespace std::chrono_literals;
using Command = std::vector<std::string>;

/// What the source stage can say of what the player plays.
enum class Known {
    file,    // MPRIS names it
    track,   // MPRIS names no file
    nothing  // a player without MPRIS; its process is named all the same
};

/// What the player finds in the session's folder before it starts.
struct PreparedFile {
    const char* name = nullptr;  // null where it needs none
    const char* content = nullptr;
};

/// A player, how it is told to play "FILE", and what the source stage calls it.
struct PlayerRow {
    const char* name;
    const char* program;
    Command start;
    std::vector<Command> orders;  // given until the program shows the track
    const char* shownName;
    Known known;
    bool isDaily;  // also where only ./test has installed what it needs
    PreparedFile prepared = {};
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
     Known::file,
     true},
    {"cmus",
     "/usr/bin/cmus",
     {"script", "--quiet", "--command", "exec cmus", "/dev/null"},
     {{"cmus-remote", "--raw", "set output_plugin=pulse"}, {"cmus-remote", "--raw", "player-play FILE"}},
     "cmus",
     Known::track,
     true},
    {"quodlibet",
     "/usr/bin/quodlibet",
     {"quodlibet"},
     {{"quodlibet", "--play-file=FILE"}},
     "Quod Libet",
     Known::file,
     false,
     {"config/quodlibet/config", "[plugins]\nactive_plugins = mpris\n"}},
    {"quodlibet_without_its_plugin",
     "/usr/bin/quodlibet",
     {"quodlibet"},
     {{"quodlibet", "--play-file=FILE"}},
     "Quod Libet",
     Known::nothing,
     false},
    {"audacious",
     "/usr/bin/audacious",
     {"audacious", "-H", "FILE"},
     {{"audtool", "playback-play"}},
     "Audacious",
     Known::file,
     true},
    {"strawberry",
     "/usr/bin/strawberry",
     {"strawberry", "FILE"},
     {{"strawberry", "--play"}},
     "Strawberry",
     Known::file,
     false},
    {"clementine",
     "/usr/bin/clementine",
     {"clementine", "FILE"},
     {{"clementine", "--play"}},
     "Clementine",
     Known::file,
     false},
    {"sayonara", "/usr/bin/sayonara", {"sayonara", "FILE"}, {}, "Sayonara", Known::track, false},
    {"lollypop", "/usr/bin/lollypop", {"lollypop", "FILE"}, {}, "Lollypop", Known::file, false},
    {"rhythmbox",
     "/usr/bin/rhythmbox",
     {"rhythmbox", "FILE"},
     {{"rhythmbox-client", "--play-uri=file://FILE"}},
     "Rhythmbox",
     Known::file,
     false},
    {"celluloid", "/usr/bin/celluloid", {"celluloid", "FILE"}, {}, "Celluloid", Known::file, false},
    {"vlc",
     "/usr/bin/vlc",
     {"vlc", "--intf", "dummy", "--quiet", "--no-video", "--aout", "pulse", "--control", "dbus", "FILE"},
     {},
     "VLC media player",
     Known::file,
     false},
    {"chromium",
     "/usr/bin/chromium",
     {"chromium", "--no-sandbox", "--no-first-run", "--disable-gpu", "--disable-sync",
      "--autoplay-policy=no-user-gesture-required", "FOLDER/page.html"},
     {},
     "Chromium Web Browser",
     Known::track,
     false,
     {"page.html",
      "<audio autoplay loop src=spring.flac></audio><script>navigator.mediaSession.metadata = new "
      "MediaMetadata({title: 'Spring', artist: 'The Larks', album: 'Seasons'});</script>"}},
};

/// "Spring" by "The Larks" on "Seasons", at 96 kHz with 24 bits, as spring.flac in the session's folder.
bool makeSpring(PrivateSession& session) {
    return session
               .run({"sox",
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
                     session.folder() + "/spring.flac",
                     "synth",
                     "120",
                     "sine",
                     "440",
                     "vol",
                     "0.1"},
                    60s)
               .exitStatus == 0;
}

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
        ASSERT_TRUE(makeSpring(desktop.parts()));
        probed_ = fileAsProbed();
        prepare();
    }

    void TearDown() override {
        if (!IsSkipped()) SessionTest::TearDown();
    }

    void prepare() {
        const PreparedFile& prepared = GetParam().prepared;
        if (prepared.name != nullptr) {
            writeFile(desktop.parts().folder() + "/" + prepared.name, prepared.content);
        }
    }

    Command withFile(Command command) const {
        for (std::string& word : command) {
            if (const auto place = word.find("FILE"); place != std::string::npos) {
                word.replace(place, 4, file_);
            }
            if (word.starts_with("FOLDER")) word.replace(0, 6, std::filesystem::path(file_).parent_path());
        }
        return command;
    }

    /// What ffprobe finds in the file, as the source stage words it: "FLAC · 24-bit · 96.0 kHz".
    std::string fileAsProbed() {
        const auto probed =
            desktop.parts().run({"ffprobe", "-v", "error", "-of", "default=nk=1:nw=1", "-show_entries",
                                 "stream=codec_name,sample_rate,bits_per_raw_sample", file_});
        std::istringstream words(probed.output);
        std::string codec;
        double rate = 0;
        int bits = 0;
        words >> codec >> rate >> bits;
        std::ranges::transform(codec, codec.begin(), [](unsigned char byte) { return std::toupper(byte); });
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "%s · %d-bit · %.1f kHz", codec.c_str(), bits, rate / 1000);
        return text.data();
    }

    /// What playerctl hears of the one player: its state and its track.
    std::string trackAsPlayerctlTellsIt() {
        const std::string format = "{{status}}|{{title}}|{{artist}}|{{album}}";
        const auto told = desktop.parts().run({"playerctl", "metadata", "--format", format});
        return told.exitStatus == 0 ? told.output : "no player\n";
    }

    /// VLC will not run as root, as in a container; for the test it may: a copy of the program gets to call
    /// another function whose name is as long.
    void makeRunnable(Command& command) {
        if (command.front() != "vlc" || getuid() != 0) return;
        std::ifstream in(GetParam().program, std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(in), {});
        for (auto at = bytes.find("geteuid"); at != bytes.npos; at = bytes.find("geteuid", at)) {
            bytes.replace(at, 7, "getppid");
        }
        command.front() = desktop.parts().folder() + "/vlc";
        writeFile(command.front(), bytes);
        std::filesystem::permissions(command.front(), std::filesystem::perms::owner_all);
    }

    std::string shownSource() const {
        switch (GetParam().known) {
            case Known::file:
                return probed_;
            case Known::track:
                return "(source quality not detected)";
            case Known::nothing:
                break;
        }
        return "(no source identified)";
    }

    /// The sound runs, and what is known of it is shown.
    bool showsAll() {
        const Accessible screen = desktop.onScreen();
        const bool showsTrack = elementNamed(screen, "Spring") && elementNamed(screen, "Playing");
        return elementNamed(screen, shownSource()) && elementNamed(screen, GetParam().shownName) &&
               (showsTrack || GetParam().known == Known::nothing);
    }

    std::string file_;
    std::string probed_;
};

TEST_P(PlayerTable, IsNamedWithItsTrackAndItsFile) {
    const PlayerRow& row = GetParam();
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
    Command start = withFile(row.start);
    makeRunnable(start);
    desktop.parts().spawn("player", start);
    bool isShown = waitUntil([&] { return showsAll(); }, 5s);
    for (int i = 0; i < 5 && !isShown; ++i) {
        for (const Command& order : row.orders) desktop.parts().run(withFile(order), 5s);
        isShown = waitUntil([&] { return showsAll(); }, 5s);
    }
    EXPECT_TRUE(isShown);
    EXPECT_EQ(trackAsPlayerctlTellsIt(),
              row.known == Known::nothing ? "no player\n" : "Playing|Spring|The Larks|Seasons\n");
    std::string line;
    for (const std::string& text : texts()) line += text + " | ";
    std::printf("%s: %s\n", row.name, line.c_str());
}

/// mpv is told to hand over 48 kHz, whatever the file has; then it hands over what the file has.
class ConvertingPlayer : public SessionTest {
  protected:
    bool accuses() {
        return elementNamed(desktop.onScreen(),
                            "mpv Media Player is playing a 96.0 kHz file but hands the system 48.0 kHz.");
    }

    void play(const std::string& rate) {
        desktop.parts().spawn("player", {"mpv", "--no-terminal", "--no-video", "--ao=pulse", rate,
                                         desktop.parts().folder() + "/spring.flac"});
    }
};

TEST_F(ConvertingPlayer, IsFoundOut) {
    desktop.parts().setVariable("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    ASSERT_TRUE(makeSpring(desktop.parts()));
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
    play("--audio-samplerate=48000");
    EXPECT_TRUE(waitUntil([&] { return accuses(); }));
    desktop.parts().process("player").kill();
    play("--audio-samplerate=0");
    EXPECT_TRUE(shows("FLAC · 24-bit · 96.0 kHz"));
    EXPECT_TRUE(waitUntil([&] { return !accuses(); }));
}

INSTANTIATE_TEST_SUITE_P(Rows, PlayerTable, testing::ValuesIn(playerRows),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace purlock::test
