// How soon Purlock answers in a whole desktop, and what it costs there:
//
//     build/release/bin/desktop_latency [seconds for each cost]
//
// A private session of real parts: buses, PipeWire with its session manager, two devices, a player, an X
// server with a window manager and a tray. Times end when the pixels are on the screen, or the file in its
// folder.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/process_cost.h"
#include "bench/screen_probe.h"
#include "tests/host-linux/session/desktop_session.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

using Clock = std::chrono::steady_clock;
using Accessibility = test::DesktopSession::Accessibility;
using test::ScreenArea;
using test::waitUntil;

constexpr int rounds = 15;
constexpr std::chrono::seconds longest{5};

double since(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

void pause(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

void printTimes(const char* what, std::vector<double> times) {
    if (times.empty()) return static_cast<void>(std::printf("%-44s nothing measured\n", what));
    std::sort(times.begin(), times.end());
    std::printf("%-44s %8.1f median %8.1f best %8.1f worst  (ms, %zu times)\n", what, times[times.size() / 2],
                times.front(), times.back(), times.size());
}

/// A pixel of the screen and what it looks like.
struct Pixel {
    int x = 0;
    int y = 0;
    std::uint32_t color = 0;

    bool isThere(bench::ScreenProbe& probe) const { return probe.color(x, y) == color; }
};

/// Milliseconds until the condition holds, looked at as often as possible.
template <typename Condition>
std::optional<double> timeOf(Clock::time_point begin, Condition condition) {
    while (!condition()) {
        if (Clock::now() - begin > longest) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return since(begin);
}

class Measurement {
  public:
    bool start() {
        if (!desktop_.start(Accessibility::off) || !desktop_.startTray() || !desktop_.startPlayer(48000)) {
            return false;
        }
        desktop_.startProgram();
        return waitUntil([&] { return test::trayIconOnScreen().has_value(); }) &&
               waitUntil([&] { return verdictIs("bitPerfect"); }) && findPixels();
    }

    void measureMemory() {
        std::printf("%-44s %8s %8s  (KiB)\n", "", "RSS", "own");
        restartProgram();
        printMemory("hidden, before the first opening");
        toggle();
        printMemory("open");
        toggle();
        printMemory("hidden again");
    }

    void measureOpening() {
        restartProgram();
        std::vector<double> first = {openOnce().value_or(-1)};
        toggle();
        std::vector<double> times;
        for (int round = 0; round < rounds; ++round) {
            pause(std::chrono::milliseconds(300));
            if (const auto time = openOnce()) times.push_back(*time);
            toggle();
        }
        printTimes("click to painted panel, the first time", first);
        printTimes("click to painted panel", times);
    }

    /// Times begin when another client of the server sees the new default device.
    void measureSwitches() {
        toggle();
        desktop_.parts().spawn("monitor", {"stdbuf", "-oL", "pw-metadata", "-m", "0", "default.audio.sink"});
        std::vector<double> files;
        std::vector<double> panels;
        for (int round = 0; round < 2 * rounds; ++round) {
            pause(std::chrono::milliseconds(500 + 37 * round));  // at any point between two ticks
            switchOnce(round % 2 == 0, files, panels);
        }
        toggle();
        printTimes("another default device to state.json", files);
        printTimes("another default device to the panel", panels);
    }

    void measureCosts(int seconds) {
        std::printf("%-44s %8s %8s  (playing, over %d s)\n", "", "cpu ms/s", "wakes/s", seconds);
        restartProgram();
        printCost("hidden, before the first opening", seconds);
        toggle();
        printCost("open", seconds);
        toggle();
        printCost("hidden again", seconds);
    }

    std::string logs() { return desktop_.parts().logs(); }

  private:
    bool verdictIs(const char* kind) {
        const std::string text = test::contentsOf(stateFile());
        return text.find("\"kind\" : \"" + std::string(kind) + "\"") != std::string::npos;
    }
    std::string stateFile() { return desktop_.parts().folder() + "/data/Purlock/state.json"; }

    void restartProgram() {
        desktop_.program().kill();
        desktop_.startProgram();
        waitUntil([&] { return test::trayIconOnScreen().has_value(); });
        pause(std::chrono::seconds(2));
    }

    void aim() { desktop_.pointAt(test::trayIconOnScreen().value_or(ScreenArea{})); }

    /// Away from the icon, whose tip takes memory of its own.
    void leave() { desktop_.pointAt({1200, 1000, 0, 0}); }

    void toggle() {
        const bool wasOpen = test::panelOnScreen().has_value();
        aim();
        probe_->click();
        waitUntil([&] { return test::panelOnScreen().has_value() != wasOpen; });
        leave();
    }

    /// Learns where the open panel differs from the bare screen at its top and its bottom, and where it is
    /// green for one verdict and amber for the other.
    bool findPixels() {
        probe_.emplace();
        restartProgram();
        toggle();
        pause(std::chrono::seconds(1));
        const auto panel = test::panelOnScreen();
        if (!panel || !verdictIs("bitPerfect")) return false;
        const auto perfect = probe_->colors(*panel);
        desktop_.parts().setDefaultSink("hall");
        if (!waitUntil([&] { return verdictIs("resampling"); })) return false;
        pause(std::chrono::seconds(1));
        const auto resampling = probe_->colors(*panel);
        desktop_.parts().setDefaultSink("desk");
        if (!waitUntil([&] { return verdictIs("bitPerfect"); })) return false;
        toggle();
        pause(std::chrono::milliseconds(300));
        const auto bare = probe_->colors(*panel);
        for (std::size_t i = 0; i < perfect.size(); ++i) {
            const Pixel here{panel->x + static_cast<int>(i) % panel->width,
                             panel->y + static_cast<int>(i) / panel->width, perfect[i]};
            if (perfect[i] == white && bare[i] != white && top_.color == 0) top_ = here;
            if (perfect[i] != bare[i] && perfect[i] == resampling[i]) bottom_ = here;
            if (perfect[i] == green && resampling[i] == amber) verdict_ = here;
        }
        return top_.color != 0 && bottom_.color != 0 && verdict_.color != 0;
    }

    std::optional<double> openOnce() {
        aim();
        const auto begin = Clock::now();
        probe_->click();
        const auto time = timeOf(begin, [&] { return top_.isThere(*probe_) && bottom_.isThere(*probe_); });
        leave();
        return time;
    }

    void switchOnce(bool toHall, std::vector<double>& files, std::vector<double>& panels) {
        const std::string monitor = desktop_.parts().folder() + "/log-monitor";
        const auto linesBefore = std::filesystem::file_size(monitor);
        const char* verdict = toHall ? "resampling" : "bitPerfect";
        const std::uint32_t color = toHall ? amber : green;
        std::thread switching([&] { desktop_.parts().setDefaultSink(toHall ? "hall" : "desk"); });
        const auto begin = Clock::now();
        std::optional<double> seen;
        std::optional<double> file;
        std::optional<double> panel;
        timeOf(begin, [&] {
            if (!seen && std::filesystem::file_size(monitor) > linesBefore) seen = since(begin);
            if (!file && verdictIs(verdict)) file = since(begin);
            if (!panel && probe_->color(verdict_.x, verdict_.y) == color) panel = since(begin);
            return seen && file && panel;
        });
        switching.join();
        if (!seen || !file || !panel) return;
        files.push_back(*file - *seen);
        panels.push_back(*panel - *seen);
    }

    void printMemory(const char* what) {
        pause(std::chrono::seconds(4));
        const auto memory = bench::memoryOf(desktop_.program().pid()).value_or(bench::ProcessMemory{});
        std::printf("%-44s %8ld %8ld\n", what, memory.resident, memory.anonymous);
    }

    /// The mean second of many. One in which a thread ended is left out: what that had used went with it.
    void printCost(const char* what, int seconds) {
        pause(std::chrono::seconds(4));
        const pid_t pid = desktop_.program().pid();
        double processor = 0;
        double wakeUps = 0;
        double passed = 0;
        auto before = bench::useOf(pid);
        for (int second = 0; second < seconds; ++second) {
            const auto begin = Clock::now();
            pause(std::chrono::seconds(1));
            const auto after = bench::useOf(pid);
            if (!before || !after) return static_cast<void>(std::printf("%-44s ended meanwhile\n", what));
            if (after->threads >= before->threads) {
                processor += after->processorMilliseconds - before->processorMilliseconds;
                wakeUps += static_cast<double>(after->wakeUps - before->wakeUps);
                passed += since(begin) / 1000;
            }
            before = after;
        }
        std::printf("%-44s %8.2f %8.1f\n", what, processor / passed, wakeUps / passed);
    }

    static constexpr std::uint32_t white = 0xFFFFFF;
    static constexpr std::uint32_t green = 0x4DC773;
    static constexpr std::uint32_t amber = 0xF2BF33;

    test::DesktopSession desktop_;
    std::optional<bench::ScreenProbe> probe_;  // once there is a screen
    Pixel top_;
    Pixel bottom_;
    Pixel verdict_;
};

int run(int seconds) {
    Measurement measurement;
    if (!measurement.start()) {
        std::fprintf(stderr, "the private session did not start\n%s\n", measurement.logs().c_str());
        return EXIT_FAILURE;
    }
    measurement.measureOpening();
    measurement.measureSwitches();
    measurement.measureMemory();
    measurement.measureCosts(seconds);
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    int seconds = 60;
    if (argc > 1) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), seconds);
    return purlock::run(std::max(seconds, 1));
}
