#include "platform/linux/drawing/panel_placement.h"

#include <algorithm>

namespace purlock::host_linux {

namespace {

constexpr double cornerMargin = 8;

double top(const Rect& rect) {
    return rect.y + rect.height;
}
double right(const Rect& rect) {
    return rect.x + rect.width;
}

bool hasIcon(const std::optional<Rect>& icon) {
    return icon && icon->width > 0 && icon->height > 0;
}

/// Cut off at the bottom: what hangs below an icon goes on doing so.
Rect noHigherThan(double height, Rect rect) {
    const double excess = std::max(rect.height - height, 0.0);
    rect.y += excess;
    rect.height -= excess;
    return rect;
}

/// The place nearest to where it is; what does not fit sticks out at the right and at the bottom.
Rect movedInto(Rect rect, const Rect& area) {
    rect.x = std::max(std::min(rect.x, right(area) - rect.width), area.x);
    rect.y = std::min(std::max(rect.y, area.y), top(area) - rect.height);
    return rect;
}

}  // namespace

Rect placePanel(const Rect& requested, const std::optional<Rect>& icon, const Rect& available) {
    Rect panel = noHigherThan(available.height, requested);
    if (!hasIcon(icon)) {
        panel.x = right(available) - cornerMargin - panel.width;
        panel.y = top(available) - cornerMargin - panel.height;
    } else if (panel.y < available.y && top(*icon) + panel.height <= top(available)) {
        panel.y = std::max(top(*icon), available.y);
    }
    return movedInto(panel, available);
}

Rect flipped(const Rect& rect, double heightOfFirstScreen) {
    return {rect.x, heightOfFirstScreen - rect.y - rect.height, rect.width, rect.height};
}

std::optional<Rect> pointsOfPixels(const Rect& rect, const std::vector<ScreenArea>& screens) {
    for (const ScreenArea& screen : screens) {
        const double scale = screen.pixelsPerPoint;
        const double x = (rect.x + rect.width / 2 - screen.points.x) / scale;
        const double y = (rect.y + rect.height / 2 - screen.points.y) / scale;
        if (scale <= 0 || x < 0 || y < 0 || x >= screen.points.width || y >= screen.points.height) continue;
        return Rect{screen.points.x + (rect.x - screen.points.x) / scale,
                    screen.points.y + (rect.y - screen.points.y) / scale, rect.width / scale,
                    rect.height / scale};
    }
    return std::nullopt;
}

}  // namespace purlock::host_linux
