#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/host-linux/tray/display_fixture.h"

namespace purlock::test {
namespace {

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

    /// True if the icon is on the screen where it says that it is.
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

/// xfce4-panel, whose tray shows status notifier items; with the configuration daemon that it needs.
class InXfcePanel : public TrayDockTest {
  protected:
    void SetUp() override {
        TrayDockTest::SetUp();
        const auto program = configurationDaemon();
        if (!program) GTEST_SKIP() << "xfconfd is not installed";
        bus.folder().write("xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", R"(<?xml version="1.0"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
)");
        daemon_ = ChildProcess({program->string()}, onBus(), {.log = log()});
    }

    void startPanel() {
        panel = ChildProcess({"xfce4-panel", "--disable-wm-check"}, onBus(),
                             {.log = log(), .group = ChildOptions::Group::own});
    }

    /// Where in the bar at the top the icon is; absent when it does not come.
    std::optional<std::pair<int, int>> icon() {
        std::optional<std::pair<int, int>> place;
        runUntil([&] {
            const auto colors = screenColors(0, 0, 800, 30);
            if (!shows(colors, deepGreen)) return false;  // a notifier item does not know its bar
            const auto index = std::find(colors.begin(), colors.end(), deepGreen) - colors.begin();
            place = {static_cast<int>(index % 800), static_cast<int>(index / 800)};
            return true;
        });
        return place;
    }

    std::string log() const { return (bus.folder().path() / "xfce.log").string(); }

    ChildProcess panel;

  private:
    Environment onBus() const {
        Environment variables = environment();
        variables.push_back("DBUS_SESSION_BUS_ADDRESS=" + bus.address());
        return variables;
    }

    /// It lies in a folder that is named after the kind of machine.
    static std::optional<std::filesystem::path> configurationDaemon() {
        for (const auto& folder : std::filesystem::directory_iterator("/usr/lib")) {
            auto program = folder.path() / "xfce4/xfconf/xfconfd";
            if (std::filesystem::exists(program)) return program;
        }
        return std::nullopt;
    }

    ChildProcess daemon_;
};

TEST_F(InXfcePanel, TheItemIsInTheBarAlsoAfterTheBarHasDied) {
    makeGreenItem();
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        startPanel();
        const auto place = icon();
        ASSERT_TRUE(place) << contentsOf(log());
        clicks = 0;
        const auto [x, y] = *place;
        ASSERT_TRUE(pointer({"mousemove", std::to_string(x), std::to_string(y), "click", "1"}));
        EXPECT_TRUE(runUntil([&] { return clicks == 1; })) << contentsOf(log());
        EXPECT_EQ(button()->windowFrame(), (Rect{x - 12.0, 800.0 - y - 12, 24, 24}));
        panel.kill();
        ASSERT_TRUE(runUntil([&] { return !shows(screenColors(0, 0, 800, 30), deepGreen); }));
    }
}

}  // namespace
}  // namespace purlock::test
