// What Purlock costs while music plays and nothing changes, beside what a well-known program of the same
// session costs, and beside a program that does nothing but replace the same file as often:
//
//     build/release/bin/session_cost [seconds]
//
// A private session of real parts: D-Bus, PipeWire, WirePlumber, a sink at 48 kHz and a player. All programs
// are watched over the same time.

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "bench/process_cost.h"
#include "tests/support/private_session.h"

namespace purlock {
namespace {

struct Watched {
    const char* name;
    pid_t pid;
    std::optional<bench::ProcessUse> before;
};

void print(const Watched& watched, double seconds) {
    const auto after = bench::useOf(watched.pid);
    const auto memory = bench::memoryOf(watched.pid);
    if (!watched.before || !after || !memory) {
        std::printf("%-10s ended meanwhile\n", watched.name);
        return;
    }
    std::printf("%-10s %12.2f %12.1f %12.0f %12ld %12ld\n", watched.name,
                (after->processorMilliseconds - watched.before->processorMilliseconds) / seconds,
                static_cast<double>(after->wakeUps - watched.before->wakeUps) / seconds,
                static_cast<double>(after->bytesWritten - watched.before->bytesWritten) / seconds,
                memory->resident, memory->anonymous);
}

/// True if the program has written a state in which the device runs.
bool isPlaying(const std::string& stateFile) {
    std::ifstream file(stateFile);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return text.find("\"isRunning\" : true") != std::string::npos;
}

/// The first process that `pid` has started; 0 when there is none.
pid_t childOf(pid_t pid) {
    const std::string id = std::to_string(pid);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    pid_t child = 0;
    children >> child;
    return child;
}

int fail(const test::PrivateSession& session, const char* what) {
    std::fprintf(stderr, "%s\n%s\n", what, session.logs().c_str());
    return EXIT_FAILURE;
}

int run(int seconds) {
    test::PrivateSession session;
    if (!session.startAudio()) return fail(session, "the private session did not start");
    if (!session.loadNullSink("desk", 48000)) return fail(session, "there is no sink");
    session.spawn("player", {"pw-play", "--target=desk", session.toneFile(48000, 16, seconds + 30)});
    const pid_t purlock = session.spawn("purlock", {PURLOCK_PROGRAM}).pid();
    // pw-top draws on a terminal, which script(1) gives it.
    const pid_t terminal =
        session.spawn("pw-top", {"script", "--quiet", "--command", "exec pw-top", "/dev/null"}).pid();
    const char* data = std::getenv("XDG_DATA_HOME");
    const std::string stateFile =
        (data != nullptr ? std::string(data) : session.folder()) + "/Purlock/state.json";
    if (!test::waitUntil([&] { return isPlaying(stateFile); })) return fail(session, "nothing plays");
    const std::string floorFile = session.folder() + "/floor.json";
    std::filesystem::copy_file(stateFile, floorFile);
    const pid_t floor = session.spawn("floor", {PURLOCK_FLOOR, floorFile}).pid();
    std::this_thread::sleep_for(std::chrono::seconds(3));  // until all have started

    const pid_t top = childOf(terminal);
    Watched programs[] = {{"purlock", purlock, {}}, {"floor", floor, {}}, {"pw-top", top, {}}};
    for (Watched& program : programs) program.before = bench::useOf(program.pid);
    const auto begin = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    std::printf("%-10s %12s %12s %12s %12s %12s\n", "", "cpu ms/s", "wake-ups/s", "written B/s", "RSS KiB",
                "own KiB");
    for (const Watched& program : programs) print(program, passed.count());
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    int seconds = 60;
    if (argc > 1) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), seconds);
    return purlock::run(seconds > 0 ? seconds : 60);
}
