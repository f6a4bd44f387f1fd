// From the start of the program to its icon on the screen, and what it holds in memory with its panel hidden,
// beside well-known programs that show an icon in the same tray (those of them that are installed):
//
//     build/release/bin/tray_start [rounds]
//
// A private session of real parts: D-Bus, PipeWire with its PulseAudio server, WirePlumber, a sink, an X
// server and a bare system tray. The icon counts as shown when a pixel of it is on the screen.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/process_cost.h"
#include "tests/host-linux/tray/test_tray.h"
#include "tests/support/private_session.h"
#include "tests/support/virtual_display.h"

namespace purlock {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds longestStart{10};
constexpr std::chrono::seconds settling{4};  // until memory is read

struct Start {
    Milliseconds icon{0};
    bench::ProcessMemory memory;
};

bool iconIsVisible() {
    const auto colors = test::screenColors(103, 3, 24, 24);
    return std::any_of(colors.begin(), colors.end(),
                       [](std::uint32_t color) { return color != test::TestTray::background; });
}

/// Absent when no icon comes in time.
std::optional<Start> start(test::PrivateSession& session, const std::string& program, bool measureMemory) {
    test::TestTray tray({});
    const auto begin = Clock::now();
    test::ChildProcess& process = session.spawn("program", {program});
    while (tray.iconCount() == 0 || !iconIsVisible()) {
        tray.serve();
        if (Clock::now() - begin > longestStart || !process.isRunning()) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    Start result{Clock::now() - begin, {}};
    if (measureMemory) {
        const auto end = Clock::now() + settling;
        while (Clock::now() < end) {
            tray.serve();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        result.memory = bench::memoryOf(process.pid()).value_or(bench::ProcessMemory{});
    }
    process.signal(SIGTERM);
    if (!process.waitForExit(std::chrono::seconds(2))) process.kill();
    return result;
}

void measure(test::PrivateSession& session, const std::string& program, int rounds) {
    const std::string name = std::filesystem::path(program).filename();
    std::vector<double> icons;
    bench::ProcessMemory memory;
    for (int round = 0; round < rounds; ++round) {
        const auto result = start(session, program, round == 0);
        if (!result) return static_cast<void>(std::printf("%-12s shows no icon\n", name.c_str()));
        icons.push_back(result->icon.count());
        if (round == 0) memory = result->memory;
    }
    std::sort(icons.begin(), icons.end());
    std::printf("%-12s %12.1f %12.1f %12ld %12ld\n", name.c_str(), icons[icons.size() / 2], icons.front(),
                memory.resident, memory.anonymous);
}

int run(int rounds) {
    test::PrivateSession session;
    if (!session.startAudio() || !session.loadNullSink("desk", 48000)) {
        std::fprintf(stderr, "the private session did not start\n%s\n", session.logs().c_str());
        return EXIT_FAILURE;
    }
    const test::VirtualDisplay display;
    session.setVariable("DISPLAY", display.name());
    std::printf("%-12s %12s %12s %12s %12s\n", "", "icon ms", "best ms", "RSS KiB", "own KiB");
    measure(session, PURLOCK_PROGRAM, rounds);
    for (const char* other : {"volumeicon", "pasystray", "parcellite", "clipit"}) {
        const std::filesystem::path program = std::filesystem::path("/usr/bin") / other;
        if (std::filesystem::exists(program)) measure(session, program, rounds);
    }
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    int rounds = 10;
    if (argc > 1) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), rounds);
    return purlock::run(std::max(rounds, 1));
}
