// What it costs that a known service's window is open while it plays: Purlock and the browser that shows the
// service, over the same time.
//
//     build/release/bin/badge_cost [seconds] [badge, "" for none]
//
// A private session of real parts with accessibility on. The service is a page of some 4,700 elements in
// Chromium, which has a desktop file of the service's name and plays a tone; Chromium shows its tree because
// it is started with --force-renderer-accessibility.
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include "bench/process_cost.h"
#include "tests/host-linux/session/desktop_session.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

constexpr const char* browser = "/usr/lib/chromium/chromium";
constexpr int rows = 780;  // of six elements each, as Chromium counts them

std::string page(const std::string& badge) {
    std::string html =
        "<html><head><title>Player</title></head><body><h1>Songs</h1>"
        "<audio id=a autoplay loop src=tone.wav></audio><script>"
        "navigator.mediaSession.metadata = new MediaMetadata({title: 'Song', artist: 'Singer'});"
        "</script><table>";
    for (int i = 0; i < rows; ++i) {
        const std::string number = std::to_string(i);
        html += "<tr><td>" + number + "</td><td><a href=#>Track " + number + "</a></td></tr>";
    }
    return html + "</table><p>" + badge + "</p></body></html>";
}

void prepare(test::DesktopSession& desktop, const std::string& badge) {
    const std::string folder = desktop.parts().folder();
    test::writeFile(folder + "/page.html", page(badge));
    desktop.parts().run({"cp", desktop.parts().toneFile(48000), folder + "/tone.wav"});
    test::writeFile(folder + "/data/applications/spotify.desktop",
                    "[Desktop Entry]\nType=Application\nName=Spotify\nExec=" + std::string(browser) + "\n");
}

pid_t startBrowser(test::DesktopSession& desktop) {
    const std::string folder = desktop.parts().folder();
    return desktop.parts()
        .spawn("browser", {browser, "--no-sandbox", "--no-first-run", "--disable-gpu", "--disable-sync",
                           "--autoplay-policy=no-user-gesture-required", "--force-renderer-accessibility",
                           "--user-data-dir=" + folder + "/browser", "file://" + folder + "/page.html"})
        .pid();
}

struct Use {
    double purlock = 0;
    double browser = 0;
};

/// In per cent of one core.
Use useWithin(pid_t purlock, pid_t browserProcess, int seconds) {
    const auto purlockBefore = bench::useOf(purlock);
    const auto browserBefore = bench::useOf(browserProcess);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto purlockAfter = bench::useOf(purlock);
    const auto browserAfter = bench::useOf(browserProcess);
    if (!purlockBefore || !browserBefore || !purlockAfter || !browserAfter) return {-1, -1};
    const auto percent = [&](const bench::ProcessUse& from, const bench::ProcessUse& to) {
        return (to.processorMilliseconds - from.processorMilliseconds) / (10.0 * seconds);
    };
    return {percent(*purlockBefore, *purlockAfter), percent(*browserBefore, *browserAfter)};
}

void print(const char* what, const Use& use) {
    std::printf("%-40s %10.2f %10.2f\n", what, use.purlock, use.browser);
    std::fflush(stdout);
}

int run(int seconds, const std::string& badge) {
    test::DesktopSession desktop;
    if (!desktop.start()) return EXIT_FAILURE;
    prepare(desktop, badge);
    const pid_t browserProcess = startBrowser(desktop);
    std::this_thread::sleep_for(std::chrono::seconds(15));
    std::printf("%-40s %10s %10s\n", "per cent of a core", "purlock", "browser");
    std::fflush(stdout);
    desktop.startTray();
    const pid_t purlock = desktop.startProgram().pid();
    std::this_thread::sleep_for(std::chrono::seconds(10));
    print("playing", useWithin(purlock, browserProcess, seconds));
    const bool isFound = desktop.clickIcon() && test::waitUntil([&] {
                             return test::elementNamed(desktop.onScreen(), badge) != nullptr;
                         });
    desktop.clickIcon();
    std::printf("the badge was %s\n", isFound ? "found" : "not found");
    desktop.playerctl("pause");
    std::this_thread::sleep_for(std::chrono::seconds(5));
    print("paused", useWithin(purlock, browserProcess, seconds));
    desktop.playerctl("play");
    desktop.parts().process("purlock").kill();
    std::this_thread::sleep_for(std::chrono::seconds(5));
    const auto before = bench::useOf(browserProcess);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto after = bench::useOf(browserProcess);
    if (before && after) {
        print("playing without Purlock",
              {0, (after->processorMilliseconds - before->processorMilliseconds) / (10.0 * seconds)});
    }
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    int seconds = 60;
    if (argc > 1) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), seconds);
    return purlock::run(seconds > 0 ? seconds : 60, argc > 2 ? argv[2] : "Very High");
}
