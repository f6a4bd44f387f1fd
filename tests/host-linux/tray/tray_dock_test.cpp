#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

#include "tests/host-linux/tray/notifier_watcher.h"
#include "tests/host-linux/tray/test_tray.h"
#include "tests/host-linux/tray/tray_fixture.h"
#include "tests/support/virtual_display.h"

namespace purlock::test {
namespace {

constexpr std::uint32_t green = 0x4DC773;

/// The place of the first icon of a `TestTray`.
std::vector<std::uint32_t> firstIcon() {
    return screenColors(103, 3, 24, 24);
}
bool shows(const std::vector<std::uint32_t>& colors, std::uint32_t wanted) {
    return std::count(colors.begin(), colors.end(), wanted) >= 5;
}

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

struct TrayKind {
    const char* name;
    bool blends;
};

class InTrays : public TrayDockTest, public testing::WithParamInterface<TrayKind> {
  protected:
    TestTray::Options options() const { return {.blends = GetParam().blends}; }
};

TEST_P(InTrays, TheIconStandsOnTheTraysBackground) {
    tray.emplace(options());
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    const auto colors = firstIcon();
    // A tray that asks for alpha blends the icons itself; this one leaves them as they are.
    EXPECT_EQ(colors.front(), GetParam().blends ? 0 : TestTray::background) << "in the corner";
    EXPECT_EQ(button()->windowFrame(), (Rect{103, 800 - 3 - 24, 24, 24}));
}

TEST_P(InTrays, ATrayThatComesLaterGetsTheIcon) {
    makeGreenItem();
    runUntil([] { return false; }, std::chrono::milliseconds(400));
    EXPECT_EQ(button()->windowFrame(), Rect{});
    tray.emplace(options());
    EXPECT_TRUE(iconIsShown());
}

TEST_P(InTrays, ATrayThatDiesWithItsIconsAndReturnsGetsItAgain) {
    tray.emplace(options());
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    for (int round = 0; round < 3; ++round) {
        tray.reset();
        ASSERT_TRUE(runUntil([&] { return button()->windowFrame() == Rect{}; }));
        tray.emplace(options());
        ASSERT_TRUE(iconIsShown());
    }
}

TEST_P(InTrays, ATrayThatGivesItsIconsBackLeavesNoneOnTheScreen) {
    tray.emplace(options());
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    tray->release();
    ASSERT_TRUE(runUntil([&] { return button()->windowFrame() == Rect{}; }));
    EXPECT_TRUE(runUntil([&] { return !shows(screenColors(0, 0, 800, 800), green); }));
    tray.reset();
    tray.emplace(options());
    EXPECT_TRUE(iconIsShown());
}

INSTANTIATE_TEST_SUITE_P(Trays, InTrays,
                         testing::Values(TrayKind{"Plain", false}, TrayKind{"Blending", true}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(TrayDockTest, ATemplateHasTheColourThatTheTrayAsksFor) {
    tray.emplace(TestTray::Options{.foreground = 0xFF8800});
    makeItem();
    EXPECT_TRUE(runUntil([&] { return shows(firstIcon(), 0xFF8800); }));
    button()->setImage(greenIcon);
    EXPECT_TRUE(runUntil([&] { return shows(firstIcon(), green) && !shows(firstIcon(), 0xFF8800); }))
        << "others keep theirs";
}

TEST_F(TrayDockTest, EveryButtonClicks) {
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    int expected = 0;
    for (const char* which : {"1", "2", "3"}) {
        ASSERT_TRUE(pointer({"mousemove", "115", "15", "click", which}));
        ++expected;
        EXPECT_TRUE(runUntil([&] { return clicks == expected; })) << which;
    }
    ASSERT_TRUE(pointer({"click", "4"}));
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(clicks, expected) << "turning the wheel is no click";
}

TEST_F(TrayDockTest, TheNotifierItemWinsWhereBothAreShown) {
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    std::optional<NotifierWatcher> watcher;
    watcher.emplace(bus.address(), NotifierWatcher::Host::absent);
    ASSERT_TRUE(runUntil([&] { return watcher->items().size() == 1; }));
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(tray->iconCount(), 1U) << "a watcher shows nothing";
    watcher->setHost(NotifierWatcher::Host::present);
    EXPECT_TRUE(runUntil([&] { return tray->iconCount() == 0; })) << "its tray does";
    watcher->setHost(NotifierWatcher::Host::absent);
    EXPECT_TRUE(iconIsShown());
    watcher->setHost(NotifierWatcher::Host::present);
    EXPECT_TRUE(runUntil([&] { return tray->iconCount() == 0; }));
    watcher.reset();
    EXPECT_TRUE(iconIsShown()) << "the watcher has died";
    watcher.emplace(bus.address(), NotifierWatcher::Host::present);
    EXPECT_TRUE(runUntil([&] { return tray->iconCount() == 0; }));
    bus.kill();
    EXPECT_TRUE(iconIsShown()) << "the bus has died";
}

TEST_F(TrayDockTest, ABusThatHangsKeepsTheIconFromNothing) {
    bus.pause();
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    EXPECT_TRUE(iconIsShown());
    bus.resume();
}

TEST_F(TrayDockTest, WithoutABusTheIconComesAtOnce) {
    bus.kill();
    std::filesystem::remove(bus.socket());
    tray.emplace(TestTray::Options{});
    const auto begin = std::chrono::steady_clock::now();
    makeGreenItem();
    EXPECT_TRUE(iconIsShown());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(250));
}

TEST_F(TrayDockTest, GoesWithTheItem) {
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    dropItem();
    EXPECT_TRUE(runUntil([&] { return tray->iconCount() == 0; }));
}

TEST_F(TrayDockTest, TheServerMayDie) {
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    tray.reset();
    display.kill();
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    button()->setImage(idleIcon);
    EXPECT_EQ(button()->windowFrame(), Rect{});
}

/// tint2, a panel that many use: found by the colour of the icon in its bar.
class InTint2 : public TrayDockTest {
  protected:
    void startTint2(const char* position) {
        announceOneDesktop();  // it waits for a window manager
        bus.folder().write(
            "tint2rc", "panel_items = S\npanel_size = 100% 30\npanel_position = " + std::string(position) +
                           " center horizontal\nsystray_padding = 4 4 4\n"
                           "systray_icon_size = 22\nrgba1 = #202020 100\n");
        tint2 = ChildProcess({"tint2", "-c", (bus.folder().path() / "tint2rc").string()}, environment(),
                             {.log = (bus.folder().path() / "tint2.log").string()});
    }

    /// Whether the icon is on the screen where it says that it is.
    bool iconIsThere() {
        return runUntil([&] {
            const Rect frame = button()->windowFrame();
            const int top = static_cast<int>(800 - frame.y - frame.height);
            return frame.width >= 16 &&
                   shows(screenColors(static_cast<int>(frame.x), top, static_cast<int>(frame.width),
                                      static_cast<int>(frame.height)),
                         green);
        });
    }

    ChildProcess tint2;
};

TEST_F(InTint2, TheIconIsInTheBarAlsoAfterTheBarHasDied) {
    startTint2("top");
    makeGreenItem();
    ASSERT_TRUE(iconIsThere()) << contentsOf(bus.folder().path() / "tint2.log");
    EXPECT_GE(button()->windowFrame().y, 770);
    tint2.kill();
    ASSERT_TRUE(runUntil([&] { return button()->windowFrame() == Rect{}; }));
    startTint2("bottom");
    ASSERT_TRUE(iconIsThere());
    EXPECT_LT(button()->windowFrame().y, 30);
    tint2.signal(SIGTERM);  // an end in order
    ASSERT_TRUE(tint2.waitForExit(std::chrono::seconds(5)));
    ASSERT_TRUE(runUntil([&] { return button()->windowFrame() == Rect{}; }));
    EXPECT_FALSE(shows(screenColors(0, 0, 800, 800), green));
    startTint2("top");
    EXPECT_TRUE(iconIsThere());
}

}  // namespace
}  // namespace purlock::test
