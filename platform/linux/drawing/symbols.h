#pragma once

#include <QColor>
#include <QImage>
#include <string>

#include "ui/view.h"

namespace purlock::host_linux {

// The drawings of resources/symbols, by the names that the panel and the status item use. They are part of
// the program: no icon theme is asked. Main thread only.

bool hasSymbol(const std::string& name);

/// The symbol as large as a text of that size: 1.2 times as high as `pointSize`, and as wide as it is drawn.
/// The image is a whole number of device pixels, carries `devicePixelRatio` and has a transparent ground;
/// `color` may be translucent. Lines are thicker in heavier weights. Null when there is no such symbol.
///
/// The last ones are kept, at most 256 KiB of them.
QImage symbolImage(const std::string& name, double pointSize, FontWeight weight, const QColor& color,
                   double devicePixelRatio);

/// The symbol in semibold, centred in a square of `pixels` device pixels; null when there is none. Not kept.
QImage squareSymbol(const std::string& name, int pixels, const QColor& color);

}  // namespace purlock::host_linux
