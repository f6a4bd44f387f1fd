#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

#include "tests/host-linux/session/x_screen.h"

namespace purlock::bench {

/// A quick eye and finger on $DISPLAY: one connection, kept, so that a look takes a fraction of a
/// millisecond. One thread.
class ScreenProbe {
  public:
    ScreenProbe();
    ~ScreenProbe();
    ScreenProbe(const ScreenProbe&) = delete;
    ScreenProbe& operator=(const ScreenProbe&) = delete;

    /// The colours of part of the screen as 0xRRGGBB, row after row; empty when it cannot be read.
    std::vector<std::uint32_t> colors(const test::ScreenArea& area);
    std::uint32_t color(int x, int y);

    /// Presses and releases the first button where the pointer is.
    void click();

  private:
    void sendButton(std::uint8_t event);

    xcb_connection_t* const connection_;
    const xcb_window_t root_;
};

}  // namespace purlock::bench
