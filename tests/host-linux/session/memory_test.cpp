#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "tests/host-linux/session/session_test.h"
#include "tests/support/sanitizers.h"

namespace purlock::test {
namespace {

using namespace std::chrono_literals;

constexpr long mostLeft = 4L * 1024;  // KiB

/// What the program holds once somebody with large messages or a large window has come and gone, while its
/// panel is open.
class MemoryLeftBehind : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        writeFile(desktop.parts().folder() + "/data/applications/spotify.desktop",
                  "[Desktop Entry]\nType=Application\nName=Spotify\nExec=" PURLOCK_LARGE_SERVICE "\n");
        desktop.parts().spawn("sound", {"pw-play", desktop.parts().toneFile(48000)});
        startInTray();
        ASSERT_NO_FATAL_FAILURE(openPanel());
        ASSERT_TRUE(clickOn("Pin (keep panel open)", "push button"));
        showWindow("100", "listed");  // so that what every track takes is taken
        desktop.parts().process("service").kill();
        ASSERT_TRUE(waitUntil([&] { return elementNamed(desktop.onScreen(), "Spring") == nullptr; }));
        before_ = settledKiB();
    }

    /// What is left after a while. A reading takes up to 3 s, and 2 s later memory goes back.
    long settledKiB() {
        std::this_thread::sleep_for(7s);
        return residentKiB();
    }

    long residentKiB() { return statusKiB("VmRSS:"); }

    long statusKiB(const std::string& field) {
        std::ifstream status("/proc/" + std::to_string(desktop.program().pid()) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(field)) return std::stol(line.substr(field.size()));
        }
        return 0;
    }

    /// The service's window with so many elements, until it was read and the track is shown.
    void showWindow(const std::string& elements, const std::string& way) {
        desktop.parts().spawn("service", {PURLOCK_LARGE_SERVICE, elements, way});
        EXPECT_TRUE(shows("Spring"));
        const std::string log = desktop.parts().folder() + "/log-service";
        EXPECT_TRUE(waitUntil([&] { return contentsOf(log).find("read") != std::string::npos; }, 30s));
    }

    void expectLittleLeft(const std::string& what) {
        const long left = settledKiB() - before_;
        const long peak = statusKiB("VmHWM:") - before_;
        std::printf("%s left %ld KiB behind, after %ld KiB at most so far\n", what.c_str(), left, peak);
        // A sanitizer's allocator keeps what was freed.
        EXPECT_TRUE(isSanitized || left < mostLeft) << what;
    }

    long before_ = 0;
};

TEST_F(MemoryLeftBehind, ByLargeWindowsIsLittle) {
    struct Row {
        const char* elements;
        const char* way;
    };
    for (const Row& row : {Row{"100000", "listed"}, Row{"400000", "asked"}}) {
        showWindow(row.elements, row.way);
        std::this_thread::sleep_for(4s);
        desktop.parts().process("service").kill();
        expectLittleLeft(std::string("a window of ") + row.elements + " elements, " + row.way + ",");
        writeFile(desktop.parts().folder() + "/log-service", "");
    }
}

TEST_F(MemoryLeftBehind, ByMessagesOf20MegabytesIsLittle) {
    const std::string bus = "unix:path=" + desktop.parts().runtimeFolder() + "/bus";
    ChildProcess& player =
        desktop.parts().spawn("hostile", {PURLOCK_HOSTILE_PLAYER, bus, "3", "1", "20000000"});
    EXPECT_TRUE(waitUntil([&] { return !player.isRunning(); }, 60s));
    expectLittleLeft("messages of 20 MB");
}

}  // namespace
}  // namespace purlock::test
