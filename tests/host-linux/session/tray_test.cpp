#include <cstdlib>

#include "tests/host-linux/session/session_test.h"
#include "tests/host-linux/tray/notifier_watcher.h"

namespace purlock::test {
namespace {

using Tray = SessionTest;

TEST_F(Tray, MayStartAfterTheProgramAndComeBackAfterItsDeath) {
    desktop.startProgram();
    ASSERT_TRUE(deviceBecomes("desk"));
    for (const char* when : {"after the program", "after its death"}) {
        SCOPED_TRACE(when);
        ASSERT_TRUE(desktop.startTray());
        ASSERT_NO_FATAL_FAILURE(openPanel());
        EXPECT_TRUE(shows("Desk"));
        ASSERT_TRUE(desktop.clickIcon());
        ASSERT_TRUE(panelGoes());
        desktop.killTray();
        ASSERT_TRUE(waitUntil([] { return !trayIconOnScreen(); }));
    }
}

/// A tray of status notifier items, which tells the program of a click by a call.
class NotifierTray : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        watcher.emplace(std::getenv("DBUS_SESSION_BUS_ADDRESS"), NotifierWatcher::Host::present);
        ASSERT_TRUE(waitUntil([&] { return watcher->ready(); }));
    }

    bool activate(int x, int y) {
        const auto result = desktop.parts().run({"dbus-send", "--session", "--print-reply",
                                                 "--dest=" + watcher->items().back(), "/StatusNotifierItem",
                                                 "org.kde.StatusNotifierItem.Activate",
                                                 "int32:" + std::to_string(x), "int32:" + std::to_string(y)});
        return result.exitStatus == 0;
    }

    std::optional<NotifierWatcher> watcher;
};

TEST_F(NotifierTray, OpensThePanelWhereItWasClickedAndQuits) {
    desktop.startProgram();
    ASSERT_TRUE(waitUntil([&] { return watcher->items().size() == 1; }));
    ASSERT_TRUE(deviceBecomes("desk"));
    ASSERT_TRUE(activate(700, 12));
    ASSERT_TRUE(panelComes());
    const ScreenArea panel = panelOnScreen().value_or(ScreenArea{});
    EXPECT_NEAR(panel.centerX(), 700, 1);
    EXPECT_TRUE(wholeScreen().contains(panel));
    EXPECT_TRUE(shows("Output ready at 48.0 kHz · 32-bit · 2ch. Nothing playing."));
    ASSERT_TRUE(activate(700, 12));
    EXPECT_TRUE(panelGoes());
    ASSERT_TRUE(activate(700, 1010));  // a bar at the bottom
    ASSERT_TRUE(panelComes());
    EXPECT_TRUE(wholeScreen().contains(panelOnScreen().value_or(ScreenArea{})));
    EXPECT_FALSE(trayIconOnScreen()) << "one icon is enough";
    ASSERT_TRUE(clickOn("Quit", "push button"));
    EXPECT_EQ(desktop.program().waitForExit(std::chrono::seconds(5)), 0);
}

}  // namespace
}  // namespace purlock::test
