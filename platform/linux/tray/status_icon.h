#pragma once

#include <QColor>
#include <QImage>
#include <optional>
#include <vector>

#include "platform/linux/tray/color_scheme_watch.h"
#include "platform/linux/tray/notifier_data.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

// The status icon as a picture. Main thread.

/// For a square of `pixels`; null when there is no such symbol. A symbol that is no template is in its own
/// colours. A template is in `foreground`, the bar's own colour, where that is known; else it is dark on a
/// light desktop and light on a dark one. Where neither is known it is light with a dark edge: most bars are
/// dark, and the edge makes it readable on the others.
QImage statusIcon(const SymbolImage& image, int pixels, const std::optional<QColor>& foreground,
                  ColorScheme scheme);

/// In the sizes that bars have; nothing when there is no such symbol.
std::vector<NotifierPixmap> statusPixmaps(const SymbolImage& image, ColorScheme scheme);

}  // namespace purlock::host_linux
