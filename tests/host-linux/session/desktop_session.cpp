#include "tests/host-linux/session/desktop_session.h"

namespace purlock::test {

namespace {

// A bar as most have it, without a clock that changes by itself.
constexpr const char* tint2Configuration =
    "panel_items = S\n"
    "panel_size = 60 30\n"
    "panel_position = top center horizontal\n"
    "systray_padding = 4 4 4\n"
    "systray_icon_size = 22\n";

}  // namespace

bool DesktopSession::start(Accessibility accessibility) {
    parts_.setVariable("GSETTINGS_BACKEND", "memory");
    if (!parts_.startAudio() || !startDevices() || !startScreen()) return false;
    if (accessibility != Accessibility::off) startAccessibilityService();
    return accessibility != Accessibility::on || switchAccessibilityOn();
}

bool DesktopSession::startScreen() {
    display_.emplace("1280x1024x24");
    parts_.setVariable("DISPLAY", display_->name());
    parts_.spawn("openbox", {"openbox", "--sm-disable"});
    return waitUntil([] { return windowManagerIsThere(); });
}

bool DesktopSession::letFocusFollowPointer() {
    killWindowManager();
    const std::string file = parts_.folder() + "/openbox.xml";
    writeFile(file,
              "<openbox_config xmlns=\"http://openbox.org/3.4/rc\"><focus><followMouse>yes</followMouse>"
              "</focus></openbox_config>\n");
    if (!waitUntil([] { return !windowManagerIsThere(); })) return false;
    parts_.spawn("openbox", {"openbox", "--sm-disable", "--config-file", file});
    return waitUntil([] { return windowManagerIsThere(); });
}

bool DesktopSession::switchToWorkspace(int number) {
    const std::string wanted = std::to_string(number);
    return parts_.run({"xdotool", "set_desktop", wanted}).exitStatus == 0 && waitUntil([&] {
               return parts_.run({"xdotool", "get_desktop"}).output == wanted + "\n";
           });
}

void DesktopSession::startAccessibilityService() {
    accessibility_ =
        ChildProcess({"/usr/libexec/at-spi-bus-launcher"}, parts_.environment(),
                     {.log = parts_.folder() + "/log-accessibility", .group = ChildOptions::Group::own});
}

bool DesktopSession::switchAccessibilityOn() {
    return waitUntil([this] { return reader_.connect(); });
}

bool DesktopSession::startDevices() {
    return parts_.loadNullSink("desk", 48000, "device.description=Desk") &&
           parts_.startTunnelSink("hall", "S16LE", 44100) && parts_.setDefaultSink("desk");
}

bool DesktopSession::startTray() {
    writeFile(parts_.folder() + "/tint2rc", tint2Configuration);
    parts_.spawn("tint2", {"tint2", "-c", parts_.folder() + "/tint2rc"});
    return parts_.process("tint2").isRunning();
}

ChildProcess& DesktopSession::startProgram() {
    return parts_.spawn("purlock", {PURLOCK_PROGRAM});
}

bool DesktopSession::startPlayer(int rate) {
    const std::string file = parts_.folder() + "/tone-" + std::to_string(rate) + ".flac";
    const auto made = parts_.run({"sox", "-n", "-r", std::to_string(rate), "-c", "2", "--add-comment",
                                  "TITLE=Spring", "--add-comment", "ARTIST=The Larks", "--add-comment",
                                  "ALBUM=Seasons", file, "synth", "60", "sine", "440", "vol", "0.1"});
    if (made.exitStatus != 0) return false;
    parts_.spawn("player", {"mpv", "--no-terminal", "--no-video", "--ao=pulse", "--loop-file=inf", file});
    return true;
}

bool DesktopSession::playerctl(const std::string& command) {
    return waitUntil([&] { return parts_.run({"playerctl", command}).exitStatus == 0; });
}

bool DesktopSession::pointAt(const ScreenArea& area) {
    return parts_
               .run({"xdotool", "mousemove", std::to_string(area.centerX()), std::to_string(area.centerY())})
               .exitStatus == 0;
}

bool DesktopSession::click(const ScreenArea& area, const std::string& button) {
    return pointAt(area) && parts_.run({"xdotool", "click", button}).exitStatus == 0;
}

bool DesktopSession::press(const std::string& key) {
    return parts_.run({"xdotool", "key", key}).exitStatus == 0;
}

bool DesktopSession::clickIcon(const std::string& button) {
    std::optional<ScreenArea> icon;
    AtRest rest;
    return waitUntil([&] { return rest.sees(icon = trayIconOnScreen()); }) && click(*icon, button);
}

Accessible DesktopSession::onScreen() {
    return reader_.read(program().pid()).value_or(Accessible{});
}

}  // namespace purlock::test
