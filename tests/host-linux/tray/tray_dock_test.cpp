#include <QApplication>
#include <QMenu>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/host-linux/tray/display_fixture.h"
#include "tests/host-linux/tray/notifier_watcher.h"

namespace purlock::test {
namespace {

struct TrayKind {
    const char* name;
    bool blends;
};

QMenu* openMenu() {
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

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

TEST_F(TrayDockTest, ATemplateStandsOutFromTheTraysOwnGround) {
    struct Case {
        unsigned ground;
        unsigned expected;
    };
    for (const Case& row : {Case{0xF4F4F4U, 0x262626U}, Case{0x202020U, 0xF2F2F2U}}) {
        SCOPED_TRACE(row.ground);
        tray.emplace(TestTray::Options{.ground = row.ground});
        makeItem();
        EXPECT_TRUE(runUntil([&] { return shows(firstIcon(), row.expected); }));
        dropItem();
        tray.reset();
    }
}

TEST_F(TrayDockTest, ATrayThatGoesBySizeHintsGivesTheIconRoom) {
    tray.emplace(TestTray::Options{.obeysSizeHints = true});
    makeGreenItem();
    EXPECT_TRUE(iconIsShown());
    EXPECT_EQ(button()->windowFrame(), (Rect{103, 800 - 3 - 24, 24, 24}));
}

TEST_F(TrayDockTest, TheLeftAndTheMiddleButtonClickAndTheRightOneShowsTheMenu) {
    tray.emplace(TestTray::Options{});
    makeGreenItem();
    ASSERT_TRUE(iconIsShown());
    int expected = 0;
    for (const char* which : {"1", "2"}) {
        ASSERT_TRUE(pointer({"mousemove", "115", "15", "click", which}));
        ++expected;
        EXPECT_TRUE(runUntil([&] { return clicks == expected; })) << which;
    }
    ASSERT_TRUE(pointer({"click", "4"}));
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(clicks, expected) << "turning the wheel is no click";
    ASSERT_TRUE(pointer({"click", "3"}));
    ASSERT_TRUE(runUntil([] { return openMenu() != nullptr; }));
    EXPECT_EQ(clicks, expected);
    openMenu()->actions().at(0)->trigger();  // "Open Purlock"
    EXPECT_EQ(clicks, ++expected);
    panelIsOpen = true;
    openMenu()->actions().at(0)->trigger();
    EXPECT_EQ(clicks, expected) << "a panel that is open comes to the front";
    EXPECT_EQ(presentations, 2);
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

}  // namespace
}  // namespace purlock::test
