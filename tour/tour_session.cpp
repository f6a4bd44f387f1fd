#include "tour/tour_session.h"

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/temporary_folder.h"

namespace purlock::tour {

namespace {

constexpr const char* trayConfiguration =
    "panel_items = TSC\n"
    "panel_position = top center horizontal\n"
    "panel_size = 100% 30\n"
    "panel_background_id = 1\n"
    "rounded = 0\n"
    "background_color = #26282c 100\n"
    "systray_padding = 8 3 8\n"
    "systray_icon_size = 22\n"
    "time1_format = %H:%M\n"
    "clock_font_color = #dddddd 100\n";

}  // namespace

bool TourSession::fail(const std::string& problem) {
    problem_ = problem + " did not start";
    return false;
}

bool TourSession::start() {
    if (!session_.startBus()) return fail("The message bus (dbus-daemon)");
    session_.setVariable("GSETTINGS_BACKEND", "memory");  // the session has no settings service
    session_.spawn("accessibility", {"/usr/libexec/at-spi-bus-launcher"});
    if (!session_.startAudio()) return fail("The audio server (pipewire, wireplumber)");
    return startDevices() && makeMusic() && startDesktop();
}

bool TourSession::startDevices() {
    if (!session_.startTunnelSink(desk, "S32LE", 48000, 2, "Desk DAC")) return fail("An output device");
    if (!session_.startTunnelSink(hall, "S16LE", 44100, 2, "Hall Amplifier")) return fail("An output device");
    return setDefaultDevice(desk);
}

bool TourSession::makeMusic() {
    music_ = session_.folder() + "/evening-tide.flac";
    const test::Command make{"sox",
                             "-n",
                             "-r",
                             "48000",
                             "-b",
                             "24",
                             "-c",
                             "2",
                             "--comment",
                             "",
                             "--add-comment",
                             "TITLE=Evening Tide",
                             "--add-comment",
                             "ARTIST=Mara Lind",
                             "--add-comment",
                             "ALBUM=Harbour Lights",
                             music_,
                             "synth",
                             "300",
                             "sine",
                             "220",
                             "sine",
                             "277",
                             "gain",
                             "-12"};
    if (session_.run(make, std::chrono::seconds(30)).exitStatus != 0) {
        problem_ = "The sound file could not be made (sox)";
        return false;
    }
    return true;
}

bool TourSession::startDesktop() {
    display_.emplace("1100x680x24");
    session_.setVariable("DISPLAY", display_->name());
    session_.spawn("window-manager", {"openbox", "--sm-disable"});
    const std::string configuration = session_.folder() + "/tint2rc";
    std::ofstream(configuration) << trayConfiguration;
    session_.spawn("tray", {"tint2", "-c", configuration});
    return true;
}

void TourSession::startPlayer() {
    session_.spawn("player",
                   {"mpv", "--no-video", "--no-terminal", "--ao=pipewire", "--loop-file=inf", music_});
}

void TourSession::stopPlayer() {
    session_.process("player").kill();
}

void TourSession::startPurlock() {
    session_.spawn("purlock", {PURLOCK_PROGRAM});
}

bool TourSession::awaitIcon(std::chrono::milliseconds time) const {
    const std::string log = session_.folder() + "/log-tray";
    return test::waitUntil([&log] { return test::contentsOf(log).find("add_icon") != std::string::npos; },
                           time);
}

void TourSession::startPurlockAgain() {
    session_.run({PURLOCK_PROGRAM});
}

void TourSession::press(const test::Command& keys) {
    test::Command command{"xdotool", "key", "--delay", "120"};
    command.insert(command.end(), keys.begin(), keys.end());
    session_.run(command);
}

std::string TourSession::verdict() const {
    const auto json = nlohmann::json::parse(test::contentsOf(filesOfPurlock() / "state.json"), nullptr,
                                            /*allow_exceptions=*/false);
    return json.is_object() ? json.value("/verdict/kind"_json_pointer, "") : "";
}

}  // namespace purlock::tour
