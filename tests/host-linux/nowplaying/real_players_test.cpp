#include "tests/host-linux/nowplaying/real_players.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/applications/desktop_applications.h"
#include "source/source_app.h"
#include "tests/host-linux/nowplaying/now_playing_session.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::ChildProcess;
using test::NowPlayingSession;

/// What playerctl says of a player, as the monitor would publish it.
struct SecondOpinion {
    std::string title;
    std::string artist;
    std::string album;
    std::string status;
    double position = 0;
};

/// Two tones with tags, a private bus, and the monitor on it.
class RealPlayers : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(
            test::makeTaggedTone(home_.path("first.flac"), "First – Ünïcode", "The Singer", "A Record"));
        ASSERT_TRUE(test::makeTaggedTone(home_.path("second.flac"), "Second", "Another", "Other Record"));
        session_ = std::make_unique<NowPlayingSession>(bus_.address());
    }

    std::vector<std::string> bothFiles() const {
        return {home_.path("first.flac"), home_.path("second.flac")};
    }

    std::string title() const { return session_->info() ? session_->info()->title.value_or("") : "nothing"; }
    bool isPlaying() const { return session_->info() && session_->info()->isPlaying; }

    bool becomes(const std::string& wantedTitle, bool playing) {
        return session_->turnUntil([&] { return title() == wantedTitle && isPlaying() == playing; });
    }

    /// VLC does not tell of a seek while it is paused; the look that a regular refresh leads to every 10 s
    /// sees it all the same.
    bool showsPosition(double seconds) {
        const auto isThere = [&] {
            return std::abs(session_->info()->elapsedSeconds.value_or(-1) - seconds) < 1;
        };
        for (int i = 0; i < 30; ++i) {
            session_->refresh();
            if (session_->turnUntil(isThere, 800ms)) return true;
        }
        return false;
    }

    SecondOpinion ask(const std::string& player) const {
        return {home_.playerctl(player, {"metadata", "xesam:title"}),
                home_.playerctl(player, {"metadata", "xesam:artist"}),
                home_.playerctl(player, {"metadata", "xesam:album"}), home_.playerctl(player, {"status"}),
                std::strtod(home_.playerctl(player, {"position"}).c_str(), nullptr)};
    }

    /// What is published now is what playerctl sees of this player, the position within what passes
    /// meanwhile.
    void expectAgreement(const std::string& player) {
        const int before = session_->publications();
        session_->refresh();
        EXPECT_TRUE(session_->turnUntil([&] {
            const auto& info = session_->info();
            return session_->publications() > before && info && info->elapsedSeconds;
        }));
        const SecondOpinion other = ask(player);
        ASSERT_TRUE(session_->info());
        const NowPlayingInfo& info = *session_->info();
        EXPECT_EQ(info.title, other.title);
        EXPECT_EQ(info.artist, other.artist);
        EXPECT_EQ(info.album, other.album);
        EXPECT_EQ(info.isPlaying, other.status == "Playing") << other.status;
        ASSERT_TRUE(info.elapsedSeconds);
        const double tolerance =
            info.isPlaying ? 3.0 : 0.01;  // seconds; playerctl is started five times meanwhile
        EXPECT_NEAR(*info.elapsedSeconds, other.position, tolerance);
        EXPECT_NEAR(info.durationSeconds.value_or(0), 60.0, 0.01);
    }

    void control(const std::string& player, const std::vector<std::string>& command) {
        home_.playerctl(player, command);
    }

    /// Play, pause, seek, next track and quit of one real player.
    void followFromStartToEnd(const std::string& name, ChildProcess player) {
        session_->applications.setRunning({{player.pid(), "com.example." + name, name}});
        ASSERT_TRUE(becomes("First – Ünïcode", true)) << title();
        EXPECT_TRUE(
            session_->turnUntil([&] { return session_->info()->appBundleID == "com.example." + name; }));
        expectAgreement(name);

        control(name, {"pause"});
        EXPECT_TRUE(becomes("First – Ünïcode", false));
        expectAgreement(name);

        control(name, {"position", "42"});
        EXPECT_TRUE(showsPosition(42));
        expectAgreement(name);

        control(name, {"play"});
        EXPECT_TRUE(becomes("First – Ünïcode", true));
        control(name, {"next"});
        EXPECT_TRUE(becomes("Second", true));
        expectAgreement(name);

        player.signal(SIGTERM);
        EXPECT_TRUE(player.waitForExit(10s));
        EXPECT_TRUE(session_->turnUntil([&] { return !session_->info(); }));
    }

    test::PrivateBus bus_;
    test::PlayerHome home_{bus_};
    std::unique_ptr<NowPlayingSession> session_;
};

