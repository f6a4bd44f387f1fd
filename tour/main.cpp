// purlock_tour <folder>: Purlock in a private session of real parts, through a bit-perfect stream, a device
// of another rate, silence and a pinned device. What it prints is read from the running program's panel, as a
// screen reader reads it; the pictures are of the session's screen; the two files are the program's own.

#include <signal.h>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/wait_until.h"
#include "tour/panel_reader.h"
#include "tour/tour_session.h"

namespace {

namespace fs = std::filesystem;
using namespace purlock;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

constexpr auto longestStep = 20s;

class Tour {
  public:
    Tour(tour::TourSession& session, fs::path folder) : session_(session), folder_(std::move(folder)) {}

    bool run() {
        if (!reader_.enable()) return stop("accessibility was not switched on");
        session_.startPurlock();
        session_.startPlayer();
        if (!test::waitUntil([this] { return session_.verdict() == "bitPerfect"; }, longestStep)) {
            return stop("the stream was not recognised");
        }
        if (!session_.awaitIcon(longestStep)) return stop("the icon did not come to the tray");
        session_.startPurlockAgain();  // opens the panel
        return show("1-bit-perfect", "A 48 kHz file plays on a 48 kHz device", "bitPerfect", "Bit-perfect") &&
               switchDevice() && silence() && pinDevice() && quit();
    }

  private:
    bool switchDevice() {
        session_.setDefaultDevice(tour::TourSession::hall);
        return show("2-resampling", "The default device is now one that runs at 44.1 kHz and 16 bits",
                    "resampling", "Resampling");
    }

    bool silence() {
        session_.stopPlayer();
        return show("3-idle", "The player has quit", "idle", "Idle");
    }

    /// With the keyboard: the Tab key twice leads to the menu, and the Down key twice to its first device.
    bool pinDevice() {
        session_.press({"Tab", "Tab", "Return", "Down", "Down", "Return"});
        return show("4-pinned", "A device is chosen in the panel's menu", "idle", "📌");
    }

    bool quit() {
        std::printf("Purlock ends: ");
        session_.purlock().signal(SIGTERM);
        const auto status = session_.purlock().waitForExit(5s);
        std::printf("%s\n", status == 0 ? "cleanly." : "not in time.");
        return status == 0;
    }

    /// Waits until the snapshot and the panel say so, then prints the panel and takes a picture.
    bool show(const char* picture, const char* what, const std::string& verdict, const std::string& word) {
        Lines panel;
        const bool seen = test::waitUntil(
            [&] {
                panel = reader_.lines(session_.purlock().pid());
                QCoreApplication::processEvents();
                return session_.verdict() == verdict && contains(panel, word) && contains(panel, "Source");
            },
            longestStep);
        if (!seen) {
            for (const std::string& line : panel) std::printf("    %s\n", line.c_str());
            return stop(std::string("the panel never said ") + word);
        }
        std::printf("\n%s.\n\n", what);
        for (const std::string& line : panel) std::printf("    %s\n", line.c_str());
        takePicture(picture);
        keepFiles();
        return true;
    }

    static bool contains(const Lines& lines, const std::string& words) {
        return std::ranges::any_of(
            lines, [&words](const std::string& line) { return line.find(words) != std::string::npos; });
    }

    void takePicture(const std::string& name) const {
        const fs::path file = folder_ / (name + ".png");
        QGuiApplication::primaryScreen()->grabWindow(0).save(QString::fromStdString(file.string()));
    }

    void keepFiles() const {
        std::error_code ignored;
        for (const char* name : {"state.json", "log.jsonl"}) {
            fs::copy_file(session_.filesOfPurlock() / name, folder_ / name,
                          fs::copy_options::overwrite_existing, ignored);
        }
    }

    bool stop(const std::string& why) const {
        std::fprintf(stderr, "The tour stops here: %s.\n%s\n", why.c_str(), session_.logs().c_str());
        takePicture("stopped-here");
        return false;
    }

    tour::TourSession& session_;
    const fs::path folder_;
    tour::PanelReader reader_;
};

/// What an earlier tour left there, and nothing else.
void removeOldFiles(const fs::path& folder) {
    std::error_code ignored;
    for (const char* name : {"1-bit-perfect.png", "2-resampling.png", "3-idle.png", "4-pinned.png",
                             "stopped-here.png", "state.json", "log.jsonl"}) {
        fs::remove(folder / name, ignored);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: purlock_tour <folder>\n", stderr);
        return EXIT_FAILURE;
    }
    const fs::path folder = fs::absolute(argv[1]);
    fs::create_directories(folder);
    removeOldFiles(folder);
    tour::TourSession session;
    std::puts("Starting a private session: bus, audio server, two output devices, screen, tray, player ...");
    if (!session.start()) {
        std::fprintf(stderr, "%s.\n%s\n", session.problem().c_str(), session.logs().c_str());
        return EXIT_FAILURE;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QGuiApplication application(argc, argv);
    const bool done = Tour(session, folder).run();
    std::printf("\nState, log and pictures of the screen are in %s\n", folder.c_str());
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
