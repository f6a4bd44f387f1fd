// Measures the processor time of Purlock and of a browser while a known service plays in the browser's
// window.
//
//     build/release/bin/badge_cost [seconds] [badge, "" for none]
//
// A private session of real parts with accessibility on. The service is a page of some 4,700 elements in
// Chromium, which has a desktop file of the service's name and plays a tone; Chromium shows its tree because
// it is started with --force-renderer-accessibility. The first 30 seconds of a track are measured, then as
// many seconds as were asked for, then a pause, then the same without Purlock.
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include "bench/process_cost.h"
#include "tests/host-linux/session/desktop_session.h"
#include "tests/support/temporary_folder.h"

namespace purlock {
namespace {

constexpr const char* browser = "/usr/lib/chromium/chromium";
constexpr int rows = 780;  // Chromium makes six elements of each

std::string page(const std::string& badge) {
    std::string html =
        "<html><head><title>Player</title></head><body><h1>Songs</h1>"
        "<audio id=a autoplay loop src=tone.wav></audio><script>"
        "let track = 0; const tell = () => { navigator.mediaSession.metadata ="
        " new MediaMetadata({title: 'Song ' + ++track, artist: 'Singer'}); }; tell();"
        "navigator.mediaSession.setActionHandler('nexttrack', tell);"
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

/// In per cent of one core.
struct Use {
    double purlock = 0;
    double browser = 0;
};

double percentWithin(const std::optional<bench::ProcessUse>& from, const std::optional<bench::ProcessUse>& to,
                     int seconds) {
    if (!from || !to) return -1;
    return (to->processorMilliseconds - from->processorMilliseconds) / (10.0 * seconds);
}

/// `purlock` is 0 where it does not run.
Use useWithin(pid_t purlock, pid_t browserProcess, int seconds) {
    const auto use = [](pid_t pid) { return pid > 0 ? bench::useOf(pid) : bench::ProcessUse{}; };
    const auto purlockBefore = use(purlock);
    const auto browserBefore = use(browserProcess);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return {percentWithin(purlockBefore, use(purlock), seconds),
            percentWithin(browserBefore, use(browserProcess), seconds)};
}

void print(const char* what, const Use& use) {
    std::printf("%-40s %10.2f %10.2f\n", what, use.purlock, use.browser);
    std::fflush(stdout);
}

void measureTrack(test::DesktopSession& desktop, pid_t purlock, pid_t browserProcess, int seconds) {
    constexpr int beginning = 30;
    desktop.playerctl("next");
    print("a track's first 30 s", useWithin(purlock, browserProcess, beginning));
    print("later", useWithin(purlock, browserProcess, seconds));
}

void printNames(const test::Accessible& element) {
    if (!element.name.empty()) std::printf("    %s\n", element.name.c_str());
    for (const auto& child : element.children) printNames(child);
}

/// Says whether the panel shows the badge, and what it shows instead. The session's own reader has been
/// silent for too long: meanwhile the bus has dropped its connection under the browser's events.
void lookForBadge(test::DesktopSession& desktop, const std::string& badge) {
    test::AccessibleReader reader;
    if (!reader.connect() || !desktop.clickIcon()) {
        std::printf("the icon was not found\n");
        return;
    }
    test::Accessible panel;
    const bool isFound = test::waitUntil([&] {
        panel = reader.read(desktop.program().pid()).value_or(test::Accessible{});
        return test::elementNamed(panel, badge) != nullptr;
    });
    std::printf("the badge was %s\n", isFound ? "found" : "not found; the panel says:");
    if (!isFound) printNames(panel);
    desktop.clickIcon();
}

int run(int seconds, const std::string& badge) {
    constexpr std::chrono::seconds settling{15};
    test::DesktopSession desktop;
    if (!desktop.start()) return EXIT_FAILURE;
    prepare(desktop, badge);
    const pid_t browserProcess = startBrowser(desktop);
    std::this_thread::sleep_for(settling);
    std::printf("%-40s %10s %10s\n", "per cent of a core", "purlock", "browser");
    desktop.startTray();
    const pid_t purlock = desktop.startProgram().pid();
    std::this_thread::sleep_for(settling);
    measureTrack(desktop, purlock, browserProcess, seconds);
    if (!badge.empty()) lookForBadge(desktop, badge);
    desktop.playerctl("pause");
    std::this_thread::sleep_for(settling);
    print("paused", useWithin(purlock, browserProcess, seconds));
    desktop.playerctl("play");
    desktop.parts().process("purlock").kill();
    std::this_thread::sleep_for(settling);
    std::printf("without Purlock\n");
    measureTrack(desktop, 0, browserProcess, seconds);
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace purlock

int main(int argc, char** argv) {
    int seconds = 60;
    if (argc > 1) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), seconds);
    return purlock::run(seconds > 0 ? seconds : 60, argc > 2 ? argv[2] : "Very High");
}