TEST_F(RealPlayers, MpvFromStartToEnd) {
    followFromStartToEnd("mpv", home_.startMpv(bothFiles()));
}

TEST_F(RealPlayers, VlcFromStartToEnd) {
    followFromStartToEnd("vlc", home_.startVlc(bothFiles()));
}

TEST_F(RealPlayers, BothAtOnce) {
    const ChildProcess mpv = home_.startMpv({home_.path("first.flac")});
    ASSERT_TRUE(becomes("First – Ünïcode", true));
    ChildProcess vlc = home_.startVlc({home_.path("second.flac")});
    session_->applications.setRunning(
        {{mpv.pid(), "com.example.mpv", "mpv"}, {vlc.pid(), "com.example.vlc", "VLC"}});
    ASSERT_TRUE(becomes("Second", true));  // it started last
    expectAgreement("vlc");
    EXPECT_EQ(session_->info()->appBundleID, "com.example.vlc");

    control("vlc", {"pause"});
    EXPECT_TRUE(becomes("First – Ünïcode", true));  // it still plays
    expectAgreement("mpv");
    EXPECT_EQ(session_->info()->appBundleID, "com.example.mpv");

    control("mpv", {"pause"});
    EXPECT_TRUE(becomes("First – Ünïcode", false));  // it changed last
    control("vlc", {"play"});
    EXPECT_TRUE(becomes("Second", true));
    vlc.kill();
    EXPECT_TRUE(becomes("First – Ünïcode", false));
}

/// A player under the name of a service's desktop file is that service's application to the rest of the
/// program.
TEST_F(RealPlayers, AServicesLinuxApplicationIsRecognised) {
    const std::string program = home_.path("spotify");
    std::filesystem::copy_file("/usr/bin/mpv", program);
    std::filesystem::create_directories(home_.path("data/applications"));
    std::ofstream(home_.path("data/applications/spotify.desktop"))
        << "[Desktop Entry]\nType=Application\nName=Spotify\nExec=" << program << " %U\n";
    WorkerPool pool(1);
    DesktopApplications desktop(pool.makeSerialQueue("desktop"), {"/proc", {home_.path("data")}, "C"});
    NowPlayingSession session(bus_.address(), &desktop);
    const ChildProcess player({program, "--no-terminal", "--ao=null", "--vo=null", home_.path("first.flac")},
                              home_.environment());
    ASSERT_TRUE(session.turnUntil([&] { return session.info() && session.info()->isPlaying; }));
    EXPECT_TRUE(session.turnUntil([&] {
        session.refresh();
        session.turnFor(100ms);
        return session.info()->appBundleID.has_value();
    }));
    EXPECT_EQ(session.info()->appBundleID, "com.spotify.client");
    EXPECT_EQ(session.info()->appName, "Spotify");
    EXPECT_EQ(sourceAppFromBundleID(session.info()->appBundleID), SourceApp::spotify);
}

TEST_F(RealPlayers, PlayerctlsDaemonIsPassedOver) {
    const ChildProcess mpv = home_.startMpv({home_.path("first.flac")});
    ASSERT_TRUE(becomes("First – Ünïcode", true));
    session_->applications.setRunning({{mpv.pid(), "com.example.mpv", "mpv"}});
    const ChildProcess daemon({"playerctld"}, home_.environment());
    EXPECT_TRUE(test::waitUntil([&] { return home_.playerctl("playerctld", {"status"}) == "Playing"; }));
    control("playerctld", {"pause"});  // reaches mpv, and both tell of it
    EXPECT_TRUE(becomes("First – Ünïcode", false));
    session_->turnFor(300ms);
    EXPECT_EQ(session_->info()->appBundleID, "com.example.mpv");
}

}  // namespace
}  // namespace purlock::host_linux
