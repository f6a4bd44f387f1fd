#include <memory>

#include "tests/host-linux/session/session_test.h"

namespace purlock::test {
namespace {

constexpr int panelWidth = 360;
constexpr int panelHeight = 600;

/// The panel on a desktop that shows what lies behind partly transparent windows, and on one that does not.
class Composited : public SessionTest {
  protected:
    /// Its size in the window, for the shadow is a part of that.
    static int roomOf(const ScreenArea& window) {
        EXPECT_EQ(window.width - panelWidth, window.height - panelHeight);
        return (window.width - panelWidth) / 2;
    }
};

TEST_F(Composited, ThePanelHasRoundCornersAndAShadowThatTakesNoClicks) {
    auto claim = std::make_unique<CompositingClaim>();
    startInTray();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    const ScreenArea window = *panelOnScreen();
    const int room = roomOf(window);
    ASSERT_GT(room, 8);
    EXPECT_TRUE(waitUntil([&] { return opacityOfPanel(window.width / 2, window.height / 2) == 255; }));
    EXPECT_LT(opacityOfPanel(0, 0).value_or(255), 8);
    EXPECT_LT(opacityOfPanel(room, room).value_or(255), 128) << "a corner of the panel";
    EXPECT_GT(opacityOfPanel(window.width / 2, window.height - room + 2).value_or(0), 30) << "its shadow";
    EXPECT_EQ(opacityOfPanel(room, window.height / 2), 255);

    const ScreenArea below{window.centerX(), window.y + window.height - room / 2, 0, 0};
    ASSERT_TRUE(desktop.click({window.centerX(), window.y + window.height - room - 4, 0, 0}));
    EXPECT_FALSE(waitUntil([] { return !panelOnScreen(); }, std::chrono::milliseconds(500)));
    ASSERT_TRUE(desktop.click(below));
    EXPECT_TRUE(panelGoes()) << "the shadow is outside";

    claim.reset();
    ASSERT_NO_FATAL_FAILURE(openPanel());
    EXPECT_TRUE(waitUntil([] { return panelOnScreen() && panelOnScreen()->width == panelWidth; }));
    EXPECT_TRUE(waitUntil([] { return opacityOfPanel(0, 0) == 255; })) << "a rectangle again";
    ASSERT_TRUE(desktop.click({panelOnScreen()->x + 2, panelOnScreen()->centerY(), 0, 0}));
    EXPECT_FALSE(waitUntil([] { return !panelOnScreen(); }, std::chrono::milliseconds(500)))
        << "all of it takes clicks again";
}

}  // namespace
}  // namespace purlock::test
