#pragma once

#include <QPainter>
#include <QRectF>

namespace purlock::host_linux {

// How the panel ends towards what is behind it. Main thread only.

/// Where the desktop composites, windows may be partly transparent: the panel has round corners then, and, if
/// there is room for it around the panel, a shadow. Elsewhere it is a plain rectangle.
struct PanelEdge {
    bool isRounded = false;
    int shadow = 0;  // points around the panel, which belong to its window

    bool operator==(const PanelEdge&) const = default;
};

/// The room that a shadow takes.
inline constexpr int shadowRoom = 24;

/// Draws the shadow, the ground and the edge of a panel that stands at `panel` in its window, and nothing in
/// what is left of the window.
void drawPanelGround(QPainter& painter, const QRectF& panel, const PanelEdge& edge);

}  // namespace purlock::host_linux
