#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace purlock::test {

/// Part of the screen in pixels, y downwards.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int centerX() const { return x + width / 2; }
    int centerY() const { return y + height / 2; }
    bool contains(const ScreenArea& inner) const {
        return inner.x >= x && inner.y >= y && inner.x + inner.width <= x + width &&
               inner.y + inner.height <= y + height;
    }
    bool operator==(const ScreenArea&) const = default;
};

/// True if something on the screen stands still. Trays and panels find their places in steps, and a click on
/// a step hits what stands there a moment later.
class AtRest {
  public:
    /// `area` as it is now; true once it has not changed for a moment.
    bool sees(const std::optional<ScreenArea>& area);

  private:
    std::optional<ScreenArea> last_;
    std::chrono::steady_clock::time_point since_;
};

// What the X server of $DISPLAY says, asked anew by each call; absent when there is no such window on the
// screen.

ScreenArea wholeScreen();

bool windowManagerIsThere();

/// The window of the program that stands in a tray.
std::optional<ScreenArea> trayIconOnScreen();

/// The panel's window.
std::optional<ScreenArea> panelOnScreen();

/// The opacity of the panel's window at that place in it, of 255; absent too where it has none.
std::optional<int> opacityOfPanel(int x, int y);

/// Has the X server believe that a compositing manager is there; nothing composites.
class CompositingClaim {
  public:
    CompositingClaim();
    ~CompositingClaim();
    CompositingClaim(const CompositingClaim&) = delete;
    CompositingClaim& operator=(const CompositingClaim&) = delete;

  private:
    struct Connection;
    const std::unique_ptr<Connection> connection_;
};

/// True if a window of another program, which calls itself `instance`, can be seen.
bool isOnScreen(const std::string& instance);

/// The first window of another program that can be seen.
std::optional<ScreenArea> areaOnScreen(const std::string& instance);

/// True if the keyboard's focus is with a window of the program that calls itself `instance`.
bool isFocused(const std::string& instance);

/// The menu that the program has opened.
std::optional<ScreenArea> menuOnScreen();

}  // namespace purlock::test
