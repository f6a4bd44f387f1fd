#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tests/host-linux/tray/test_tray.h"
#include "tests/host-linux/tray/tray_fixture.h"
#include "tests/support/virtual_display.h"

namespace purlock::test {

inline constexpr std::uint32_t green = 0x4DC773;
inline constexpr std::uint32_t deepGreen = 0x21944A;  // where the bar may be light

/// The place of the first icon of a `TestTray`.
inline std::vector<std::uint32_t> firstIcon() {
    return screenColors(103, 3, 24, 24);
}
inline bool shows(const std::vector<std::uint32_t>& colors, std::uint32_t wanted) {
    return std::count(colors.begin(), colors.end(), wanted) >= 5;
}

/// The same with an X server of its own.
class TrayDockTest : public TrayTest {
  protected:
    void SetUp() override {
        ASSERT_NE(display.name(), ":");
        setenv("DISPLAY", display.name().c_str(), 1);
        meanwhile = [this] {
            if (tray) tray->serve();
        };
    }
    void TearDown() override { unsetenv("DISPLAY"); }

    bool iconIsShown() {
        return runUntil([&] { return tray->iconCount() == 1 && shows(firstIcon(), green); });
    }
    void makeGreenItem() {
        makeItem();
        button()->setImage(greenIcon);
    }

    Environment environment() const {
        const std::string folder = bus.folder().path().string();
        return {"PATH=/usr/bin:/bin", "HOME=" + folder, "XDG_RUNTIME_DIR=" + folder,
                "XDG_CONFIG_HOME=" + folder, "DISPLAY=" + display.name()};
    }
    bool pointer(const Command& what) {
        Command command{"xdotool"};
        command.insert(command.end(), what.begin(), what.end());
        return ChildProcess(command, environment()).waitForExit(std::chrono::seconds(5)) == 0;
    }

    VirtualDisplay display{"800x800x24"};  // as large as the toolkit's screen in these tests
    std::optional<TestTray> tray;
};

}  // namespace purlock::test
