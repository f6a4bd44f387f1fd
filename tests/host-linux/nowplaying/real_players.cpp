#include "tests/host-linux/nowplaying/real_players.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string_view>

namespace purlock::test {

namespace {

constexpr std::string_view vlcBinary = "/usr/bin/vlc";

/// VLC will not run as root, as in a container; for the test it may. It finds out by geteuid(), so a copy of
/// the program gets to call getppid(), whose name is as long, in its place.
void copyVlcForRoot(const std::string& path) {
    std::ifstream in(std::string(vlcBinary), std::ios::binary);
    std::string program(std::istreambuf_iterator<char>(in), {});
    constexpr std::string_view asked = "geteuid";
    for (auto at = program.find(asked); at != program.npos; at = program.find(asked, at)) {
        program.replace(at, asked.size(), "getppid");
    }
    std::ofstream(path, std::ios::binary) << program;
    chmod(path.c_str(), 0700);
}

/// Runs a program to its end; what it printed goes to `output`.
bool run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
         const std::string& output) {
    std::vector<std::string> command = {"/bin/sh", "-c", "out=$1; shift; exec \"$@\" >\"$out\" 2>/dev/null",
                                        "sh", output};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess child(command, environment);
    return waitUntil([&] { return !child.isRunning(); });
}

}  // namespace

bool makeTaggedTone(const std::string& path, const std::string& title, const std::string& artist,
                    const std::string& album) {
    const std::vector<std::string> sox = {"sox",
                                          "-n",
                                          "-r",
                                          "44100",
                                          "-c",
                                          "2",
                                          "--add-comment",
                                          "TITLE=" + title,
                                          "--add-comment",
                                          "ARTIST=" + artist,
                                          "--add-comment",
                                          "ALBUM=" + album,
                                          path,
                                          "synth",
                                          "60",
                                          "sine",
                                          "440",
                                          "vol",
                                          "0.1"};
    return run(sox, {"PATH=/usr/bin:/bin"}, "/dev/null") && std::filesystem::exists(path);
}

PlayerHome::PlayerHome(const PrivateBus& bus)
    : environment_{"PATH=/usr/bin:/bin", "HOME=" + folder_.path().string(),
                   "XDG_RUNTIME_DIR=" + folder_.path().string(), "LC_ALL=C.UTF-8",
                   "DBUS_SESSION_BUS_ADDRESS=" + bus.address()} {}

ChildProcess PlayerHome::startMpv(const std::vector<std::string>& files) const {
    std::vector<std::string> arguments = {"mpv", "--no-terminal", "--ao=null", "--vo=null", "--no-video"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    return ChildProcess(arguments, environment_);
}

ChildProcess PlayerHome::startVlc(const std::vector<std::string>& files) const {
    const std::string program = getuid() == 0 ? path("vlc") : std::string(vlcBinary);
    if (getuid() == 0) copyVlcForRoot(program);
    std::vector<std::string> arguments = {program,  "--intf", "dummy",     "--quiet", "--no-video",
                                          "--aout", "dummy",  "--control", "dbus"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    return ChildProcess(arguments, environment_);
}

std::string PlayerHome::playerctl(const std::string& player,
                                  const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {"playerctl", "-p", player};
    command.insert(command.end(), arguments.begin(), arguments.end());
    if (!run(command, environment_, path("playerctl.out"))) return "playerctl hangs";
    std::ifstream in(path("playerctl.out"));
    std::string line;
    std::getline(in, line);
    return line;
}

}  // namespace purlock::test
