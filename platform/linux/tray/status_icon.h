#pragma once

#include <QColor>
#include <QImage>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/tray/color_scheme_watch.h"
#include "platform/linux/tray/notifier_data.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

// The status icon as a picture. Main thread.

/// The icon in a square of `pixels`; null when there is no such symbol. A symbol that is no template is drawn
/// in its own colours, deeper where the bar is not known to be dark. A template is drawn in `foreground`, the
/// bar's own colour, if that is known; else dark on a light bar and light on a dark one. If neither is known
/// it is drawn in a grey that can be read on both.
QImage statusIcon(const SymbolImage& image, int pixels, const std::optional<QColor>& foreground,
                  ColorScheme scheme);

/// The colour scheme of a bar of this colour.
ColorScheme schemeOf(const QColor& background);

/// The name of the icon theme's own drawing of a template, which trays recolour as their bar wants it; empty
/// for other symbols, and where the package's icons are not installed.
std::string statusIconName(const SymbolImage& image);

/// The icon in the sizes that bars have; nothing when there is no such symbol.
std::vector<NotifierPixmap> statusPixmaps(const SymbolImage& image, ColorScheme scheme);

}  // namespace purlock::host_linux
