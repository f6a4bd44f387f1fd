#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace purlock::test {

/// A system tray on $DISPLAY as bare as the protocol allows: a window of 200 x 30 at (100, 0) in which each
/// icon gets a square of 24, the first at (3, 3). It works when `serve` is called. Dropping it is its sudden
/// death, and that of all icons in it. One for each display at a time.
class TestTray {
  public:
    struct Options {
        bool blends = false;                           // whether it asks for windows with alpha
        std::optional<std::uint32_t> foreground = {};  // 0xRRGGBB, what it asks icons to look like
        std::uint32_t ground = background;
        bool obeysSizeHints = false;  // as some do; else icons are 24 by 24
    };
    static constexpr std::uint32_t background = 0x204060;

    explicit TestTray(const Options& options);
    ~TestTray();
    TestTray(const TestTray&) = delete;
    TestTray& operator=(const TestTray&) = delete;

    void serve();
    std::size_t iconCount() const { return icons_.size(); }

    /// Gives the icons back to the root window and goes, as a tray does that ends in order.
    void release();

  private:
    xcb_atom_t atom(const std::string& name);
    void setProperties(const Options& options);
    void announce();
    void take(xcb_window_t icon);
    std::array<std::uint32_t, 2> sizeFor(xcb_window_t icon);

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
    xcb_window_t window_;
    xcb_atom_t opcode_;
    bool obeysSizeHints_;
    std::vector<xcb_window_t> icons_;
};

/// Says what a window manager would say, for programs that wait for one: there is one desktop.
void announceOneDesktop();

/// The colours of part of the screen of $DISPLAY as 0xRRGGBB, row after row; empty when it cannot be read.
std::vector<std::uint32_t> screenColors(int x, int y, int width, int height);

}  // namespace purlock::test
