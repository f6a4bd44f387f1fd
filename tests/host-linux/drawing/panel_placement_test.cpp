#include "platform/linux/drawing/panel_placement.h"

#include <gtest/gtest.h>

#include <optional>

namespace purlock {

static void PrintTo(const Rect& rect, std::ostream* out) {
    *out << rect.width << " x " << rect.height << " at (" << rect.x << ", " << rect.y << ")";
}

namespace host_linux {
namespace {

// A screen of 1920 x 1080 with a bar of 30 points at one edge.
constexpr Rect belowTopBar{0, 0, 1920, 1050};
constexpr Rect aboveBottomBar{0, 30, 1920, 1050};
constexpr Rect besideLeftBar{30, 0, 1890, 1080};

/// As the shell asks for it: centred below the icon, and off the screen where there is no icon.
Rect requestedFor(const Rect& icon, double width = 360, double height = 600) {
    return {icon.x + icon.width * 0.5 - width * 0.5, icon.y - height, width, height};
}

struct PlacementCase {
    const char* name;
    Rect icon;
    Rect available;
    Rect expected;
};

TEST(PanelPlacement, Rows) {
    const PlacementCase cases[] = {
        {"below an icon of the top bar", {1000, 1054, 22, 22}, belowTopBar, {831, 450, 360, 600}},
        {"below the icon, not below the bar", {1000, 1000, 22, 22}, belowTopBar, {831, 400, 360, 600}},
        {"at the right edge", {1890, 1054, 22, 22}, belowTopBar, {1560, 450, 360, 600}},
        {"at the left edge", {4, 1054, 22, 22}, belowTopBar, {0, 450, 360, 600}},
        {"above an icon of the bottom bar", {1000, 4, 22, 22}, aboveBottomBar, {831, 30, 360, 600}},
        {"above an icon that reaches out of its bar",
         {1000, 10, 22, 22},
         aboveBottomBar,
         {831, 32, 360, 600}},
        {"above, in the corner", {1890, 4, 22, 22}, aboveBottomBar, {1560, 30, 360, 600}},
        {"beside a bar at the left, below", {4, 800, 22, 22}, besideLeftBar, {30, 200, 360, 600}},
        {"beside a bar at the left, above", {4, 100, 22, 22}, besideLeftBar, {30, 122, 360, 600}},
        {"neither fits below nor above", {1000, 540, 22, 22}, {0, 0, 1920, 1080}, {831, 0, 360, 600}},
        {"on a second screen, to the left",
         {-200, 1054, 22, 22},
         {-1280, 56, 1280, 994},
         {-369, 450, 360, 600}},
        {"no icon", {}, belowTopBar, {1552, 442, 360, 600}},
        {"no icon, second screen", {}, {1920, 200, 1280, 800}, {2832, 392, 360, 600}},
        {"icon without size", {500, 500, 0, 0}, belowTopBar, {1552, 442, 360, 600}},
        {"screen lower than the panel", {400, 484, 16, 16}, {0, 0, 800, 480}, {228, 0, 360, 480}},
        {"screen lower than the panel, bottom bar", {400, 4, 16, 16}, {0, 30, 800, 450}, {228, 30, 360, 450}},
        {"screen lower than the panel, no icon", {}, {0, 0, 800, 480}, {432, 0, 360, 480}},
        {"screen narrower than the panel", {100, 984, 16, 16}, {0, 0, 320, 980}, {0, 380, 360, 600}},
    };
    for (const PlacementCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(placePanel(requestedFor(row.icon), row.icon, row.available), row.expected);
    }
}

TEST(PanelPlacement, AnAbsentIconIsNone) {
    EXPECT_EQ(placePanel({-180, -600, 360, 600}, std::nullopt, belowTopBar), (Rect{1552, 442, 360, 600}));
}

TEST(PanelPlacement, ThePanelIsInsideWhereverTheIconIs) {
    for (const Rect& area : {belowTopBar, aboveBottomBar, besideLeftBar}) {
        for (int x = -50; x <= 1950; x += 50) {
            for (int y = -50; y <= 1100; y += 50) {
                const Rect icon{double(x), double(y), 22, 22};
                const Rect panel = placePanel(requestedFor(icon), icon, area);
                EXPECT_GE(panel.x, area.x);
                EXPECT_GE(panel.y, area.y);
                EXPECT_LE(panel.x + panel.width, area.x + area.width);
                EXPECT_LE(panel.y + panel.height, area.y + area.height);
            }
        }
    }
}

TEST(ScreenCoordinates, FlippingTwiceChangesNothing) {
    EXPECT_EQ(flipped({10, 0, 22, 30}, 1080), (Rect{10, 1050, 22, 30})) << "the top bar is far up";
    EXPECT_EQ(flipped(flipped({10, 7, 22, 30}, 1080), 1080), (Rect{10, 7, 22, 30}));
}

struct PixelCase {
    const char* name;
    Rect pixels;
    std::vector<ScreenArea> screens;
    std::optional<Rect> expected;
};

TEST(ScreenCoordinates, PixelsToPoints) {
    const ScreenArea plain{{0, 0, 1920, 1080}, 1};
    const ScreenArea doubled{{0, 0, 1920, 1080}, 2};
    const ScreenArea toTheRight{{1920, 100, 1280, 720}, 1.5};
    const PixelCase cases[] = {
        {"unscaled", {100, 4, 22, 22}, {plain}, Rect{100, 4, 22, 22}},
        {"scaled", {3000, 8, 44, 44}, {doubled}, Rect{1500, 4, 22, 22}},
        {"second screen", {2220, 130, 33, 33}, {plain, toTheRight}, Rect{2120, 120, 22, 22}},
        {"half outside", {-10, 4, 22, 22}, {plain}, Rect{-10, 4, 22, 22}},
        {"outside", {5000, 4, 22, 22}, {plain, toTheRight}, std::nullopt},
        {"no screen", {0, 0, 1, 1}, {}, std::nullopt},
        {"screen without scale", {0, 0, 1, 1}, {{{0, 0, 10, 10}, 0}}, std::nullopt},
    };
    for (const PixelCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(pointsOfPixels(row.pixels, row.screens), row.expected);
    }
}

}  // namespace
}  // namespace host_linux
}  // namespace purlock
