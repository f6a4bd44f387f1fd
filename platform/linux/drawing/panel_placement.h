#pragma once

#include <optional>
#include <vector>

#include "ui/window_seams.h"

namespace purlock::host_linux {

// The places of things on the screens. Pure; any thread.
//
// The shell counts in points from the bottom left corner of the first screen, upwards; desktops count from
// its top left corner, downwards. X servers count in pixels.

/// The place of the panel, in the shell's coordinates. It is the place that the shell wants, centred below
/// the icon, if that lies in `available` (the screen without its bars); else it is above the icon. The panel
/// is moved aside as far as it must be to stay in `available`. A panel that is too high becomes as high as
/// `available`, and one that is too wide begins at the left edge. Without an icon (absent, or empty) it goes
/// into the top right corner, a little away from the edges.
Rect placePanel(const Rect& requested, const std::optional<Rect>& icon, const Rect& available);

/// Converts the desktop's coordinates to the shell's, and back.
Rect flipped(const Rect& rect, double heightOfFirstScreen);

/// A screen as a toolkit that scales sees it: where it begins is the same in pixels and in points.
struct ScreenArea {
    Rect points;  // y downwards
    double pixelsPerPoint = 1;
};

/// Converts an X server's pixels to points, both with y downwards, by the screen that holds the middle of
/// `rect`; absent when none does.
std::optional<Rect> pointsOfPixels(const Rect& rect, const std::vector<ScreenArea>& screens);

}  // namespace purlock::host_linux
