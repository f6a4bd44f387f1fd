#pragma once

#include <QImage>
#include <string>

#include "platform/linux/drawing/panel_edge.h"
#include "ui/view.h"

namespace purlock::test {

// Pictures of the panel without a screen. An application object on the "offscreen" platform must be there.

/// One font for all machines, and the dark look of the program.
void usePictureFont();

/// The panel as it is drawn at `scale` device pixels a point, with its shadow where it has one.
QImage panelPicture(const View& view, double scale, const host_linux::PanelEdge& edge = {});

/// "bit-perfect@2x.png".
std::string pictureName(const std::string& state, double scale);

}  // namespace purlock::test
