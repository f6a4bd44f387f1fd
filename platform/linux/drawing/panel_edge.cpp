#include "platform/linux/drawing/panel_edge.h"

#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

constexpr Color ground{0.145, 0.145, 0.155, 1};
constexpr double cornerRadius = 10;

// The shadow is that of a light from above: lower than the panel, and within its room on every side.
constexpr int shadowDrop = 4;
constexpr int shadowReach = shadowRoom - shadowDrop;
constexpr double shadowDepth = 0.45;  // where it is deepest, next to the panel

QPainterPath outline(const QRectF& rect, double radius) {
    QPainterPath path;
    if (radius > 0) {
        path.addRoundedRect(rect, radius, radius);
    } else {
        path.addRect(rect);
    }
    return path;
}

/// Layers that each reach less far than the one before, so that it fades outwards.
void drawShadow(QPainter& painter, const QRectF& panel) {
    for (int reach = shadowReach; reach > 0; --reach) {
        const double nearness = 1.0 - static_cast<double>(reach) / shadowReach;
        const QRectF layer = panel.translated(0, shadowDrop).adjusted(-reach, -reach, reach, reach);
        const double opacity = 2 * shadowDepth * nearness / shadowReach;
        painter.fillPath(outline(layer, cornerRadius + reach), qtColor(Color{0, 0, 0, opacity}));
    }
}

/// A point wide, and at every scale a whole number of device pixels on each side.
void drawEdge(QPainter& painter, const QRectF& panel, double radius) {
    const double ratio = painter.deviceTransform().m11();
    const double width = std::max(1.0, std::floor(ratio)) / ratio;
    QPainterPath edge = outline(panel, radius);
    // Odd and even: what lies between the two.
    edge.addPath(outline(panel.adjusted(width, width, -width, -width), std::max(radius - width, 0.0)));
    painter.fillPath(edge, qtColor(white(0.12)));
}

}  // namespace

void drawPanelGround(QPainter& painter, const QRectF& panel, const PanelEdge& edge) {
    const double radius = edge.isRounded ? cornerRadius : 0;
    if (edge.isRounded) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(painter.clipBoundingRect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setRenderHint(QPainter::Antialiasing);
        if (edge.shadow > 0) drawShadow(painter, panel);
        // Only the ground is behind the panel, and no shadow.
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillPath(outline(panel, radius), qtColor(ground));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    } else {
        painter.fillRect(panel, qtColor(ground));
    }
    drawEdge(painter, panel, radius);
}

}  // namespace purlock::host_linux
